#pragma once

#include "protocol/catalogue.h"
#include "services/controls.h"

// The I/O page's controls and the settings they show, in the order the page is read.
// A list shows its setting's values from the setting's minimum; the mute setting is
// shown by the opt_mute options. allIpBox: the setting's "ALL IP" box in chk_io.
struct IoBinding {
    const char* setting;
    QComboBox* (*list)(Controls& ui);
    int allIpBox;

    const protocol::Setting& bound() const { return protocol::setting(setting); }
};

enum IoControl { Reso, InfoPlay, OsdTime, OsdH, OsdV, Gain, Mute, IoControlCount };

// clang-format off
inline constexpr IoBinding IoBindings[IoControlCount] = {
    {"resolution",   [](Controls& ui) { return ui.cbo_reso; },      0},
    {"osd.display",  [](Controls& ui) { return ui.cbo_info_play; }, 1},
    {"osd.timeout",  [](Controls& ui) { return ui.cbo_osd_time; },  4},
    {"osd.h_offset", [](Controls& ui) { return ui.cbo_osd[0]; },    2},
    {"osd.v_offset", [](Controls& ui) { return ui.cbo_osd[1]; },    3},
    {"osd.gain",     [](Controls& ui) { return ui.cbo_osd_gain; },  5},
    {"mute",         nullptr,                                       6},
};
// clang-format on
