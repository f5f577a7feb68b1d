#pragma once

#include "services/windowservices.h"

#include <QString>

class StatusRead;

// Channel-4 bypass ("SBY", always to every listed controller) and the 24 preset wall
// shapes ("SHOT n", acknowledged by "HOTK"). A preset may change the bypass, so the
// bypass state is read back after each one.
class BypassHotKey {
public:
    BypassHotKey(WindowServices& session, StatusRead& status);

    void opt_ch4_bypass_Click(int index);
    void btn_tv_fs_Click(int index);

    void HandleHotKeyReply(const QString& reply);

private:
    WindowServices& s_;
    StatusRead& status_;
    WaitStep hotKey_{"Hot key"};
};
