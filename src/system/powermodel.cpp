#include "system/powermodel.h"

#include "protocol/command.h"
#include "window/events.h"
#include "window/session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

namespace {

constexpr int PowerAllIpBox = 0;
constexpr int ResetAllIpBox = 1;

} // namespace

PowerModel::PowerModel(Session& session) : s_(session) {
    Controls& ui = s_.ui;
    for (int i = 0; i < 3; ++i)
        QObject::connect(ui.power_ctl[i], &QPushButton::clicked, ui.power_ctl[i],
                         [this, i] { power_ctl_Click(i); });
    events::onClick(ui.cbo_model, [this] { cbo_model_Click(); });
    QObject::connect(ui.btn_sys_fac_rst, &QPushButton::clicked, ui.btn_sys_fac_rst,
                     [this] { btn_sys_fac_rst_Click(); });
}

// "Power" only shows the state last read. Switching borrows the status read's wait:
// the selected controller answers "POWE", which the status handler takes at step 1.
// Power on restarts the controller's network, so the link is given up.
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
    s_.w.wait_status = 1;
    s_.sendTo(s_.ui.Check1[PowerAllIpBox]->isChecked(),
              command::line(QStringLiteral("SPOW"), on ? 1 : 0));
    if (!s_.waitFor(s_.w.wait_status, 2))
        return;
    s_.w.wait_status = 0;
    if (on)
        s_.SetOffline();
}

// A status read sets this list from the "MODN" reply; that must not send it back.
void PowerModel::cbo_model_Click() {
    if (!s_.linkUp()) {
        s_.critical(QStringLiteral("Ethernet is disconnected !"));
        // Only the selection goes; this list's Click is not raised again.
        s_.ui.cbo_model->setCurrentIndex(-1);
        s_.SetOffline();
        return;
    }
    if (s_.w.wait_status != 0)
        return;
    s_.send(command::line(QStringLiteral("SMDN"), s_.ui.cbo_model->currentIndex()));
}

// No question first. wait_default is armed before the link test and stays armed when
// the test fails. The controller restarts after "DEFA", so the link is given up.
void PowerModel::btn_sys_fac_rst_Click() {
    s_.w.wait_default = 1;
    if (!s_.guard())
        return;
    s_.sendTo(s_.ui.Check1[ResetAllIpBox]->isChecked(), command::line(QStringLiteral("SDEF")));
    if (!s_.waitFor(s_.w.wait_default, 2))
        return;
    s_.SetOffline();
    s_.w.wait_default = 0;
    s_.information(QStringLiteral("Reset completed ! Please reconnect the ethernet !"));
}
