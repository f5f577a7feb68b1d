// The search program: its host configuration, the networks it picks by itself, and
// the real ZEDA.exe run against virtual controllers on 127.21.0.0/16, port 23, in a
// network namespace of its own where no host can be reached, or on a simulated LAN
// of two namespaces on 192.0.2.0/24.

#include "simulator.h"
#include "zedahosts.h"
#include "zedanetworks.h"
#include "zedaresults.h"

#include "zedaifflags.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>
#ifndef Q_OS_WIN
#include "support/datalimit.h"
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

// ZEDA.exe copied into a folder of its own, as the tool keeps it.
struct SearchFolder {
    QTemporaryDir dir;
    QString exe = dir.filePath("ZEDA.exe");
    bool ready = QFile::copy(ZEDA_EXE, exe);
};

// No host list but those a test makes: the user's and the system's lists would be
// those of whoever runs the tests, and with none at all the search would probe this
// machine's real networks.
QProcessEnvironment withoutUserLists(const SearchFolder& folder) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"ZEDA_HOSTS", "XDG_CONFIG_HOME"})
        env.remove(name);
    env.insert("HOME", folder.dir.filePath("home"));
    env.insert("XDG_CONFIG_DIRS", folder.dir.filePath("no-system-lists"));
#ifdef Q_OS_WIN
    env.insert("APPDATA", QDir::toNativeSeparators(folder.dir.filePath("home")));
    env.insert("PROGRAMDATA", QDir::toNativeSeparators(folder.dir.filePath("no-system-lists")));
#endif
    return env;
}

struct Run {
    int exitCode = -1;
    QByteArray said; // stderr
};

// Runs the folder's ZEDA.exe with hosts from the environment (none: its ZEDA.conf),
// turning this process's event loop meanwhile so servers here can answer.
Run runSearch(const SearchFolder& folder, const QByteArray& hosts,
              const QStringList& arguments = {}, const std::function<void()>& inChild = {}) {
    QProcess p;
    QProcessEnvironment env = withoutUserLists(folder);
    if (!hosts.isEmpty())
        env.insert("ZEDA_HOSTS", QString::fromLatin1(hosts));
    p.setProcessEnvironment(env);
#ifdef Q_OS_WIN
    Q_UNUSED(inChild);
#else
    p.setChildProcessModifier([inChild] {
        // Far more than the search needs: what a file offers must not decide its memory.
        if (!limitData(64 << 20))
            _exit(125);
        if (inChild)
            inChild();
    });
#endif
    p.start(folder.exe, arguments);
    if (!QTest::qWaitFor([&] { return p.state() == QProcess::NotRunning; }, 20000)) {
        p.kill();
        p.waitForFinished();
        return {-1, "did not end"};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardError()};
}

constexpr unsigned Up = IFF_UP | IFF_RUNNING;

InterfaceAddress interfaceAt(const char* name, const char* address, int prefix,
                             unsigned flags = Up | IFF_BROADCAST, const char* peer = nullptr) {
    return {name, flags, QHostAddress(address).toIPv4Address(),
            prefix ? ~quint32(0) << (32 - prefix) : 0,
            peer ? QHostAddress(peer).toIPv4Address() : 0};
}

