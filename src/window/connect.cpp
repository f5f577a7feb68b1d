#include "window/connect.h"

#include "protocol/command.h"
#include "services/events.h"
#include "services/windowservices.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

ControllerConnect::ControllerConnect(WindowServices& session, std::function<void()> refresh)
    : s_(session), refresh_(std::move(refresh)) {
    Controls& ui = s_.ui();
    QObject::connect(ui.btn_con, &QPushButton::clicked, ui.btn_con, [this] { btn_con_Click(); });
    QObject::connect(ui.btn_discon, &QPushButton::clicked, ui.btn_discon,
                     [this] { btn_discon_Click(); });
    events::onClick(ui.cbo_ipaddr, [this] { cbo_ipaddr_Click(); });
}

// The wait of Connect and of a new selection: the selected socket must connect within
// the pass limit, else "Connected error!".
bool ControllerConnect::waitForSelected() {
    const int index = s_.selected();
    if (s_.pump().untilConnected([&] { return s_.link().isConnected(index); }))
        return true;
    s_.exclamation(QStringLiteral("Connected error!"));
    return false;
}

void ControllerConnect::showInfoAndRefresh(int index) {
    s_.link().write(index, command::line(protocol::command(protocol::Action::ShowOsdInfo)));
    refresh_();
}

void ControllerConnect::btn_con_Click() {
    for (int i = 0; i < s_.deviceCount(); ++i)
        s_.link().connectTo(i, s_.address(i));
    QLabel* connecting = s_.ui().lbl_con[2];
    connecting->setVisible(true);
    if (s_.selected() < 0) {
        s_.exclamation(QStringLiteral("Please select a MAC to connect !"));
        connecting->setVisible(false);
        return;
    }
    const bool connected = waitForSelected();
    if (s_.cancelled())
        return;
    if (!connected) {
        s_.SetOffline();
        return;
    }
    s_.SetConnected();
    showInfoAndRefresh(s_.selected());
}

void ControllerConnect::cbo_ipaddr_Click() {
    const int index = s_.selected();
    s_.link().connectTo(index, s_.address(index));
    const bool connected = waitForSelected();
    if (s_.cancelled())
        return;
    if (connected)
        showInfoAndRefresh(index);
    else if (!s_.searchDone())
        s_.SetOffline();
}

void ControllerConnect::btn_discon_Click() {
    s_.SetOffline();
}
