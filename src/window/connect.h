#pragma once

#include <functional>

class Session;

// Connect, Disconnect and a new pick in the device list: the sockets opened, the
// selected one waited for, then the OSD information shown and the full refresh.
class ControllerConnect {
public:
    // refresh: the window's full refresh, run once the selected controller answers.
    ControllerConnect(Session& session, std::function<void()> refresh);

    void btn_con_Click();
    void cbo_ipaddr_Click();
    void btn_discon_Click();

private:
    bool waitForSelected();
    void showInfoAndRefresh(int index);

    Session& s_;
    std::function<void()> refresh_;
};
