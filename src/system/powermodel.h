#pragma once

#include "services/windowservices.h"

#include <QString>

class StatusRead;

// The controller as a whole: power on and off, its model number, factory reset.
// Check1(0) sends the power commands and Check1(1) the factory reset to every listed
// controller; the model number always goes to the selected one.
class PowerModel {
public:
    PowerModel(WindowServices& session, StatusRead& status);

    void power_ctl_Click(int index);
    void cbo_model_Click();
    void btn_sys_fac_rst_Click();
    // The factory reset's acknowledgement, "DEFA".
    void HandleResetReply(const QString& reply);

private:
    WindowServices& s_;
    StatusRead& status_;
    WaitStep reset_{"Factory reset"};
};
