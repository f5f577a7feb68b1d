#include "ctl/targets.h"

#include "client/searchrun.h"
#include "link/devicelink.h"
#include "protocol/address.h"

#include <QDir>
#include <QHostAddress>

namespace {

// One device's field of the address line: fifteen characters a device.
constexpr int AddressField = 15;

// Four dot-separated groups of one to three digits, as the search program writes
// them (zero-padded: "127.000.000.002").
bool isSearchField(const QString& field) {
    const QStringList octets = field.split(u'.');
    if (octets.size() != 4)
        return false;
    for (const QString& octet : octets) {
        if (octet.isEmpty() || octet.size() > 3)
            return false;
        for (const QChar c : octet)
            if (c < u'0' || c > u'9')
                return false;
    }
    return true;
}

} // namespace

std::optional<QList<Target>> lastSearch(QString* error) {
    const QDir folder(search::resultFolder(search::program()));
    const auto macLines = search::readLines(folder.filePath(search::MacFile));
    const auto ipLines = search::readLines(folder.filePath(search::IpFile));
    if (!macLines || !ipLines) {
        *error = QStringLiteral("no search results in %1; run \"panomat-ctl search\" first")
                     .arg(QDir::toNativeSeparators(folder.path()));
        return std::nullopt;
    }
    const QStringList macs = search::macs(*macLines);
    const QString line = ipLines->isEmpty() ? QString() : ipLines->last();
    QList<Target> found;
    for (int i = 0; i < macs.size(); ++i) {
        // The fields are read by numeric value, so a short or broken one ("127.1")
        // would still make an address (127.1.0.0): each must be four octets itself.
        const QString field = line.mid(qsizetype(i) * AddressField, AddressField);
        const QString address = addressFromLine(line, i);
        if (!isSearchField(field) || !protocol::isControllerAddressText(address)) {
            *error = QStringLiteral("the last search's %1 holds \"%2\" for controller %3 (%4), "
                                    "not an address; run \"panomat-ctl search\" again")
                         .arg(search::IpFile, protocol::shownText(field))
                         .arg(i + 1)
                         .arg(protocol::shownText(macs[i]));
            return std::nullopt;
        }
        found.append({address, macs[i]});
    }
    return found;
}

std::optional<QList<Target>> chooseTargets(const QStringList& hosts, bool all, QString* error) {
    if (all == !hosts.isEmpty()) {
        *error = QStringLiteral("name the controllers with --host ADDR[,ADDR...] or --all");
        return std::nullopt;
    }
    QString ignored;
    const QList<Target> known = lastSearch(all ? error : &ignored).value_or(QList<Target>{});
    if (all) {
        if (known.isEmpty() && error->isEmpty())
            *error = QStringLiteral("the last search found no controllers");
        return known.isEmpty() ? std::nullopt : std::optional(known);
    }
    QList<Target> targets;
    for (const QString& list : hosts)
        for (const QString& host : list.split(u',')) {
            QHostAddress address;
            if (host.trimmed().isEmpty()) {
                *error = QStringLiteral("--host \"%1\" names an empty address; give "
                                        "ADDR[,ADDR...]")
                             .arg(protocol::shownText(list));
                return std::nullopt;
            }
            if (!isControllerAddress(host.trimmed(), &address)) {
                *error = QStringLiteral("\"%1\" is not a dotted IPv4 address")
                             .arg(protocol::shownText(host));
                return std::nullopt;
            }
            Target t{host.trimmed(), {}};
            for (const Target& k : known)
                if (k.address == t.address)
                    t.mac = k.mac;
            targets << t;
        }
    return targets;
}
