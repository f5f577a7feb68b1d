#pragma once

#include "services/windowservices.h"

#include <QString>

// The I/O page read back from the selected controller, the OSD reset and "OSD Info".
class IoSetup {
public:
    explicit IoSetup(WindowServices& session);

    void ReadIoSetup();
    void HandleIoSetupReply(const QString& reply);
    void HandleOsdResetReply(const QString& reply);
    void btn_io_rst_Click(int index);
    // The page is being read or reset: its lists are set by code, not by the operator.
    bool busy() const { return !read_.idle() || !osdReset_.idle(); }

private:
    void resetOsd();
    void showDefaults();

    WindowServices& s_;
    WaitStep read_{"I/O read"};
    WaitStep osdReset_{"OSD reset"};
};
