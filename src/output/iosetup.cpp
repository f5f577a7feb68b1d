#include "output/iosetup.h"

#include "output/iobindings.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

IoSetup::IoSetup(WindowServices& session) : s_(session) {
    for (int i = 0; i < 3; ++i) {
        QPushButton* button = s_.ui().btn_io_rst[i];
        QObject::connect(button, &QPushButton::clicked, button, [this, i] { btn_io_rst_Click(i); });
    }
}

void IoSetup::ReadIoSetup() {
    if (!s_.guard())
        return;
    const BusyButtons busy{s_.ui().btn_io_rst[0]};
    s_.request(read_, IoControlCount,
               [](int k) { return protocol::readLine(IoBindings[k].bound()); });
}

// Each list set here raises its Click; the setters stay silent while the read is busy.
// A value outside a list ends the handler before the step advances, so the read keeps
// waiting for a reply that has already come.
void IoSetup::HandleIoSetupReply(const QString& reply) {
    const QString key = reply::key(reply);
    const QString text = reply::value(reply);
    const int value = legacy::roundHalfEven(legacy::val(text));
    Controls& ui = s_.ui();
    for (int i = 0; i < IoControlCount; ++i) {
        const protocol::Setting& setting = IoBindings[i].bound();
        if (key != reply::keyOf(*setting.read) || !read_.at(i + 1))
            continue;
        if (!IoBindings[i].list) {
            events::setOption(ui.opt_mute[text == QLatin1String("001") ? 1 : 0]);
            read_.advance();
        } else if (events::setListIndex(IoBindings[i].list(ui), value - int(setting.min))) {
            read_.advance();
        }
        return;
    }
}

void IoSetup::HandleOsdResetReply(const QString& reply) {
    if (reply::key(reply) == reply::keyOf(protocol::command(protocol::Action::ResetIo)) &&
        osdReset_.at(1))
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
        s_.send(command::line(protocol::command(protocol::Action::ShowOsdInfo)));
        break;
    }
}

// The answer picks who gets the reset; the page shows the defaults either way, and
// only the selected controller's acknowledgement ends the wait.
void IoSetup::resetOsd() {
    const bool everyDevice = s_.askYes(QStringLiteral("Reset All IP ?"));
    if (s_.cancelled())
        return;
    s_.request(osdReset_, {command::line(protocol::command(protocol::Action::ResetIo))},
               {.all = everyDevice, .armed = [this] { showDefaults(); }});
}

void IoSetup::showDefaults() {
    Controls& ui = s_.ui();
    for (const IoBinding& b : IoBindings) {
        const protocol::Setting& setting = b.bound();
        if (b.list)
            events::setListIndex(b.list(ui), int(setting.factory - setting.min));
        else
            events::setOption(ui.opt_mute[setting.factory]);
    }
}