#ifndef Q_OS_WIN // network namespaces are Linux's
// Runs ip(8) and says what it said when it failed.
bool ip(const QStringList& arguments, QString* error) {
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start("ip", arguments);
    if (p.waitForFinished(10000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
        return true;
    *error = "ip " + arguments.join(' ') + ": " + QString::fromLocal8Bit(p.readAll()).trimmed() +
             p.errorString();
    return false;
}

// A LAN of two network namespaces: the searcher's, with 192.0.2.1/24 on eth0, and the
// controllers', a bridge with one interface for each controller address from
// 192.0.2.10 on. Each controller interface has its own MAC, and answers ARP only for
// its own address, as separate devices on a LAN would. Removed again, whatever happened.
struct SimulatedLan {
    const QString searcher = QStringLiteral("zeda-searcher-%1").arg(getpid());
    const QString lan = QStringLiteral("zeda-lan-%1").arg(getpid());
    QString error;
    bool madeNamespaces = false;

    static QString mac(int i) { return QStringLiteral("02:5e:00:00:02:%1").arg(10 + i); }

    bool make(int controllers) {
        if (!ip({"netns", "add", searcher}, &error))
            return false;
        if (!ip({"netns", "add", lan}, &error)) {
            ip({"netns", "del", searcher}, &error);
            return false;
        }
        madeNamespaces = true;
        // Set before the interfaces exist, which take the defaults. Replies from any
        // controller leave by the first route, so the reverse-path filter must not care.
        QStringList sysctls;
        for (const char* scope : {"all", "default"})
            sysctls << QStringLiteral("echo 1 >/proc/sys/net/ipv4/conf/%1/arp_ignore; echo 2 "
                                      ">/proc/sys/net/ipv4/conf/%1/arp_announce; echo 0 "
                                      ">/proc/sys/net/ipv4/conf/%1/rp_filter")
                           .arg(scope);
        QList<QStringList> steps{{"netns", "exec", lan, "sh", "-ec", sysctls.join("; ")},
                                 {"-n", lan, "link", "add", "br0", "type", "bridge"},
                                 {"-n", lan, "link", "set", "br0", "up"},
                                 {"-n", lan, "link", "add", "up0", "type", "veth", "peer", "name",
                                  "eth0", "netns", searcher},
                                 {"-n", lan, "link", "set", "up0", "master", "br0", "up"},
                                 {"-n", searcher, "addr", "add", "192.0.2.1/24", "dev", "eth0"},
                                 {"-n", searcher, "link", "set", "eth0", "up"}};
        for (int i = 0; i < controllers; ++i) {
            const QString c = QStringLiteral("c%1").arg(i), port = QStringLiteral("p%1").arg(i);
            steps.append(
                {{"-n", lan, "link", "add", c, "address", mac(i), "type", "veth", "peer", "name",
                  port},
                 {"-n", lan, "link", "set", port, "master", "br0", "up"},
                 {"-n", lan, "addr", "add", QStringLiteral("192.0.2.%1/24").arg(10 + i), "dev", c},
                 {"-n", lan, "link", "set", c, "up"}});
        }
        for (const QStringList& step : steps)
            if (!ip(step, &error))
                return false;
        return true;
    }
    ~SimulatedLan() {
        QString ignored;
        if (madeNamespaces)
            for (const QString& name : {searcher, lan})
                ip({"netns", "del", name}, &ignored);
    }

    // For QProcess::setChildProcessModifier: the child joins namespace `name`.
    static std::function<void()> enter(const QString& name) {
        const QByteArray path = QFile::encodeName("/run/netns/" + name);
        return [path] {
            const int fd = open(path.constData(), O_RDONLY | O_CLOEXEC);
            if (fd < 0 || setns(fd, CLONE_NEWNET) != 0)
                _exit(124);
        };
    }
};
#endif

} // namespace

class TestSearch : public QObject {
    Q_OBJECT

private slots:
    void hostConfiguration_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::vector<uint32_t>>("hosts");
        QTest::addColumn<int>("errors");
        // Text, then `count` consecutive hosts from `first`, and how many entries are refused.
        auto row = [](const char* text, const char* first, int count, int errors = 0) {
            std::vector<uint32_t> hosts;
            for (int i = 0; i < count; ++i)
                hosts.push_back(QHostAddress(first).toIPv4Address() + uint32_t(i));
            QTest::newRow(QByteArray(text).simplified()) << QString(text) << hosts << errors;
        };
        row("127.21.0.7-9", "127.21.0.7", 3);
        row("127.21.0.255-127.21.1.0", "127.21.0.255", 2);
        row("127.21.0.0/30", "127.21.0.1", 2); // no network, no broadcast
        row("127.21.0.5/31 127.21.0.6/32", "127.21.0.4", 3);
        row("127.21.0.0-127.21.255.255", "127.21.0.0", 65536); // a /16 at most
        row("127.0.0.0/15", "127.0.0.0", 0, 1);
        row("# demo\n\n 127.21.0.9 # trailing\r\n127.21.0.8,127.21.0.9;127.021.000.010",
            "127.21.0.8", 3); // sorted, once each; "021" is decimal
        row("127.21.0.300\n127.21.0.9-3\n127.21.0.0/33\nhost\n127.21.0.1-x\n127.21.0.4",
            "127.21.0.4", 1, 5);
    }
    void hostConfiguration() {
        QFETCH(QString, text);
        QFETCH(std::vector<uint32_t>, hosts);
        QFETCH(int, errors);
        const HostList list = parseHostList(text.toStdString());
        QVERIFY(list.hosts == hosts);
        QCOMPARE(int(list.errors.size()), errors);
    }

    // Only complete entries with a real address count.
    void macAddressesFromTheNeighbourTable() {
        QCOMPARE(parseNeighbourTable("IP address HW type Flags HW address Mask Device\n"
                                     "127.21.9.1 0x1 0x2 52:54:00:ab:cd:0e * eth0\n"
                                     "127.21.9.2 0x1 0x0 52:54:00:ab:cd:0f * eth0\n"
                                     "127.21.9.3 0x1 0x6 00:00:00:00:00:00 * eth0\n"),
                 (std::unordered_map<uint32_t, std::string>{
                     {0x7F150901u, "52-54-00-AB-CD-0E"}})); // 127.21.9.1
    }

    // Which networks the search probes by itself: what would reach another host, each
    // network once, never the machine's own addresses, and no more than a /22 whole.
    void machineNetworks_data() {
        QTest::addColumn<std::vector<InterfaceAddress>>("interfaces");
        QTest::addColumn<QStringList>("networks"); // "network on interface (hosts)"
        QTest::addColumn<QString>("first");        // the lowest host probed
        QTest::addColumn<int>("hosts");
        QTest::addColumn<QStringList>("notes");
        QTest::newRow("a /24, the own address left out")
            << std::vector<InterfaceAddress>{interfaceAt("lo", "127.0.0.1", 8, Up | IFF_LOOPBACK),
                                             interfaceAt("eth0", "192.0.2.1", 24)}
            << QStringList{"192.0.2.0/24 on eth0 (253)"} << "192.0.2.2" << 253 << QStringList{};
        QTest::newRow("a /22 whole")
            << std::vector<InterfaceAddress>{interfaceAt("eth0", "198.51.101.7", 22)}
            << QStringList{"198.51.100.0/22 on eth0 (1021)"} << "198.51.100.1" << 1021
            << QStringList{};
        QTest::newRow("a /21: the /24 around")
            << std::vector<InterfaceAddress>{interfaceAt("wlan0", "198.51.101.7", 21)}
            << QStringList{"198.51.101.0/24 on wlan0 (253)"} << "198.51.101.1" << 253
            << QStringList{"198.51.96.0/21 on wlan0 is larger than a /22: probing only "
                           "198.51.101.0/24 around 198.51.101.7"};
        QTest::newRow("/31, /32 alone, /32 to a peer")
            << std::vector<InterfaceAddress>{interfaceAt("eth0", "192.0.2.4", 31),
                                             interfaceAt("eth1", "192.0.2.9", 32),
                                             interfaceAt("ppp0", "192.0.2.20", 32,
                                                         Up | IFF_POINTOPOINT, "192.0.2.21")}
            << QStringList{"192.0.2.4/31 on eth0 (1)", "192.0.2.21/32 on ppp0 (1)"} << "192.0.2.5"
            << 2 << QStringList{"192.0.2.9/32 on eth1 has no other host"};
        QTest::newRow("loopback, down, not running, no mask: nothing")
            << std::vector<InterfaceAddress>{interfaceAt("lo", "127.0.0.1", 8, Up | IFF_LOOPBACK),
                                             interfaceAt("eth0", "192.0.2.1", 24, 0),
                                             interfaceAt("eth1", "198.51.100.1", 24, IFF_UP),
                                             interfaceAt("eth2", "203.0.113.1", 0)}
            << QStringList{} << "" << 0 << QStringList{};
        QTest::newRow("two addresses on one network; another interface's address")
            << std::vector<InterfaceAddress>{interfaceAt("eth0", "192.0.2.10", 24),
                                             interfaceAt("eth0", "192.0.2.11", 24),
                                             interfaceAt("eth1", "192.0.2.12", 24),
                                             interfaceAt("eth2", "192.0.2.13", 24, 0)}
            << QStringList{"192.0.2.0/24 on eth0 (250)"} << "192.0.2.1" << 250 << QStringList{};
        std::vector<InterfaceAddress> many;
        QStringList sixteen;
        for (int i = 0; i < 18; ++i) {
            many.push_back(interfaceAt(qPrintable(QStringLiteral("br%1").arg(i)),
                                       qPrintable(QStringLiteral("198.18.%1.1").arg(i)), 30));
            if (i < 16)
                sixteen << QStringLiteral("198.18.%1.0/30 on br%1 (1)").arg(i);
        }
        QTest::newRow("at most 16 networks")
            << many << sixteen << "198.18.0.2" << 16
            << QStringList{"left out 198.18.16.0/30 on br16: more than 16 networks",
                           "left out 198.18.17.0/30 on br17: more than 16 networks"};
    }
    void machineNetworks() {
        QFETCH(std::vector<InterfaceAddress>, interfaces);
        QFETCH(QStringList, networks);
        QFETCH(QString, first);
        QFETCH(int, hosts);
        QFETCH(QStringList, notes);
        const NetworkPlan plan = networksToSearch(interfaces);
        QStringList probed, said;
        for (const SearchedNetwork& n : plan.networks)
            probed << QStringLiteral("%1 on %2 (%3)")
                          .arg(QString::fromStdString(networkText(n.network, n.prefix)),
                               QString::fromStdString(n.interfaceName))
                          .arg(n.hosts);
        for (const std::string& note : plan.notes)
            said << QString::fromStdString(note);
        QCOMPARE(probed, networks);
        QCOMPARE(int(plan.hosts.size()), hosts);
        QVERIFY(std::is_sorted(plan.hosts.begin(), plan.hosts.end()));
        QCOMPARE(plan.hosts.empty() ? QString() : QString::fromStdString(ipv4Text(plan.hosts[0])),
                 first);
        for (const InterfaceAddress& i : interfaces)
            QVERIFY(!std::binary_search(plan.hosts.begin(), plan.hosts.end(), i.address));
        QCOMPARE(said, notes);
    }

    // A LAN with three controllers among 250 absent hosts. With nothing configured at all
    // the search finds exactly the three, each with the MAC of its own interface, within
    // the connect time-out and a little; with a list it probes that list alone. The
    // shipped ZEDA.conf is an example that names no host.
    void searchOfASimulatedLan_data() {
        QTest::addColumn<QString>("list"); // "user", "beside" or none
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("probing"); // standard output
        QTest::addColumn<QList<int>>("found");   // controller numbers
        QTest::addColumn<bool>("secondNetwork"); // the searcher is on 198.51.100.0/30 too
        QTest::newRow("nothing configured")
            << QString() << QByteArray() << QByteArray("probing 192.0.2.0/24 on eth0 (253 hosts)\n")
            << QList<int>{0, 1, 2} << false;
        QFile example(ZEDA_CONF_EXAMPLE);
        QVERIFY(example.open(QIODevice::ReadOnly));
        QTest::newRow("the shipped example beside the program")
            << "beside" << example.readAll()
            << QByteArray("probing 192.0.2.0/24 on eth0 (253 hosts)\n") << QList<int>{0, 1, 2}
            << false;
        QTest::newRow("the user's list")
            << "user" << QByteArray("192.0.2.11-192.0.2.12\n192.0.2.99 # gone\n")
            << QByteArray("probing the host list ~/.config/panomat-set/ZEDA.conf (3 hosts)\n")
            << QList<int>{1, 2} << false;
        QTest::newRow("two networks, summed up last")
            << QString() << QByteArray()
            << QByteArray("probing 192.0.2.0/24 on eth0 (253 hosts)\n"
                          "probing 198.51.100.0/30 on eth1 (1 host)\n"
                          "probing 2 networks: 192.0.2.0/24 on eth0, 198.51.100.0/30 on eth1 "
                          "(254 hosts)\n")
            << QList<int>{0, 1, 2} << true;
    }
    void searchOfASimulatedLan() {
        QFETCH(QString, list);
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, probing);
        QFETCH(QList<int>, found);
        QFETCH(bool, secondNetwork);
#ifdef Q_OS_WIN
        QSKIP("the simulated LAN is made of Linux network namespaces");
#else
        SimulatedLan net;
        if (!net.make(3)) {
            if (!net.madeNamespaces)
                QSKIP(qPrintable("network namespaces cannot be made here: " + net.error));
            QFAIL(qPrintable(net.error));
        }
        if (secondNetwork)
            for (const QStringList& step :
                 {QStringList{"-n", net.searcher, "link", "add", "eth1", "type", "veth", "peer",
                              "name", "eth1peer"},
                  {"-n", net.searcher, "addr", "add", "198.51.100.1/30", "dev", "eth1"},
                  {"-n", net.searcher, "link", "set", "eth1peer", "up"},
                  {"-n", net.searcher, "link", "set", "eth1", "up"}})
                QVERIFY2(ip(step, &net.error), qPrintable(net.error));
        QProcess controllers;
        controllers.setChildProcessModifier(SimulatedLan::enter(net.lan));
        controllers.start(PANOMAT_SIM_EXE,
                          {"-q", "--any-address", "--first", "192.0.2.10", "--devices", "3"});
        const auto stopControllers = qScopeGuard([&] {
            controllers.kill();
            controllers.waitForFinished();
        });
        QVERIFY(QTest::qWaitFor(
            [&] { return controllers.readAllStandardError().contains("controllers on"); }, 10000));

        SearchFolder folder;
        QVERIFY(folder.ready);
        QVERIFY(QDir().mkpath(folder.dir.filePath("home/.config/panomat-set")));
        if (!list.isEmpty()) {
            QFile conf(folder.dir.filePath(list == "user" ? "home/.config/panomat-set/ZEDA.conf"
                                                          : "ZEDA.conf"));
            QVERIFY(conf.open(QIODevice::WriteOnly) && conf.write(text) == text.size());
        }
        QProcess p;
        p.setProcessEnvironment(withoutUserLists(folder));
        p.setChildProcessModifier(SimulatedLan::enter(net.searcher));
        QElapsedTimer took;
        took.start();
        p.start(folder.exe, {});
        QVERIFY(p.waitForFinished(20000));
        const qint64 ms = took.elapsed();
        const QByteArray said = p.readAllStandardError();
        QVERIFY2(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0, said.constData());
        QCOMPARE(p.readAllStandardOutput(), probing);
        QByteArray ips, macs;
        for (int i : found) {
            ips += QStringLiteral("192.000.002.%1").arg(10 + i, 3, 10, QChar('0')).toLatin1();
            macs += SimulatedLan::mac(i).toUpper().replace(':', '-').toLatin1() + "\r\n";
        }
        for (auto [name, bytes] : {std::pair{"IP.txt", ips + "\r\n"}, {"MAC.txt", macs}}) {
            QFile f(folder.dir.filePath(name));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), bytes);
        }
        // The operator's wait: absent hosts are given up at the connect time-out.
        qInfo("the search took %lld ms", ms);
        QVERIFY2(ms <= 1500, qPrintable(QStringLiteral("%1 ms; %2").arg(ms).arg(said)));
