// ZEDA.exe: finds the video-wall controllers among the hosts its configuration names
// and writes MAC.txt and IP.txt for the configuration tool: beside itself, or where
// --output-dir says (an installed tool cannot write its own folder).

#include "zedahosts.h"
#include "zedaprobe.h"
#include "zedaresults.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <cstdio>

namespace {

void say(const QString& text) {
    std::fprintf(stderr, "ZEDA: %s\n", qPrintable(text));
}

// The environment variable wins; then the user's panomat-set/ZEDA.conf in the XDG
// configuration folder (~/.config), the system's (/etc/xdg), and last the list that
// ships beside the program.
HostList configuredHosts(const QString& folder) {
    const QString fromEnv = qEnvironmentVariable("ZEDA_HOSTS").trimmed();
    if (!fromEnv.isEmpty()) {
        say(QStringLiteral("hosts from ZEDA_HOSTS"));
        return parseHostList(fromEnv);
    }
    QString path = QStandardPaths::locate(QStandardPaths::GenericConfigLocation,
                                          QStringLiteral("panomat-set/ZEDA.conf"));
    if (path.isEmpty())
        path = QDir(folder).filePath(QStringLiteral("ZEDA.conf"));
    QFile conf(path);
    if (!conf.open(QIODevice::ReadOnly | QIODevice::Text)) {
        say(QStringLiteral("no hosts to probe: %1 cannot be read (%2) and ZEDA_HOSTS is not set")
                .arg(QDir::toNativeSeparators(conf.fileName()), conf.errorString()));
        return {};
    }
    say(QStringLiteral("hosts from %1").arg(QDir::toNativeSeparators(conf.fileName())));
    return parseHostList(QString::fromUtf8(conf.readAll()));
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(PANOMAT_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Probes the configured hosts on TCP port 23 for video-wall controllers\n"
                       "and writes MAC.txt and IP.txt beside the program."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption outputDir(QStringLiteral("output-dir"),
                                       QStringLiteral("Write the result files into <dir> instead."),
                                       QStringLiteral("dir"));
    parser.addOption(outputDir);
    parser.process(app);
    const QString folder = QCoreApplication::applicationDirPath();
    const QString results = parser.isSet(outputDir) ? parser.value(outputDir) : folder;
    QElapsedTimer clock;
    clock.start();

    const HostList list = configuredHosts(folder);
    for (const QString& e : list.errors)
        say(QStringLiteral("ignored %1").arg(e));
    say(QStringLiteral("probing %1 host%2 on port 23")
            .arg(list.hosts.size())
            .arg(list.hosts.size() == 1 ? "" : "s"));

    Prober prober(Prober::Settings{});
    QObject::connect(&prober, &Prober::controllerFound, [](quint32 a, const QByteArray& version) {
        say(QStringLiteral("controller at %1 (%2)").arg(ipv4Text(a), QString::fromLatin1(version)));
    });
    QObject::connect(&prober, &Prober::finished, &app, &QCoreApplication::quit);
    prober.start(list.hosts);
    app.exec();

    QFile arp(QStringLiteral("/proc/net/arp"));
    const QHash<quint32, QString> neighbours = arp.open(QIODevice::ReadOnly)
                                                   ? parseNeighbourTable(arp.readAll())
                                                   : QHash<quint32, QString>{};
    QList<FoundDevice> devices;
    for (const Prober::Found& f : prober.found())
        devices.append({f.address, neighbours.value(f.address, derivedMac(f.address))});

    QString error;
    if (!QDir().mkpath(results))
        error = QStringLiteral("cannot create %1").arg(QDir::toNativeSeparators(results));
    if (!error.isEmpty() || !writeResultFiles(results, devices, &error)) {
        say(error);
        return 1;
    }
    say(QStringLiteral(
            "%1 controller%2 found among %3 host%4 in %5 s; MAC.txt and IP.txt written to %6")
            .arg(devices.size())
            .arg(devices.size() == 1 ? "" : "s")
            .arg(list.hosts.size())
            .arg(list.hosts.size() == 1 ? "" : "s")
            .arg(clock.elapsed() / 1000.0, 0, 'f', 1)
            .arg(QDir::toNativeSeparators(results)));
    return 0;
}
