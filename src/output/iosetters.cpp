#include "output/iosetters.h"

#include "output/iosetup.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"
#include "session/session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

namespace {

// Index of each setting's "ALL IP" box in chk_io.
enum AllIpBox {
    ResoBox = 0,
    InfoPlayBox = 1,
    OsdHBox = 2,
    OsdVBox = 3,
    OsdTimeBox = 4,
    GainBox = 5,
    MuteBox = 6
};

const char* osdKeyword(int index) {
    return index == 0 ? "SOSDH" : "SOSDV";
}

} // namespace

IoSetters::IoSetters(Session& session, const IoSetup& page) : s_(session), page_(page) {
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

void IoSetters::sendSetting(int allIpBox, const QByteArray& line) {
    s_.sendTo(s_.ui().chk_io[allIpBox]->isChecked(), line);
}

void IoSetters::cbo_reso_Click() {
    if (!s_.guard(Session::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendSetting(ResoBox, command::line(QStringLiteral("SRES"), s_.ui().cbo_reso->currentIndex()));
}

// Leaves the model list alone when the link is down, unlike the resolution and OSD lists.
void IoSetters::cbo_info_play_Click() {
    if (!s_.guard() || page_.busy())
        return;
    sendSetting(InfoPlayBox,
                command::line(QStringLiteral("SOSDD"), s_.ui().cbo_info_play->currentIndex()));
}

void IoSetters::cbo_osd_Click(int index) {
    if (!s_.guard(Session::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendSetting(
        index == 0 ? OsdHBox : OsdVBox,
        command::line(QLatin1String(osdKeyword(index)), s_.ui().cbo_osd[index]->currentIndex()));
}

// The list shows the timeout itself, starting at 2 seconds.
void IoSetters::cbo_osd_time_Click() {
    if (!s_.guard(Session::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendSetting(OsdTimeBox,
                command::line(QStringLiteral("SOSDT"), s_.ui().cbo_osd_time->currentIndex() + 2));
}

void IoSetters::cbo_osd_gain_Click() {
    if (!s_.guard(Session::Refusal::ClearModelFirst) || page_.busy())
        return;
    sendSetting(GainBox,
                command::line(QStringLiteral("SOSDG"), s_.ui().cbo_osd_gain->currentIndex()));
}

void IoSetters::opt_mute_Click(int index) {
    if (!s_.guard() || page_.busy())
        return;
    sendSetting(MuteBox, command::line(QStringLiteral("SMUTE"), index));
}

void IoSetters::cbo_osd_KeyDown(int index, int keyCode) {
    typedSetter(s_.ui().cbo_osd[index], QLatin1String(osdKeyword(index)), 20,
                index == 0 ? OsdHBox : OsdVBox, keyCode);
}

void IoSetters::cbo_osd_gain_KeyDown(int keyCode) {
    typedSetter(s_.ui().cbo_osd_gain, QStringLiteral("SOSDG"), 10, GainBox, keyCode);
}

// Enter sends the text exactly as typed once it passes the loose real-valued bounds
// -1 < v < maximum + 1 ("20.9" and "-0.5" pass). Typing is not held back by a read or
// reset of the page: only picks are.
void IoSetters::typedSetter(QComboBox* box, const QString& keyword, int maximum, int allIpBox,
                            int keyCode) {
    if (!s_.guard(Session::Refusal::ClearModelFirst) || keyCode != events::KeyEnter)
        return;
    const QString text = box->lineEdit()->text();
    if (!legacy::typedWithin(text, -1, maximum + 1)) {
        s_.exclamation(QStringLiteral("Please type 0 ~ %1").arg(maximum));
        return;
    }
    sendSetting(allIpBox, command::line(keyword, text));
}