#endif
    }

    // ZEDA.conf (none if empty) and ZEDA_HOSTS (unset if empty) -> IP.txt and MAC.txt.
    void search_data() {
        for (const char* column : {"conf", "env", "ipFile", "macFile"})
            QTest::addColumn<QByteArray>(column);
        for (auto [n, c, e, i, m] :
             {std::array{"environment wins; found among other hosts", "127.21.42.4\n",
                         "127.21.42.1-127.21.42.7", "127.021.042.003127.021.042.004\r\n",
                         "02-00-7F-15-2A-03\r\n02-00-7F-15-2A-04\r\n"},
              {"blank environment: conf", "# lab\n127.21.42.3\nnot-a-host\n", " ",
               "127.021.042.003\r\n", "02-00-7F-15-2A-03\r\n"},
              {"only refused entries: nothing probed", "not-a-host\n", "", "", ""}})
            QTest::newRow(n) << QByteArray(c) << QByteArray(e) << QByteArray(i) << QByteArray(m);
    }
    void search() {
        QFETCH(QByteArray, conf);
        QFETCH(QByteArray, env);
        QFETCH(QByteArray, ipFile);
        QFETCH(QByteArray, macFile);
        sim::Simulator s; // .2 never answers "RVER", .3 and .4 are controllers
        QVERIFY(s.start(QHostAddress("127.21.42.2"), 3));
        s.setFaults(1, sim::Faults{.silent = {"RVER"}});
        QTcpServer other; // .5 another service; .1 and .7 absent
        QVERIFY(other.listen(QHostAddress("127.21.42.5"), 23));
        connect(&other, &QTcpServer::newConnection, this,
                [&] { other.nextPendingConnection()->write("login: "); });
        QTcpServer talker; // .6 begins like a controller and never ends its line
        QVERIFY(talker.listen(QHostAddress("127.21.42.6"), 23));
        connect(&talker, &QTcpServer::newConnection, this, [&] {
            QTcpSocket* s = talker.nextPendingConnection();
            s->write("VERS");
            connect(s, &QTcpSocket::bytesWritten, s, [s] {
                if (s->state() == QAbstractSocket::ConnectedState && s->bytesToWrite() == 0)
                    s->write(QByteArray(64 * 1024, '1'));
            });
        });

        // An old, longer MAC.txt beside the program must be replaced whole.
        SearchFolder folder;
        QVERIFY(folder.ready && QFile::copy(ZEDA_EXE, folder.dir.filePath("MAC.txt")));
        QFile confFile(folder.dir.filePath("ZEDA.conf"));
        QVERIFY(conf.isEmpty() || (confFile.open(QIODevice::WriteOnly) &&
                                   confFile.write(conf) == conf.size() && confFile.flush()));
        QProcessEnvironment environment = withoutUserLists(folder);
        if (!env.isEmpty())
            environment.insert("ZEDA_HOSTS", QString::fromLatin1(env));
        QProcess p;
        p.setProcessEnvironment(environment);
        p.setWorkingDirectory(QDir::tempPath()); // the program's own folder is what counts
        p.start(folder.exe, {});
        // The event loop turns meanwhile, so the controllers in this process answer.
        QVERIFY(QTest::qWaitFor([&] { return p.state() == QProcess::NotRunning; }, 30000) &&
                p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0);
        for (auto [name, bytes] : {std::pair{"IP.txt", ipFile}, {"MAC.txt", macFile}}) {
            QFile f(folder.dir.filePath(name));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), bytes);
        }
    }

    // The search ends and reports whatever the network does. Without a route every
    // connect fails inside connectToHost(); the namespace has not even loopback up.
    // The host list must not take memory in proportion to what its text names.
    // With no host list and no interface up but loopback, nothing is probed and the
    // operator is told where hosts can be named.
    void searchEndsInEveryNetworkState_data() {
        QTest::addColumn<QByteArray>("hosts");
        QTest::addColumn<bool>("isolated");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("message");
        const QByteArray none;
        QTest::newRow("no route to the hosts") << QByteArray("192.0.2.1-2") << true << 2 << none;
        QTest::newRow("no route to 16382 hosts")
            << QByteArray("198.18.0.0/18") << true << 16382 << none;
        QTest::newRow("one network 4000 times")
            << QByteArray("127.21.64.0/18 ").repeated(4000) << false << 16382 << none;
        QTest::newRow("no host list, no network")
            << none << true << 0
            << QByteArray("no network to search: no interface is up with an IPv4 address; name "
                          "hosts in ZEDA_HOSTS or ~/.config/panomat-set/ZEDA.conf");
    }
    void searchEndsInEveryNetworkState() {
        QFETCH(QByteArray, hosts);
        QFETCH(bool, isolated);
        QFETCH(int, count);
        QFETCH(QByteArray, message);
        SearchFolder folder;
        QVERIFY(folder.ready);
        QProcess p;
        QProcessEnvironment env = withoutUserLists(folder);
        if (!hosts.isEmpty())
            env.insert("ZEDA_HOSTS", QString::fromLatin1(hosts));
        p.setProcessEnvironment(env);
#ifdef Q_OS_WIN
        if (isolated)
            QSKIP("Windows has no network namespaces to isolate the search in");
#else
        p.setChildProcessModifier([isolated] {
            // The search needs a fraction of this.
            if (!limitData(64 << 20) || (isolated && unshare(CLONE_NEWNET) != 0))
                _exit(125); // a namespace needs root, as port 23 does
        });
#endif
        p.start(folder.exe, {});
        QVERIFY2(p.waitForFinished(20000), "the search did not end");
        const QByteArray said = p.readAllStandardError();
        QVERIFY2(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0, said.constData());
        QVERIFY2(said.contains(
                     QStringLiteral("0 controllers found among %1 hosts").arg(count).toLatin1()),
                 said.constData());
        QVERIFY2(said.contains(message), said.constData());
        QCOMPARE(p.readAllStandardOutput().isEmpty(), hosts.isEmpty());
    }

    // A host list that is no list ends the search with a clear message and status 2,
    // in bounded memory and without waiting for a writer; nothing is written.
    void hostListThatIsNoList_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("message");
