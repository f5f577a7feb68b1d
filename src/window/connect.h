#pragma once

#include <functional>

class WindowServices;

// Connect, Disconnect and a new pick in the device list: the sockets opened, the
// selected one waited for, then the OSD information shown and the full refresh.
class ControllerConnect {
public:
    // refresh: the window's full refresh, run once the selected controller answers.
    ControllerConnect(WindowServices& session, std::function<void()> refresh);

    void btn_con_Click();
    void cbo_ipaddr_Click();
    void btn_discon_Click();

private:
    bool waitForSelected();
    void showInfoAndRefresh(int index);

    WindowServices& s_;
    std::function<void()> refresh_;
};
