#include "output/iosetup.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

IoSetup::IoSetup(Session& session) : s_(session) {
    for (int i = 0; i < 3; ++i) {
        QPushButton* button = s_.ui().btn_io_rst[i];
        QObject::connect(button, &QPushButton::clicked, button, [this, i] { btn_io_rst_Click(i); });
    }
}

void IoSetup::ReadIoSetup() {
    if (!s_.guard())
        return;
    static const char* const reads[] = {"RRES",  "ROSDD", "ROSDT", "ROSDH",
                                        "ROSDV", "ROSDG", "RMUTE"};
    const BusyButtons busy{s_.ui().btn_io_rst[0]};
    s_.request(read_, 7, [](int k) { return command::line(QLatin1String(reads[k])); });
}

// Each list set here raises its Click; the setters stay silent while the read is busy.
// A value outside a list ends the handler before the step advances, so the read keeps
// waiting for a reply that has already come.
void IoSetup::HandleIoSetupReply(const QString& reply) {
    const QString key = reply::key(reply);
    const QString text = reply::value(reply);
    const int value = legacy::roundHalfEven(legacy::val(text));
    Controls& ui = s_.ui();
    struct ListStep {
        const char* key;
        QComboBox* list;
        int offset; // the timeout list starts at 2
    };
    const ListStep lists[] = {{"RESO", ui.cbo_reso, 0},     {"OSDD", ui.cbo_info_play, 0},
                              {"OSDT", ui.cbo_osd_time, 2}, {"OSDH", ui.cbo_osd[0], 0},
                              {"OSDV", ui.cbo_osd[1], 0},   {"OSDG", ui.cbo_osd_gain, 0}};
    for (int i = 0; i < 6; ++i) {
        if (key == QLatin1String(lists[i].key) && read_.at(i + 1)) {
            if (events::setListIndex(lists[i].list, value - lists[i].offset))
                read_.advance();
            return;
        }
    }
    if (key == QLatin1String("MUTE") && read_.at(7)) {
        events::setOption(ui.opt_mute[text == QLatin1String("001") ? 1 : 0]);
        read_.advance();
    }
}

void IoSetup::HandleOsdResetReply(const QString& reply) {
    if (reply::key(reply) == QLatin1String("OSDR") && osdReset_.at(1))
        osdReset_.advance();
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
    if (s_.cancelled())
        return;
    s_.request(osdReset_, {command::line(QStringLiteral("SOSDR"))},
               {.all = everyDevice, .armed = [this] { showDefaults(); }});
}

void IoSetup::showDefaults() {
    Controls& ui = s_.ui();
    events::setListIndex(ui.cbo_reso, 6); // 1080p60
    events::setListIndex(ui.cbo_info_play, 0);
    events::setListIndex(ui.cbo_osd_time, 0);
    events::setListIndex(ui.cbo_osd[0], 5);
    events::setListIndex(ui.cbo_osd[1], 5);
    events::setListIndex(ui.cbo_osd_gain, 2);
    events::setOption(ui.opt_mute[0]);
}
