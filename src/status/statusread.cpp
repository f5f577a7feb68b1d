#include "status/statusread.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

namespace {

// Steps of the status read, each released by its reply.
enum Step { Power = 1, Model, Bypass, BezelMode, Firmware };

} // namespace

StatusRead::StatusRead(Session& session) : s_(session) {}

void StatusRead::ReadStatus() {
    if (!s_.guard())
        return;
    static const char* const reads[] = {"RPOW", "RMDN", "RBY", "RBEZ", "RVER"};
    s_.request(step_, 5, [](int k) { return command::line(QLatin1String(reads[k])); });
}

bool StatusRead::readBypass() {
    return s_.request(step_, {command::line(QStringLiteral("RBY"))}, {.from = Bypass});
}

bool StatusRead::readBezelMode() {
    return s_.request(step_, {command::line(QStringLiteral("RBEZ"))}, {.from = BezelMode});
}

bool StatusRead::readBypassThenBezelMode(const std::function<void()>& between) {
    return s_.request(step_,
                      {command::line(QStringLiteral("RBY")), command::line(QStringLiteral("RBEZ"))},
                      {.from = Bypass, .answered = [&between](int replies) {
                           if (replies == 1)
                               between();
                       }});
}

bool StatusRead::switchPower(bool on, bool all) {
    return s_.request(step_, {command::line(QStringLiteral("SPOW"), on ? 1 : 0)},
                      {.all = all, .from = Power});
}

// Options and the model list set here raise their Click; those handlers see the read
// busy and send nothing back.
void StatusRead::HandleStatusReply(const QString& reply) {
    const QString key = reply::key(reply);
    const bool on = reply::value(reply) != QLatin1String("000");
    Controls& ui = s_.ui();
    if (key == QLatin1String("POWE") && step_.at(Power)) {
        ui.power_ctl[1]->setVisible(on);
        ui.power_ctl[0]->setVisible(false);
        ui.power_ctl[2]->setVisible(!on);
    } else if (key == QLatin1String("MODN") && step_.at(Model)) {
        const int model = legacy::roundHalfEven(legacy::val(reply::value(reply)));
        if (!events::setListIndex(ui.cbo_model, model))
            return; // the list's range error ends the handler
    } else if (key == QLatin1String("BYPA") && step_.at(Bypass)) {
        events::setOption(ui.opt_ch4_bypass[on ? 0 : 1]);
    } else if (key == QLatin1String("BEZE") && step_.at(BezelMode)) {
        events::setOption(ui.opt_bezel[on ? 1 : 0]);
    } else if (key == QLatin1String("VERS") && step_.at(Firmware)) {
        s_.setTitle(Session::Title + QStringLiteral("    FW: v") + legacy::mid(reply, 5, 1) + u'.' +
                    legacy::mid(reply, 6, 2));
    } else {
        return;
    }
    step_.advance();
}
