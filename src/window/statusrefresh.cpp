#include "window/statusrefresh.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "output/iosetup.h"
#include "system/networkconfig.h"
#include "wall/bezelcorrection.h"
#include "window/events.h"
#include "window/session.h"

#include <QComboBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <functional>

StatusRefresh::StatusRefresh(Session& session, NetworkConfig& network, BezelCorrection& bezel,
                             IoSetup& io)
    : s_(session), network_(network), bezel_(bezel), io_(io) {}

// The panels stay locked until the operator has closed the completion message.
void StatusRefresh::RefreshAll() {
    if (!s_.guard())
        return;
    s_.LockPanels();
    QProgressBar* progress = s_.ui.ProgressBar1;
    progress->setVisible(true);
    progress->setValue(0);
    // Each read runs its own link test and waits for its own replies.
    const std::pair<std::function<void()>, int> reads[] = {
        {[this] { ReadStatus(); }, 30},
        {[this] { network_.btn_ip_get_Click(); }, 60},
        {[this] { bezel_.btn_panomat_refresh_Click(); }, 85},
        {[this] { io_.ReadIoSetup(); }, 100}};
    for (const auto& [read, percent] : reads) {
        read();
        if (s_.pump.cancelled())
            return;
        progress->setValue(percent);
    }
    s_.plain(QStringLiteral("Refresh completed !"));
    progress->setVisible(false);
    s_.UnlockPanels();
}

void StatusRefresh::ReadStatus() {
    if (!s_.guard())
        return;
    static const char* const reads[] = {"RPOW", "RMDN", "RBY", "RBEZ", "RVER"};
    s_.w.wait_status = 1;
    if (!s_.sendInTurn(s_.w.wait_status, 5,
                       [](int k) { return command::line(QLatin1String(reads[k])); }))
        return;
    s_.w.wait_status = 0;
}

void StatusRefresh::ReadBypassBezel() {
    if (!s_.guard())
        return;
    QProgressBar* progress = s_.ui.ProgressBar1;
    progress->setValue(20);
    s_.w.wait_status = 3;
    s_.send(command::line(QStringLiteral("RBY")));
    if (!s_.waitFor(s_.w.wait_status, 4))
        return;
    progress->setValue(40);
    s_.send(command::line(QStringLiteral("RBEZ")));
    if (!s_.waitFor(s_.w.wait_status, 5))
        return;
    s_.w.wait_status = 0;
    progress->setValue(60);
    bezel_.btn_panomat_refresh_Click();
}

// Options and the model list set here raise their Click; those handlers see
// wait_status busy and send nothing back.
void StatusRefresh::HandleStatusReply(const QString& reply) {
    const QString key = reply::key(reply);
    const bool on = reply::value(reply) != QLatin1String("000");
    quint8& step = s_.w.wait_status;
    Controls& ui = s_.ui;
    if (key == QLatin1String("POWE") && step == 1) {
        ui.power_ctl[1]->setVisible(on);
        ui.power_ctl[0]->setVisible(false);
        ui.power_ctl[2]->setVisible(!on);
        step = 2;
    } else if (key == QLatin1String("MODN") && step == 2) {
        const int model = legacy::roundHalfEven(legacy::val(reply::value(reply)));
        if (!events::setListIndex(ui.cbo_model, model))
            return; // the list's range error ends the handler
        step = 3;
    } else if (key == QLatin1String("BYPA") && step == 3) {
        events::setOption(ui.opt_ch4_bypass[on ? 0 : 1]);
        step = 4;
    } else if (key == QLatin1String("BEZE") && step == 4) {
        events::setOption(ui.opt_bezel[on ? 1 : 0]);
        step = 5;
    } else if (key == QLatin1String("VERS") && step == 5) {
        s_.setTitle(Session::Title + QStringLiteral("    FW: v") + legacy::mid(reply, 5, 1) + u'.' +
                    legacy::mid(reply, 6, 2));
        step = 6;
    }
}

// Nothing arms wait_power, so this never fires; the controller's "POWE001" is taken by
// the status handler above.
void StatusRefresh::HandlePowerConfirmReply(const QString& reply) {
    if (reply::key(reply) == QLatin1String("POWE") && reply::value(reply) == QLatin1String("001") &&
        s_.w.wait_power == 1)
        s_.w.wait_power = 2;
}
