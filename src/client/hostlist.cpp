#include "client/hostlist.h"

#include "client/searchrun.h"
#include "protocol/safefile.h"

#include <QDir>
#include <QFileInfo>
#include <QHostAddress>
#include <QNetworkInterface>
#include <QRegularExpression>
#include <QStandardPaths>

namespace search {

namespace {

const QString ListName = QStringLiteral("panomat-set/ZEDA.conf");
constexpr qint64 MaxListBytes = 1024 * 1024; // the search program's own cap
constexpr int WidestWholeNetwork = 22;

QStringList entriesOf(const QString& path) {
    QString error;
    const auto bytes = safefile::readRegularFile(path, MaxListBytes, &error);
    return bytes ? hostEntries(QString::fromLatin1(*bytes)) : QStringList{};
}

#ifdef Q_OS_WIN
// Windows keeps a user's own settings in the roaming profile, which follows them from
// one laptop to the next (%APPDATA%), and the machine's in %PROGRAMDATA%; the search
// program reads the same two.
QString windowsFolder(const char* variable) {
    const QString folder = qEnvironmentVariable(variable);
    return folder.isEmpty() ? QString() : QDir::fromNativeSeparators(folder);
}

QStringList listsOnThisMachine() {
    QStringList found;
    for (const char* variable : {"APPDATA", "PROGRAMDATA"})
        if (const QString folder = windowsFolder(variable); !folder.isEmpty())
            if (const QString path = QDir(folder).filePath(ListName); QFileInfo(path).isFile())
                found << path;
    return found;
}
#else
QStringList listsOnThisMachine() {
    return QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, ListName);
}
#endif

} // namespace

QStringList hostEntries(const QString& text) {
    QStringList entries;
    for (const QString& line : text.split(u'\n')) {
        const QString bare = line.section(u'#', 0, 0);
        for (const QString& entry :
             bare.split(QRegularExpression(QStringLiteral("[\\s,]+")), Qt::SkipEmptyParts))
            entries << entry;
    }
    return entries;
}

QString userHostListPath() {
#ifdef Q_OS_WIN
    if (const QString roaming = windowsFolder("APPDATA"); !roaming.isEmpty())
        return QDir(roaming).filePath(ListName);
#endif
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(ListName);
}

HostList hostListInForce() {
    const QStringList fromEnvironment = hostEntries(qEnvironmentVariable("ZEDA_HOSTS"));
    if (!fromEnvironment.isEmpty())
        return {HostList::Source::Environment, {}, fromEnvironment};
    const QString user = userHostListPath();
    for (const QString& path : listsOnThisMachine())
        if (const QStringList entries = entriesOf(path); !entries.isEmpty())
            return {path == user ? HostList::Source::User : HostList::Source::System, path,
                    entries};
    const QString beside = QFileInfo(program()).dir().filePath(QStringLiteral("ZEDA.conf"));
    if (const QStringList entries = entriesOf(beside); !entries.isEmpty())
        return {HostList::Source::Beside, beside, entries};
    return {HostList::Source::Automatic, {}, automaticNetworks()};
}

QString sourceText(const HostList& list) {
    const QString path = QDir::toNativeSeparators(list.path);
    switch (list.source) {
    case HostList::Source::Environment:
        return QStringLiteral("the environment variable ZEDA_HOSTS");
    case HostList::Source::User:
        return QStringLiteral("your list %1").arg(path);
    case HostList::Source::System:
        return QStringLiteral("the system's list %1").arg(path);
    case HostList::Source::Beside:
        return QStringLiteral("the list beside the search program, %1").arg(path);
    case HostList::Source::Automatic:
        break;
    }
    return QStringLiteral("the networks of this computer (automatic)");
}

QStringList automaticNetworks() {
    QStringList networks;
    for (const QNetworkInterface& i : QNetworkInterface::allInterfaces()) {
        if (!(i.flags() & QNetworkInterface::IsUp) || (i.flags() & QNetworkInterface::IsLoopBack))
            continue;
        for (const QNetworkAddressEntry& e : i.addressEntries()) {
            if (e.ip().protocol() != QAbstractSocket::IPv4Protocol || e.prefixLength() < 0)
                continue;
            const int prefix = e.prefixLength() < WidestWholeNetwork ? 24 : e.prefixLength();
            const quint32 mask = prefix == 0 ? 0 : ~quint32(0) << (32 - prefix);
            const QString network = QStringLiteral("%1/%2")
                                        .arg(QHostAddress(e.ip().toIPv4Address() & mask).toString())
                                        .arg(prefix);
            networks << QStringLiteral("%1 on %2").arg(network, i.humanReadableName());
        }
    }
    return networks;
}

} // namespace search
