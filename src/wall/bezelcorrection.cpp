#include "wall/bezelcorrection.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"
#include "status/statusread.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

namespace {

constexpr int DefaultBezel = 10;

} // namespace

BezelCorrection::BezelCorrection(Session& session, StatusRead& status)
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
        QComboBox* box = k < 4 ? s_.ui().cbo_val_H[n] : s_.ui().cbo_val_V[n];
        return command::line(QLatin1String(k < 4 ? "SCBH" : "SCBV"), n, box->currentIndex());
    });
    if (sent)
        status_.readBezelMode();
}

void BezelCorrection::btn_panomat_refresh_Click() {
    if (!s_.guard())
        return;
    s_.request(read_, 8, [](int k) {
        return command::line(QLatin1String(k < 4 ? "RCBH" : "RCBV"), k % 4 + 1);
    });
}

// The defaults show at once, before the controller has answered.
void BezelCorrection::btn_panomat_reset_Click() {
    if (!s_.guard())
        return;
    const auto showDefaults = [this] {
        for (int n = 1; n <= 4; ++n)
            s_.ui().cbo_val_H[n]->setCurrentIndex(DefaultBezel);
        for (int n = 1; n <= 4; ++n)
            s_.ui().cbo_val_V[n]->setCurrentIndex(DefaultBezel);
    };
    if (s_.request(default_, {command::line(QStringLiteral("SWDE"))}, {.armed = showDefaults}))
        status_.readBypass();
}

void BezelCorrection::opt_bezel_Click(int index) {
    if (!s_.guard())
        return;
    if (index != 0 && index != 1)
        return;
    if (status_.busy())
        return; // the status read is setting the option, not the operator
    s_.sendTo(s_.ui().Check1[2]->isChecked(), command::line(QStringLiteral("SBEZ"), index));
}

// The replies do not name the output: the step says which box the value belongs to.
// Key and value sit at characters 8-11 and 12-14 of these replies.
void BezelCorrection::HandleBezelValueReply(const QString& reply) {
    const QString key = reply::longKey(reply);
    const int step = read_.value();
    const int value = legacy::roundHalfEven(legacy::val(reply::longValue(reply)));
    QComboBox* box = nullptr;
    if (key == QLatin1String("CBHV") && step >= 1 && step <= 4)
        box = s_.ui().cbo_val_H[step];
    else if (key == QLatin1String("CBVV") && step >= 5 && step <= 8)
        box = s_.ui().cbo_val_V[step - 4];
    if (!box || !events::setListIndex(box, value))
        return;
    read_.advance();
}

// Acknowledgements advance strictly in order: "CBHC001".."CBHC004", "CBVC001".."CBVC004".
void BezelCorrection::HandleBezelAckReply(const QString& reply) {
    const QString key = reply::key(reply);
    const QString value = reply::value(reply);
    const int step = write_.value();
    if (step < 1 || step > 8)
        return;
    const bool horizontal = step <= 4;
    const int output = horizontal ? step : step - 4;
    if (key == QLatin1String(horizontal ? "CBHC" : "CBVC") &&
        value == QStringLiteral("00%1").arg(output))
        write_.advance();
}

void BezelCorrection::HandleWallDefaultReply(const QString& reply) {
    if (reply::key(reply) == QLatin1String("WDEF") && default_.at(1))
        default_.advance();
}
