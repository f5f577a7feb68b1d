#include "system/networkconfig.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr int StaticSteps = 5; // mode, address, mask, gateway, restart

const protocol::Command& writerOf(const char* setting) {
    return *protocol::setting(setting).write;
}

const protocol::Command& restart() {
    return protocol::command(protocol::Action::RestartNetwork);
}

} // namespace

NetworkConfig::NetworkConfig(WindowServices& session) : s_(session) {
    Controls& ui = s_.ui();
    QObject::connect(ui.btn_ip_get, &QPushButton::clicked, ui.btn_ip_get,
                     [this] { btn_ip_get_Click(); });
    QObject::connect(ui.btn_ip_set, &QPushButton::clicked, ui.btn_ip_set,
                     [this] { btn_ip_set_Click(); });
    QObject::connect(ui.btn_ip_relink, &QPushButton::clicked, ui.btn_ip_relink,
                     [this] { btn_ip_relink_Click(); });
    events::onClick(ui.cbo_ip_type, [this] { cbo_ip_type_Click(); });
}

void NetworkConfig::cbo_ip_type_Click() {
    const int index = s_.ui().cbo_ip_type->currentIndex();
    if (index < 0)
        return; // no selection does not convert to a byte
    ip_static = static_cast<quint8>(index);
    for (QLineEdit* box : {s_.ui().txt_ip, s_.ui().txt_net, s_.ui().txt_gate})
        box->setEnabled(ip_static != 0);
}

void NetworkConfig::btn_ip_get_Click() {
    if (!s_.guard())
        return;
    s_.request(read_, {protocol::readLine(protocol::setting("network.mode")),
                       protocol::readLine(protocol::setting("network.address"))});
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
        [] { return command::line(writerOf("network.mode"), 1); },
        [this] { return command::line(writerOf("network.address"), s_.ui().txt_ip->text()); },
        [this] { return command::line(writerOf("network.mask"), s_.ui().txt_net->text()); },
        [this] { return command::line(writerOf("network.gateway"), s_.ui().txt_gate->text()); },
        [] { return command::line(restart()); }};
    if (!s_.request(write_, StaticSteps, [&steps](int k) { return steps[k](); }))
        return;
    s_.information(QStringLiteral("Set STATIC IP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::writeDhcp() {
    if (!s_.request(mode_, {command::line(writerOf("network.mode"), 0), command::line(restart())}))
        return;
    s_.information(QStringLiteral("Set DHCP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::btn_ip_relink_Click() {
    if (!s_.guard())
        return;
    // The mode write's second step: only the restart's acknowledgement releases it.
    if (s_.request(mode_, {command::line(restart())}, {.from = 2}))
        s_.SetOffline();
}

namespace {

// The address block's four three-digit fields of one part (0 address, 1 mask,
// 2 gateway), joined as they stand (zeros kept).
QString dotted(const QString& reply, int part) {
    QStringList octets;
    for (int octet = 0; octet < 4; ++octet)
        octets << reply::field(reply, protocol::octetField(part, octet));
    return octets.join(u'.');
}

} // namespace

void NetworkConfig::HandleAddressReply(const QString& reply) {
    const QString key = reply::key(reply);
    if (key == reply::keyOf(*protocol::setting("network.mode").read) && read_.at(1)) {
        const int mode = legacy::roundHalfEven(legacy::val(reply::value(reply)));
        if (events::setListIndex(s_.ui().cbo_ip_type, mode))
            read_.advance();
    } else if (key == reply::keyOf(*protocol::setting("network.address").read) && read_.at(2)) {
        s_.ui().txt_ip->setText(dotted(reply, 0));
        s_.ui().txt_net->setText(dotted(reply, 1));
        s_.ui().txt_gate->setText(dotted(reply, 2));
        read_.advance();
    }
}

// The static write's acknowledgements in order, and the mode write's.
void NetworkConfig::HandleNetworkAck(const QString& reply) {
    static const protocol::Command* const staticAcks[StaticSteps] = {
        &writerOf("network.mode"), &writerOf("network.address"), &writerOf("network.mask"),
        &writerOf("network.gateway"), &restart()};
    static const protocol::Command* const modeAcks[] = {&writerOf("network.mode"), &restart()};
    const QString key = reply::key(reply);
    const int set = write_.value();
    const int mode = mode_.value();
    if (set >= 1 && set <= StaticSteps && key == reply::keyOf(*staticAcks[set - 1]))
        write_.advance();
    else if (mode >= 1 && mode <= 2 && key == reply::keyOf(*modeAcks[mode - 1]))
        mode_.advance();
}
