#pragma once

#include "protocol/catalogue.h"
#include "services/controls.h"
#include "services/windowservices.h"

// The I/O page's controls and the settings they show, in the order the page is read.
// A list shows its setting's values from the setting's minimum; the mute setting is
// shown by the opt_mute options. allIpBox: the setting's "ALL IP" box in chk_io.
// refusal: what the setter's link test does beside refusing; typed: Enter in the list
// sends the typed value.
struct IoBinding {
    const char* setting;
    QComboBox* (*list)(Controls& ui);
    int allIpBox;
    WindowServices::Refusal refusal;
    bool typed;

    const protocol::Setting& bound() const { return protocol::setting(setting); }
};

enum IoControl { Reso, InfoPlay, OsdTime, OsdH, OsdV, Gain, Mute, IoControlCount };

// The resolution and OSD lists also drop the model list's pick when the link is down.
constexpr auto ClearModel = WindowServices::Refusal::ClearModelFirst;
constexpr auto Offline = WindowServices::Refusal::Offline;

// clang-format off
inline constexpr IoBinding IoBindings[IoControlCount] = {
    // setting       list                                           box refusal     typed
    {"resolution",   [](Controls& ui) { return ui.cbo_reso; },      0,  ClearModel, false},
    {"osd.display",  [](Controls& ui) { return ui.cbo_info_play; }, 1,  Offline,    false},
    {"osd.timeout",  [](Controls& ui) { return ui.cbo_osd_time; },  4,  ClearModel, false},
    {"osd.h_offset", [](Controls& ui) { return ui.cbo_osd[0]; },    2,  ClearModel, true},
    {"osd.v_offset", [](Controls& ui) { return ui.cbo_osd[1]; },    3,  ClearModel, true},
    {"osd.gain",     [](Controls& ui) { return ui.cbo_osd_gain; },  5,  ClearModel, true},
    {"mute",         nullptr,                                       6,  Offline,    false},
};
// clang-format on
