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

    void pick(IoControl control);
    void opt_mute_Click(int index);
    void typed(IoControl control, int keyCode);

private:
    void sendSetting(IoControl control, int index);

    WindowServices& s_;
    const IoSetup& page_;
};
