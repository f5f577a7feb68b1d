#pragma once

#include <QString>

class Session;

// The I/O page read back from the selected controller, the OSD reset and "OSD Info".
class IoSetup {
public:
    explicit IoSetup(Session& session);

    void ReadIoSetup();
    void HandleIoSetupReply(const QString& reply);
    void HandleOsdResetReply(const QString& reply);
    void btn_io_rst_Click(int index);

private:
    void resetOsd();
    void showDefaults();

    Session& s_;
};
