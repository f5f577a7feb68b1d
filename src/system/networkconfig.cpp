#include "system/networkconfig.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "window/events.h"
#include "window/session.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

NetworkConfig::NetworkConfig(Session& session) : s_(session) {
    Controls& ui = s_.ui;
    QObject::connect(ui.btn_ip_get, &QPushButton::clicked, ui.btn_ip_get,
                     [this] { btn_ip_get_Click(); });
    QObject::connect(ui.btn_ip_set, &QPushButton::clicked, ui.btn_ip_set,
                     [this] { btn_ip_set_Click(); });
    QObject::connect(ui.btn_ip_relink, &QPushButton::clicked, ui.btn_ip_relink,
                     [this] { btn_ip_relink_Click(); });
    events::onClick(ui.cbo_ip_type, [this] { cbo_ip_type_Click(); });
}

void NetworkConfig::cbo_ip_type_Click() {
    const int index = s_.ui.cbo_ip_type->currentIndex();
    if (index < 0)
        return; // no selection does not convert to a byte
    ip_static = static_cast<quint8>(index);
    for (QLineEdit* box : {s_.ui.txt_ip, s_.ui.txt_net, s_.ui.txt_gate})
        box->setEnabled(ip_static != 0);
}

void NetworkConfig::btn_ip_get_Click() {
    if (!s_.guard())
        return;
    s_.w.wait_net_read = 1;
    s_.send(command::line(QStringLiteral("RIPM")));
    if (!s_.waitFor(s_.w.wait_net_read, 2))
        return;
    s_.send(command::line(QStringLiteral("RLINK")));
    if (!s_.waitFor(s_.w.wait_net_read, 3))
        return;
    s_.w.wait_net_read = 0;
}

void NetworkConfig::btn_ip_set_Click() {
    if (!s_.guard())
        return;
    if (ip_static != 0)
        writeStatic();
    else
        writeDhcp();
}

// Mode, address, mask, gateway, restart: each only after the previous acknowledgement.
void NetworkConfig::writeStatic() {
    // Each box is read when its line goes out.
    const std::function<QByteArray()> steps[] = {
        [] { return command::line(QStringLiteral("SIPM"), 1); },
        [this] { return command::line(QStringLiteral("SIPA"), s_.ui.txt_ip->text()); },
        [this] { return command::line(QStringLiteral("SMAA"), s_.ui.txt_net->text()); },
        [this] { return command::line(QStringLiteral("SGAA"), s_.ui.txt_gate->text()); },
        [] { return command::line(QStringLiteral("SREL")); }};
    s_.w.wait_net_set = 1;
    if (!s_.sendInTurn(s_.w.wait_net_set, 5, [&steps](int k) { return steps[k](); }))
        return;
    s_.w.wait_net_set = 0;
    s_.information(QStringLiteral("Set STATIC IP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::writeDhcp() {
    s_.w.wait_net_mode = 1;
    s_.send(command::line(QStringLiteral("SIPM"), 0));
    if (!s_.waitFor(s_.w.wait_net_mode, 2))
        return;
    s_.send(command::line(QStringLiteral("SREL")));
    if (!s_.waitFor(s_.w.wait_net_mode, 3))
        return;
    s_.w.wait_net_mode = 0;
    s_.information(QStringLiteral("Set DHCP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::btn_ip_relink_Click() {
    if (!s_.guard())
        return;
    s_.w.wait_net_mode = 2;
    s_.send(command::line(QStringLiteral("SREL")));
    if (!s_.waitFor(s_.w.wait_net_mode, 3))
        return;
    s_.w.wait_net_mode = 0;
    s_.SetOffline();
}

namespace {

// Four three-digit fields of the "IP00" block, joined as they stand (zeros kept).
QString dotted(const QString& reply, int firstField) {
    QStringList octets;
    for (int i = 0; i < 4; ++i)
        octets << legacy::mid(reply, firstField + 7 * i, 3);
    return octets.join(u'.');
}

} // namespace

void NetworkConfig::HandleAddressReply(const QString& reply) {
    const QString key = reply::key(reply);
    quint8& step = s_.w.wait_net_read;
    if (key == QLatin1String("IPMD") && step == 1) {
        const int mode = legacy::roundHalfEven(legacy::val(reply::value(reply)));
        if (!events::setListIndex(s_.ui.cbo_ip_type, mode))
            return;
        step = 2;
    } else if (key == QLatin1String("IP00") && step == 2) {
        s_.ui.txt_ip->setText(dotted(reply, 5));
        s_.ui.txt_net->setText(dotted(reply, 33));
        s_.ui.txt_gate->setText(dotted(reply, 61));
        step = 3;
    }
}

void NetworkConfig::HandleNetworkAck(const QString& reply) {
    const QString key = reply::key(reply);
    WaitBytes& w = s_.w;
    auto is = [&key](const char* literal) { return key == QLatin1String(literal); };
    if (is("IPMD") && w.wait_net_set == 1)
        w.wait_net_set = 2;
    else if (is("IPA0") && w.wait_net_set == 2)
        w.wait_net_set = 3;
    else if (is("MAA0") && w.wait_net_set == 3)
        w.wait_net_set = 4;
    else if (is("GAA0") && w.wait_net_set == 4)
        w.wait_net_set = 5;
    else if (is("RELI") && w.wait_net_set == 5)
        w.wait_net_set = 6;
    else if (is("IPMD") && w.wait_net_mode == 1)
        w.wait_net_mode = 2;
    else if (is("RELI") && w.wait_net_mode == 2)
        w.wait_net_mode = 3;
    else if (is("DEFA") && w.wait_default == 1)
        w.wait_default = 2;
}
