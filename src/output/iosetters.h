#pragma once

#include "output/iobindings.h"

class IoSetup;
class WindowServices;

// The I/O page's seven setters: a pick, an option click or Enter in an editable list
// sends the setting at once, to the selected controller or, with that setting's own
// "ALL IP" box ticked, to every listed one. Nothing is awaited.
class IoSetters {
public:
    IoSetters(WindowServices& session, const IoSetup& page);

    void cbo_reso_Click();
    void cbo_info_play_Click();
    void cbo_osd_Click(int index);
    void cbo_osd_time_Click();
    void cbo_osd_gain_Click();
    void opt_mute_Click(int index);
    void cbo_osd_KeyDown(int index, int keyCode);
    void cbo_osd_gain_KeyDown(int keyCode);

private:
    void sendSetting(IoControl control, int index);
    void sendPick(IoControl control);
    void typedSetter(IoControl control, int keyCode);

    WindowServices& s_;
    const IoSetup& page_;
};
