#include "wall/bezelcorrection.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"
#include "status/statusread.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The two columns of lists, each a family kept per output; a column's members 1..4 are
// the outputs. Steps 1-4 are the H column's outputs, 5-8 the V column's.
struct BezelColumn {
    const char* family;
    std::array<QComboBox*, 5> Controls::*lists;
};
constexpr BezelColumn Columns[2] = {{"bezel.h", &Controls::cbo_val_H},
                                    {"bezel.v", &Controls::cbo_val_V}};

const protocol::Setting& settingAt(int k) { // k = step - 1
    return protocol::setting(Columns[k / 4].family, k % 4 + 1);
}

const protocol::Command& resetBezel() {
    return protocol::command(protocol::Action::ResetBezel);
}

} // namespace

BezelCorrection::BezelCorrection(WindowServices& session, StatusRead& status)
    : s_(session), status_(status) {
    Controls& ui = s_.ui();
    // The one Send sends both columns; the V column's Send has no action of its own.
    QObject::connect(ui.btn_H_Bezel_send, &QPushButton::clicked, ui.btn_H_Bezel_send,
                     [this] { btn_H_Bezel_send_Click(); });
    QObject::connect(ui.btn_panomat_refresh, &QPushButton::clicked, ui.btn_panomat_refresh,
                     [this] { btn_panomat_refresh_Click(); });
    QObject::connect(ui.btn_panomat_reset, &QPushButton::clicked, ui.btn_panomat_reset,
                     [this] { btn_panomat_reset_Click(); });
    for (int i = 0; i < 2; ++i)
        QObject::connect(ui.opt_bezel[i], &QRadioButton::clicked, ui.opt_bezel[i],
                         [this, i] { opt_bezel_Click(i); });
}

// Eight values, each after the previous acknowledgement, then the mode is read back.
void BezelCorrection::btn_H_Bezel_send_Click() {
    if (!s_.guard())
        return;
    if (!read_.idle() || !default_.idle())
        return; // a Refresh or Reset is running
    // Outputs 1-4 of the H column, then of the V column; each box is read in its turn.
    const bool sent = s_.request(write_, 8, [this](int k) {
        const int n = k % 4 + 1;
        const protocol::Setting& setting = settingAt(k);
        QComboBox* box = (s_.ui().*Columns[k / 4].lists)[n];
        return command::line(*setting.write, n, box->currentIndex() + int(setting.min));
    });
    if (sent)
        status_.readBezelMode();
}

void BezelCorrection::btn_panomat_refresh_Click() {
    if (!s_.guard())
        return;
    s_.request(read_, 8, [](int k) { return protocol::readLine(settingAt(k)); });
}

// The defaults show at once, before the controller has answered.
void BezelCorrection::btn_panomat_reset_Click() {
    if (!s_.guard())
        return;
    const auto showDefaults = [this] {
        for (int k = 0; k < 8; ++k) {
            const protocol::Setting& setting = settingAt(k);
            (s_.ui().*Columns[k / 4].lists)[k % 4 + 1]->setCurrentIndex(
                int(setting.factory - setting.min));
        }
    };
    if (s_.request(default_, {command::line(resetBezel())}, {.armed = showDefaults}))
        status_.readBypass();
}

void BezelCorrection::opt_bezel_Click(int index) {
    if (!s_.guard())
        return;
    if (index != 0 && index != 1)
        return;
    if (status_.busy())
        return; // the status read is setting the option, not the operator
    s_.sendTo(s_.ui().Check1[2]->isChecked(),
              command::line(*protocol::setting("bezel.mode").write, index));
}

// The replies do not name the output: the step says which box the value belongs to.
// Key and value sit at characters 8-11 and 12-14 of these replies.
void BezelCorrection::HandleBezelValueReply(const QString& reply) {
    const int step = read_.value();
    if (step < 1 || step > 8 ||
        reply::longKey(reply) != reply::secondKeyOf(*settingAt(step - 1).read))
        return;
    const int value = legacy::roundHalfEven(legacy::val(reply::longValue(reply)));
    QComboBox* box = (s_.ui().*Columns[(step - 1) / 4].lists)[(step - 1) % 4 + 1];
    if (!events::setListIndex(box, value - int(settingAt(step - 1).min)))
        return;
    read_.advance();
}

// Acknowledgements advance strictly in order: the H column's for outputs 001..004, then
// the V column's.
void BezelCorrection::HandleBezelAckReply(const QString& reply) {
    const QString key = reply::key(reply);
    const QString value = reply::value(reply);
    const int step = write_.value();
    if (step < 1 || step > 8)
        return;
    const int output = (step - 1) % 4 + 1;
    if (key == reply::keyOf(*settingAt(step - 1).write) &&
        value == QStringLiteral("00%1").arg(output))
        write_.advance();
}

void BezelCorrection::HandleWallDefaultReply(const QString& reply) {
    if (reply::key(reply) == reply::keyOf(resetBezel()) && default_.at(1))
        default_.advance();
}
