#include "status/statusread.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

namespace {

// Steps of the status read, each released by its reply, and the settings they read.
enum Step { Power = 1, Model, Bypass, BezelMode, Firmware };
constexpr const char* StepSettings[] = {"power", "model", "bypass", "bezel.mode", "firmware"};

QByteArray readOf(Step step) {
    return protocol::readLine(protocol::setting(StepSettings[step - 1]));
}

} // namespace

StatusRead::StatusRead(WindowServices& session) : s_(session) {}

void StatusRead::ReadStatus() {
    if (!s_.guard())
        return;
    s_.request(step_, Firmware, [](int k) { return readOf(Step(k + 1)); });
}

bool StatusRead::readBypass() {
    return s_.request(step_, {readOf(Bypass)}, {.from = Bypass});
}

bool StatusRead::readBezelMode() {
    return s_.request(step_, {readOf(BezelMode)}, {.from = BezelMode});
}

bool StatusRead::readBypassThenBezelMode(const std::function<void()>& between) {
    return s_.request(step_, {readOf(Bypass), readOf(BezelMode)},
                      {.from = Bypass, .answered = [&between](int replies) {
                           if (replies == 1)
                               between();
                       }});
}

bool StatusRead::switchPower(bool on, bool all) {
    return s_.request(step_, {command::line(*protocol::setting("power").write, on ? 1 : 0)},
                      {.all = all, .from = Power});
}

// Options and the model list set here raise their Click; those handlers see the read
// busy and send nothing back.
void StatusRead::HandleStatusReply(const QString& reply) {
    const int step = step_.value();
    if (step < Power || step > Firmware ||
        reply::key(reply) != reply::keyOf(*protocol::setting(StepSettings[step - 1]).read))
        return;
    const QString value = reply::value(reply);
    const bool on = value != QLatin1String("000");
    Controls& ui = s_.ui();
    switch (Step(step)) {
    case Power:
        ui.power_ctl[1]->setVisible(on);
        ui.power_ctl[0]->setVisible(false);
        ui.power_ctl[2]->setVisible(!on);
        break;
    case Model:
        if (!events::setListIndex(ui.cbo_model, legacy::roundHalfEven(legacy::val(value))))
            return; // the list's range error ends the handler
        break;
    case Bypass:
        events::setOption(ui.opt_ch4_bypass[on ? 0 : 1]);
        break;
    case BezelMode:
        events::setOption(ui.opt_bezel[on ? 1 : 0]);
        break;
    case Firmware: // "102" is v1.02
        s_.setTitle(WindowServices::Title + QStringLiteral("    FW: v") + value.left(1) + u'.' +
                    value.mid(1, 2));
        break;
    }
    step_.advance();
}
