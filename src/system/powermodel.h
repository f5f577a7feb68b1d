#pragma once

#include <QString>

class Session;

// The controller as a whole: power on and off, its model number, factory reset.
// Check1(0) sends the power commands and Check1(1) the factory reset to every listed
// controller; the model number always goes to the selected one.
class PowerModel {
public:
    explicit PowerModel(Session& session);

    void power_ctl_Click(int index);
    void cbo_model_Click();
    void btn_sys_fac_rst_Click();

private:
    Session& s_;
};
