#include "output/iosetters.h"

#include "output/iobindings.h"
#include "output/iosetup.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"
#include "services/windowservices.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

IoSetters::IoSetters(WindowServices& session, const IoSetup& page) : s_(session), page_(page) {
    Controls& ui = s_.ui();
    events::onClick(ui.cbo_reso, [this] { cbo_reso_Click(); });
    events::onClick(ui.cbo_info_play, [this] { cbo_info_play_Click(); });
    for (int i = 0; i < 2; ++i) {
        events::onClick(ui.cbo_osd[i], [this, i] { cbo_osd_Click(i); });
        events::onKeyDown(ui.cbo_osd[i], [this, i](int key) { cbo_osd_KeyDown(i, key); });
    }
    events::onClick(ui.cbo_osd_time, [this] { cbo_osd_time_Click(); });
    events::onClick(ui.cbo_osd_gain, [this] { cbo_osd_gain_Click(); });
    events::onKeyDown(ui.cbo_osd_gain, [this](int key) { cbo_osd_gain_KeyDown(key); });
    for (int i = 0; i < 2; ++i)
        QObject::connect(ui.opt_mute[i], &QRadioButton::clicked, ui.opt_mute[i],
                         [this, i] { opt_mute_Click(i); });
}

// The list's pick, or option index, is the value's offset from the setting's minimum.
void IoSetters::sendSetting(IoControl control, int index) {
    const IoBinding& b = IoBindings[control];
    s_.sendTo(s_.ui().chk_io[b.allIpBox]->isChecked(),
              command::line(*b.bound().write, index + int(b.bound().min)));
}

void IoSetters::sendPick(IoControl control) {
    sendSetting(control, IoBindings[control].list(s_.ui())->currentIndex());
}

void IoSetters::cbo_reso_Click() {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendPick(Reso);
}

// Leaves the model list alone when the link is down, unlike the resolution and OSD lists.
void IoSetters::cbo_info_play_Click() {
    if (!s_.guard() || page_.busy())
        return;
    sendPick(InfoPlay);
}

void IoSetters::cbo_osd_Click(int index) {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendPick(index == 0 ? OsdH : OsdV);
}

// The list shows the timeout itself, from the setting's minimum.
void IoSetters::cbo_osd_time_Click() {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendPick(OsdTime);
}

void IoSetters::cbo_osd_gain_Click() {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendPick(Gain);
}

void IoSetters::opt_mute_Click(int index) {
    if (!s_.guard() || page_.busy())
        return;
    sendSetting(Mute, index);
}

void IoSetters::cbo_osd_KeyDown(int index, int keyCode) {
    typedSetter(index == 0 ? OsdH : OsdV, keyCode);
}

void IoSetters::cbo_osd_gain_KeyDown(int keyCode) {
    typedSetter(Gain, keyCode);
}

// Enter sends the text exactly as typed once it passes the loose real-valued bounds
// minimum - 1 < v < maximum + 1 ("20.9" and "-0.5" pass). Typing is not held back by a
// read or reset of the page: only picks are.
void IoSetters::typedSetter(IoControl control, int keyCode) {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || keyCode != events::KeyEnter)
        return;
    const IoBinding& b = IoBindings[control];
    const protocol::Setting& setting = b.bound();
    const QString text = b.list(s_.ui())->lineEdit()->text();
    if (!legacy::typedWithin(text, double(setting.min) - 1, double(setting.max) + 1)) {
        s_.exclamation(QStringLiteral("Please type %1 ~ %2").arg(setting.min).arg(setting.max));
        return;
    }
    s_.sendTo(s_.ui().chk_io[b.allIpBox]->isChecked(), command::line(*setting.write, text));
}
