#include "system/networkconfig.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

NetworkConfig::NetworkConfig(Session& session) : s_(session) {
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
    s_.request(read_,
               {command::line(QStringLiteral("RIPM")), command::line(QStringLiteral("RLINK"))});
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
        [this] { return command::line(QStringLiteral("SIPA"), s_.ui().txt_ip->text()); },
        [this] { return command::line(QStringLiteral("SMAA"), s_.ui().txt_net->text()); },
        [this] { return command::line(QStringLiteral("SGAA"), s_.ui().txt_gate->text()); },
        [] { return command::line(QStringLiteral("SREL")); }};
    if (!s_.request(write_, 5, [&steps](int k) { return steps[k](); }))
        return;
    s_.information(QStringLiteral("Set STATIC IP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::writeDhcp() {
    if (!s_.request(mode_, {command::line(QStringLiteral("SIPM"), 0),
                            command::line(QStringLiteral("SREL"))}))
        return;
    s_.information(QStringLiteral("Set DHCP completed, please re-link the ethernet !"));
    s_.SetOffline();
}

void NetworkConfig::btn_ip_relink_Click() {
    if (!s_.guard())
        return;
    // The mode write's second step: only "RELI" releases it.
    if (s_.request(mode_, {command::line(QStringLiteral("SREL"))}, {.from = 2}))
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
    if (key == QLatin1String("IPMD") && read_.at(1)) {
        const int mode = legacy::roundHalfEven(legacy::val(reply::value(reply)));
        if (events::setListIndex(s_.ui().cbo_ip_type, mode))
            read_.advance();
    } else if (key == QLatin1String("IP00") && read_.at(2)) {
        s_.ui().txt_ip->setText(dotted(reply, 5));
        s_.ui().txt_net->setText(dotted(reply, 33));
        s_.ui().txt_gate->setText(dotted(reply, 61));
        read_.advance();
    }
}

// The static write's acknowledgements in order, and the mode write's.
void NetworkConfig::HandleNetworkAck(const QString& reply) {
    static const char* const staticAcks[] = {"IPMD", "IPA0", "MAA0", "GAA0", "RELI"};
    static const char* const modeAcks[] = {"IPMD", "RELI"};
    const QString key = reply::key(reply);
    const int set = write_.value();
    const int mode = mode_.value();
    if (set >= 1 && set <= 5 && key == QLatin1String(staticAcks[set - 1]))
        write_.advance();
    else if (mode >= 1 && mode <= 2 && key == QLatin1String(modeAcks[mode - 1]))
        mode_.advance();
}
