#include "system/powermodel.h"

#include "protocol/command.h"
#include "services/events.h"
#include "status/statusread.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

namespace {

constexpr int PowerAllIpBox = 0;
constexpr int ResetAllIpBox = 1;

} // namespace

PowerModel::PowerModel(WindowServices& session, StatusRead& status) : s_(session), status_(status) {
    Controls& ui = s_.ui();
    for (int i = 0; i < 3; ++i)
        QObject::connect(ui.power_ctl[i], &QPushButton::clicked, ui.power_ctl[i],
                         [this, i] { power_ctl_Click(i); });
    events::onClick(ui.cbo_model, [this] { cbo_model_Click(); });
    QObject::connect(ui.btn_sys_fac_rst, &QPushButton::clicked, ui.btn_sys_fac_rst,
                     [this] { btn_sys_fac_rst_Click(); });
}

// "Power" only shows the state last read. Power on restarts the controller's network,
// so the link is given up.
void PowerModel::power_ctl_Click(int index) {
    if (!s_.guard())
        return;
    if (index == 0) {
        s_.information(QStringLiteral("Click Refresh to Get Power Status !"));
        return;
    }
    if (index != 1 && index != 2)
        return;
    const bool on = index == 1;
    if (status_.switchPower(on, s_.ui().Check1[PowerAllIpBox]->isChecked()) && on)
        s_.SetOffline();
}

// A status read sets this list from the controller's reply; that must not send it back.
void PowerModel::cbo_model_Click() {
    if (!s_.guard(WindowServices::Refusal::ClearModelFirst) || status_.busy())
        return;
    s_.send(command::line(*protocol::setting("model").write, s_.ui().cbo_model->currentIndex()));
}

// No question first. The controller restarts after its acknowledgement, so the link is
// given up.
void PowerModel::btn_sys_fac_rst_Click() {
    if (!s_.guard())
        return;
    if (!s_.request(reset_, {command::line(protocol::command(protocol::Action::FactoryReset))},
                    {.all = s_.ui().Check1[ResetAllIpBox]->isChecked()}))
        return;
    s_.SetOffline();
    s_.information(QStringLiteral("Reset completed ! Please reconnect the ethernet !"));
}

void PowerModel::HandleResetReply(const QString& reply) {
    if (reply::key(reply) == reply::keyOf(protocol::command(protocol::Action::FactoryReset)) &&
        reset_.at(1))
        reset_.advance();
}
