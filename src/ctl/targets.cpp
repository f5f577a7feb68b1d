#include "ctl/targets.h"

#include "client/searchrun.h"
#include "link/devicelink.h"

#include <QDir>
#include <QHostAddress>

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
    for (int i = 0; i < macs.size(); ++i)
        found.append({addressFromLine(line, i), macs[i]});
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
        for (const QString& host : list.split(u',', Qt::SkipEmptyParts)) {
            QHostAddress address;
            if (!isControllerAddress(host.trimmed(), &address)) {
                *error = QStringLiteral("\"%1\" is not a dotted IPv4 address").arg(host);
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
