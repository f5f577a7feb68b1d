#include "output/iosetup.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "window/events.h"
#include "window/session.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

IoSetup::IoSetup(Session& session) : s_(session) {
    for (int i = 0; i < 3; ++i) {
        QPushButton* button = s_.ui.btn_io_rst[i];
        QObject::connect(button, &QPushButton::clicked, button, [this, i] { btn_io_rst_Click(i); });
    }
}

void IoSetup::ReadIoSetup() {
    if (!s_.guard())
        return;
    static const char* const reads[] = {"RRES",  "ROSDD", "ROSDT", "ROSDH",
                                        "ROSDV", "ROSDG", "RMUTE"};
    const BusyButtons busy{s_.ui.btn_io_rst[0]};
    s_.w.wait_io = 1;
    if (!s_.sendInTurn(s_.w.wait_io, 7,
                       [](int k) { return command::line(QLatin1String(reads[k])); }))
        return;
    s_.w.wait_io = 0;
}

// Each list set here raises its Click; the setters stay silent while wait_io is busy.
// A value outside a list ends the handler before the step advances, so the read keeps
// waiting for a reply that has already come.
void IoSetup::HandleIoSetupReply(const QString& reply) {
    const QString key = reply::key(reply);
    const QString text = reply::value(reply);
    const int value = legacy::roundHalfEven(legacy::val(text));
    quint8& step = s_.w.wait_io;
    Controls& ui = s_.ui;
    struct ListStep {
        const char* key;
        QComboBox* list;
        int offset; // the timeout list starts at 2
    };
    const ListStep lists[] = {{"RESO", ui.cbo_reso, 0},     {"OSDD", ui.cbo_info_play, 0},
                              {"OSDT", ui.cbo_osd_time, 2}, {"OSDH", ui.cbo_osd[0], 0},
                              {"OSDV", ui.cbo_osd[1], 0},   {"OSDG", ui.cbo_osd_gain, 0}};
    for (int i = 0; i < 6; ++i) {
        if (key == QLatin1String(lists[i].key) && step == i + 1) {
            if (!events::setListIndex(lists[i].list, value - lists[i].offset))
                return;
            step = static_cast<quint8>(i + 2);
            return;
        }
    }
    if (key == QLatin1String("MUTE") && step == 7) {
        events::setOption(ui.opt_mute[text == QLatin1String("001") ? 1 : 0]);
        step = 8;
    }
}

void IoSetup::HandleOsdResetReply(const QString& reply) {
    if (reply::key(reply) == QLatin1String("OSDR") && s_.w.wait_osd_reset == 1)
        s_.w.wait_osd_reset = 2;
}

void IoSetup::btn_io_rst_Click(int index) {
    if (!s_.guard())
        return;
    switch (index) {
    case 0:
        ReadIoSetup();
        break;
    case 1:
        resetOsd();
        break;
    case 2:
        s_.send(command::line(QStringLiteral("SOSDI")));
        break;
    }
}

// The answer picks who gets the reset; the page shows the defaults either way, and
// only the selected controller's acknowledgement ends the wait.
void IoSetup::resetOsd() {
    const bool everyDevice = s_.askYes(QStringLiteral("Reset All IP ?"));
    if (s_.pump.cancelled())
        return;
    s_.w.wait_osd_reset = 1;
    showDefaults();
    s_.sendTo(everyDevice, command::line(QStringLiteral("SOSDR")));
    if (!s_.waitFor(s_.w.wait_osd_reset, 2))
        return;
    s_.w.wait_osd_reset = 0;
}

void IoSetup::showDefaults() {
    Controls& ui = s_.ui;
    events::setListIndex(ui.cbo_reso, 6); // 1080p60
    events::setListIndex(ui.cbo_info_play, 0);
    events::setListIndex(ui.cbo_osd_time, 0);
    events::setListIndex(ui.cbo_osd[0], 5);
    events::setListIndex(ui.cbo_osd[1], 5);
    events::setListIndex(ui.cbo_osd_gain, 2);
    events::setOption(ui.opt_mute[0]);
}
