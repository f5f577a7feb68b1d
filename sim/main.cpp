// panomat-sim: virtual video-wall controllers on loopback addresses, or on any address
// of a simulated LAN inside a network namespace.

#include "simulator.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHostAddress>
#include <QMap>
#include <QRegularExpression>
#include <cstdio>

namespace {

struct Options {
    int devices = 4;
    QHostAddress first{QStringLiteral("127.0.0.2")};
    quint16 port = sim::VirtualController::DefaultPort;
    bool quiet = false;
    sim::Simulator::Addresses addresses = sim::Simulator::Addresses::LoopbackOnly;
    QMap<int, sim::Faults> faults; // by controller number
};

[[noreturn]] void fail(const QString& message) {
    std::fprintf(stderr, "panomat-sim: %s\n", qPrintable(message));
    std::fprintf(stderr, "Try 'panomat-sim --help'.\n");
    std::exit(2);
}

int number(const QString& text, int lo, int hi, const QString& what) {
    bool ok = false;
    const int v = text.toInt(&ok);
    if (!ok || v < lo || v > hi)
        fail(QStringLiteral("%1 must be a number from %2 to %3, not '%4'")
                 .arg(what)
                 .arg(lo)
                 .arg(hi)
                 .arg(text));
    return v;
}

// A fault option's value is [CONTROLLERS:]VALUE, CONTROLLERS being "all" (the
// default) or numbers like "2" or "1,3".
QList<int> targets(const QString& option, const QString& value, int devices, QString* rest) {
    const qsizetype colon = value.indexOf(':');
    const QString who = colon < 0 ? QStringLiteral("all") : value.left(colon);
    *rest = colon < 0 ? value : value.mid(colon + 1);
    QList<int> out;
    if (who == QLatin1String("all")) {
        for (int i = 1; i <= devices; ++i)
            out << i;
        return out;
    }
    for (const QString& n : who.split(','))
        out << number(n, 1, devices, QStringLiteral("--%1: controller").arg(option));
    return out;
}

Options parse(const QCoreApplication& app) {
    QCommandLineParser p;
    p.setApplicationDescription(QStringLiteral(
        "Virtual video-wall controllers for demos, training and tests.\n"
        "Each controller listens on its own loopback address and answers the controller's\n"
        "command protocol; the protocol log goes to standard output. For a simulated LAN\n"
        "inside a network namespace, --any-address lets them listen on other addresses.\n\n"
        "Fault options take [CONTROLLERS:]VALUE, where CONTROLLERS is 'all' (the default)\n"
        "or controller numbers such as 2 or 1,3, and may be repeated, e.g.\n"
        "  --latency 200 --silent 2:RBY,RVER --drop-after 3:10"));
    p.addHelpOption();
    p.addVersionOption();
    p.addOption({{QStringLiteral("n"), QStringLiteral("devices")},
                 QStringLiteral("Number of controllers (default 4)."),
                 QStringLiteral("N")});
    p.addOption({QStringLiteral("first"),
                 QStringLiteral("Address of controller 1, in 127.0.0.0/8 (default 127.0.0.2); the "
                                "others follow."),
                 QStringLiteral("address")});
    p.addOption({QStringLiteral("any-address"),
                 QStringLiteral("Allow --first outside 127.0.0.0/8, for a simulated LAN inside a "
                                "network namespace. The controllers answer anyone who reaches "
                                "them: never on a real network.")});
    p.addOption(
        {QStringLiteral("port"), QStringLiteral("TCP port (default 23)."), QStringLiteral("port")});
    p.addOption(
        {{QStringLiteral("q"), QStringLiteral("quiet")}, QStringLiteral("No protocol log.")});
    p.addOption({QStringLiteral("latency"), QStringLiteral("Delay every reply by MS milliseconds."),
                 QStringLiteral("[C:]MS")});
    p.addOption({QStringLiteral("split"),
                 QStringLiteral("Send replies longer than N bytes in two chunks, the first N "
                                "bytes then the rest 50 ms later."),
                 QStringLiteral("[C:]N")});
    p.addOption({QStringLiteral("join"),
                 QStringLiteral("Hold each reply until the next one and send both in one chunk "
                                "(a reply alone leaves after 500 ms). Value: all or controllers."),
                 QStringLiteral("C")});
    p.addOption({QStringLiteral("silent"),
                 QStringLiteral("Carry out these commands but never answer them."),
                 QStringLiteral("[C:]KEYWORD,...")});
    p.addOption({QStringLiteral("drop-after"),
                 QStringLiteral("Close each connection after its Nth command (answered)."),
                 QStringLiteral("[C:]N")});
    p.addOption({QStringLiteral("drop-after-writes"),
                 QStringLiteral("Close each connection after its Nth command that writes a "
                                "setting (answered, where it is)."),
                 QStringLiteral("[C:]N")});
    p.process(app);
    if (!p.positionalArguments().isEmpty())
        fail(QStringLiteral("unexpected argument '%1'").arg(p.positionalArguments().first()));

    Options o;
    if (p.isSet(QStringLiteral("devices")))
        o.devices = number(p.value(QStringLiteral("devices")), 1, 254, QStringLiteral("--devices"));
    if (p.isSet(QStringLiteral("first"))) {
        const QString text = p.value(QStringLiteral("first"));
        o.first = QHostAddress(text);
        // Dotted quads only: "192.0.2" would be read as 192.0.0.2, an address nobody meant.
        static const QRegularExpression dotted(QStringLiteral("^\\d{1,3}(\\.\\d{1,3}){3}$"));
        const bool ipv4 =
            o.first.protocol() == QHostAddress::IPv4Protocol && dotted.match(text).hasMatch();
        if (!ipv4 ||
            ((o.first.toIPv4Address() >> 24) != 127 && !p.isSet(QStringLiteral("any-address"))))
            fail(QStringLiteral("--first must be an IPv4 address in 127.0.0.0/8, not '%1'%2")
                     .arg(text, ipv4 ? QStringLiteral(" (--any-address allows it, for a simulated "
                                                      "LAN inside a network namespace)")
                                     : QString()));
    }
    if (p.isSet(QStringLiteral("any-address")))
        o.addresses = sim::Simulator::Addresses::Any;
    if (p.isSet(QStringLiteral("port")))
        o.port =
            quint16(number(p.value(QStringLiteral("port")), 1, 65535, QStringLiteral("--port")));
    o.quiet = p.isSet(QStringLiteral("quiet"));

    QString rest;
    for (const QString& v : p.values(QStringLiteral("latency")))
        for (int c : targets(QStringLiteral("latency"), v, o.devices, &rest))
            o.faults[c].latencyMs = number(rest, 0, 600000, QStringLiteral("--latency"));
    for (const QString& v : p.values(QStringLiteral("split")))
        for (int c : targets(QStringLiteral("split"), v, o.devices, &rest))
            o.faults[c].splitAt = number(rest, 1, 1000, QStringLiteral("--split"));
    for (const QString& v : p.values(QStringLiteral("join")))
        for (int c : targets(QStringLiteral("join"), v + QLatin1Char(':'), o.devices, &rest))
            o.faults[c].join = true;
    for (const QString& v : p.values(QStringLiteral("silent")))
        for (int c : targets(QStringLiteral("silent"), v, o.devices, &rest))
            for (const QString& k : rest.split(',', Qt::SkipEmptyParts)) {
                static const QRegularExpression keyword(QStringLiteral("^[A-Za-z]{3,5}$"));
                if (!keyword.match(k.trimmed()).hasMatch())
                    fail(QStringLiteral("--silent: '%1' is not a command keyword (give several "
                                        "controllers as 1,3:KEYWORD)")
                             .arg(k));
                o.faults[c].silent.insert(k.trimmed().toUpper().toLatin1());
            }
    for (const QString& v : p.values(QStringLiteral("drop-after")))
        for (int c : targets(QStringLiteral("drop-after"), v, o.devices, &rest))
            o.faults[c].dropAfter = number(rest, 1, 1000000, QStringLiteral("--drop-after"));
    for (const QString& v : p.values(QStringLiteral("drop-after-writes")))
        for (int c : targets(QStringLiteral("drop-after-writes"), v, o.devices, &rest))
            o.faults[c].dropAfterWrites =
                number(rest, 1, 1000000, QStringLiteral("--drop-after-writes"));
    return o;
}

void print(const QString& line) {
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("panomat-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PANOMAT_VERSION));
    const Options o = parse(app);

    sim::Simulator simulator;
    if (!o.quiet)
        QObject::connect(&simulator, &sim::Simulator::logLine, &print);
    if (!simulator.start(o.first, o.devices, o.port, o.addresses)) {
        std::fprintf(stderr, "panomat-sim: %s\n", qPrintable(simulator.errorString()));
        return 1;
    }
    for (auto it = o.faults.begin(); it != o.faults.end(); ++it)
        simulator.setFaults(it.key(), it.value());

    const auto* last = simulator.controller(simulator.count());
    std::fprintf(
        stderr, "panomat-sim: %d controller%s on %s%s port %u; Ctrl+C ends.\n", simulator.count(),
        simulator.count() == 1 ? "" : "s", qPrintable(o.first.toString()),
        simulator.count() > 1 ? qPrintable(QLatin1Char('-') + last->address().toString()) : "",
        unsigned(o.port));
    for (const auto* c : simulator.controllers())
        if (c->faults().any())
            std::fprintf(stderr, "panomat-sim: %s faults: %s\n", qPrintable(c->name()),
                         qPrintable(c->faults().describe()));
    return app.exec();
}