#ifndef Q_OS_WIN // no FIFOs or devices among a Windows user's files
        QTest::newRow("FIFO") << "fifo" << QByteArray("it is a FIFO, not a regular file");
        QTest::newRow("/dev/zero") << "zero" << QByteArray("it is a character device");
#endif
        QTest::newRow("folder") << "folder" << QByteArray("it is a folder");
        QTest::newRow("200 MB") << "large" << QByteArray("it is larger than 1 MiB");
    }
    void hostListThatIsNoList() {
        QFETCH(QString, kind);
        QFETCH(QByteArray, message);
        SearchFolder folder;
        QVERIFY(folder.ready);
        const QByteArray conf = QFile::encodeName(folder.dir.filePath("ZEDA.conf"));
#ifndef Q_OS_WIN
        if (kind == "fifo") {
            QCOMPARE(mkfifo(conf.constData(), 0600), 0);
        } else if (kind == "zero") {
            QVERIFY(QFile::link("/dev/zero", conf));
        } else
#endif
        if (kind == "folder") {
            QVERIFY(QDir(folder.dir.path()).mkdir("ZEDA.conf"));
        } else {
            QFile f(conf); // garbage, then a sparse tail: nothing reaches the disk
            QVERIFY(f.open(QIODevice::WriteOnly) && f.write("no-host\n") > 0 &&
                    f.resize(200 << 20));
        }
        const Run run = runSearch(folder, {});
        QVERIFY2(run.exitCode == 2, run.said.constData());
        const QByteArray shown = QFile::encodeName(QDir::toNativeSeparators(QFile::decodeName(conf)));
        QVERIFY2(run.said.contains("cannot read the host list " + shown + ": " + message),
                 run.said.constData());
        QVERIFY(!QFile::exists(folder.dir.filePath("MAC.txt")));
    }

    // A megabyte of entries that are no hosts gives a screenful of messages, not one
    // for each.
    void garbageHostListIsReportedBriefly() {
        SearchFolder folder;
        QFile conf(folder.dir.filePath("ZEDA.conf"));
        QVERIFY(folder.ready && conf.open(QIODevice::WriteOnly) &&
                conf.write(QByteArray("\x1b[2Jx ").repeated(100000)) > 0 && conf.flush());
        const Run run = runSearch(folder, {});
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY2(run.said.size() < 4096, run.said.left(4096).constData());
        QVERIFY(run.said.contains("ignored 99980 more entries that are not hosts"));
        QVERIFY(!run.said.contains('\x1b'));
    }

    // Another local user plants links where the result files are written; the files
    // they point to stay as they were, and the results are written in their place.
    void plantedLinksAreReplaced_data() {
        QTest::addColumn<QStringList>("names"); // "%1" is the search program's pid
        QTest::newRow("final names") << QStringList{"MAC.txt", "IP.txt"};
        QTest::newRow("temporary names as before")
            << QStringList{"MAC.txt.%1.new", "IP.txt.%1.new"};
    }
    void plantedLinksAreReplaced() {
        QFETCH(QStringList, names);
#ifdef Q_OS_WIN
        QSKIP("Windows users plant no links without privilege");
#else
        SearchFolder folder;
        QTemporaryDir elsewhere;
        const QString secret = elsewhere.filePath("shadow");
        QFile target(secret);
        QVERIFY(folder.ready && target.open(QIODevice::WriteOnly) && target.write("root:x") == 6);
        target.close();
        QVERIFY(target.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        const QByteArray link = QFile::encodeName(secret);
        // Made here: the child between fork and exec must not allocate.
        std::vector<QByteArray> paths;
        for (QString name : names)
            paths.push_back(QFile::encodeName(folder.dir.filePath(name.replace("%1", "%d"))));
        const Run run = runSearch(folder, "127.21.43.1", {}, [paths, link] {
            for (const QByteArray& pattern : paths) {
                char path[4096];
                std::snprintf(path, sizeof path, pattern.constData(), int(getpid()));
                if (symlink(link.constData(), path) != 0)
                    _exit(126);
            }
        });
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY(target.open(QIODevice::ReadOnly));
        QCOMPARE(target.readAll(), QByteArray("root:x"));
        QCOMPARE(target.permissions() & (QFile::ReadOther | QFile::ReadGroup),
                 QFile::Permissions());
        for (const char* name : {"MAC.txt", "IP.txt"}) {
            const QFileInfo result(folder.dir.filePath(name));
            QVERIFY(result.isFile() && !result.isSymLink() && result.size() == 0);
        }
        // No temporary file is left behind; the planted links may stay.
        const QStringList kept{"ZEDA.exe", "MAC.txt", "IP.txt"};
        for (const QString& name :
             QDir(folder.dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System))
            QVERIFY2(kept.contains(name) || name.endsWith(".new"), qPrintable(name));
#endif
    }

    // Run as root, the search writes into no folder another user can change.
    void sharedFolderRefusedAsRoot_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("owner");
        QTest::addColumn<bool>("refused");
        QTest::newRow("world-writable") << 0777 << 0 << true;
        QTest::newRow("group-writable, other group") << 0775 << 0 << true;
        QTest::newRow("another user's") << 0755 << 4242 << true;
        QTest::newRow("world-writable with sticky bit") << 01777 << 0 << false;
        QTest::newRow("root's own") << 0755 << 0 << false;
    }
    void sharedFolderRefusedAsRoot() {
        QFETCH(int, mode);
        QFETCH(int, owner);
        QFETCH(bool, refused);
#ifdef Q_OS_WIN
        QSKIP("folders are shared by access lists on Windows, not by owner and mode");
#else
        if (geteuid() != 0)
            QSKIP("needs root, as port 23 does");
        SearchFolder folder;
        const QByteArray out = QFile::encodeName(folder.dir.filePath("out"));
        QVERIFY(folder.ready && mkdir(out.constData(), 0700) == 0);
        QCOMPARE(chown(out.constData(), uid_t(owner), mode == 0775 ? 4242 : 0), 0);
        QCOMPARE(chmod(out.constData(), mode_t(mode)), 0);
        const Run run = runSearch(folder, "127.21.43.1", {"--output-dir", QFile::decodeName(out)});
        QVERIFY2((run.exitCode != 0) == refused, run.said.constData());
        QCOMPARE(run.said.contains("refusing to write into " + out + " as root"), refused);
        QCOMPARE(QFile::exists(out + "/MAC.txt"), !refused);
#endif
    }

    // Whatever a host answers reaches the operator's terminal escaped.
    void repliesAreEscaped() {
        QTcpServer hostile;
        QVERIFY(hostile.listen(QHostAddress("127.21.44.1"), 23));
        connect(&hostile, &QTcpServer::newConnection, this, [&] {
            hostile.nextPendingConnection()->write("VERS1\x1b]2;owned\x07\x1b[2J\\\r\n");
        });
        SearchFolder folder;
        QVERIFY(folder.ready);
        const Run run = runSearch(folder, "127.21.44.1");
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY2(
            run.said.contains("controller at 127.21.44.1 (VERS1\\x1b]2;owned\\x07\\x1b[2J\\\\)"),
            run.said.constData());
        QVERIFY(!run.said.contains('\x1b') && !run.said.contains('\x07'));
    }
};

QTEST_GUILESS_MAIN(TestSearch)
#include "test_search.moc"
