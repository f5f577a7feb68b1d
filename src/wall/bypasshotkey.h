#pragma once

#include <QString>

class Session;

// Channel-4 bypass ("SBY", always to every listed controller) and the 24 preset wall
// shapes ("SHOT n", acknowledged by "HOTK"). A preset may change the bypass, so the
// bypass state is read back after each one.
class BypassHotKey {
public:
    explicit BypassHotKey(Session& session);

    void opt_ch4_bypass_Click(int index);
    void btn_tv_fs_Click(int index);

    // One handler for the bezel reset's "WDEF" and the preset's "HOTK", tested in
    // that order.
    void HandleWallDefaultHotKeyReply(const QString& reply);

private:
    Session& s_;
};
