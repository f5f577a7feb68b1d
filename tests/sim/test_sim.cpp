// Virtual controllers over real TCP on 127.20.0.0/16, port 23.

#include "simulator.h"

#include "support/datalimit.h"
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <optional>
#include <sys/resource.h>
#include <unistd.h>

using namespace sim;
Q_DECLARE_METATYPE(sim::Faults)

namespace {

QHostAddress addr(const QByteArray& text) {
    return QHostAddress(QString::fromLatin1(text));
}

// A client that keeps what arrives chunk by chunk, the way the tool sees it.
struct Client {
    QTcpSocket socket;
    QList<QByteArray> chunks;

    explicit Client(const QHostAddress& address) {
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket,
                         [this] { chunks << socket.readAll(); });
        socket.connectToHost(address, 23);
        socket.waitForConnected(3000);
    }
    bool connected() const { return socket.state() == QAbstractSocket::ConnectedState; }
    void send(const QByteArray& line) { socket.write(line + "\r\n"); }
    QByteArray next(int ms = 3000) {
        return QTest::qWaitFor([&] { return !chunks.isEmpty(); }, ms) ? chunks.takeFirst() : "";
    }
    bool waitFor(const QByteArray& tail) {
        return QTest::qWaitFor([&] { return chunks.join().endsWith(tail); }, 3000);
    }
};

// panomat-sim with these arguments, inChild run in the child first; killed when this goes.
struct SimProcess {
    QProcess p;
    QByteArray said; // its standard error
    explicit SimProcess(const QStringList& arguments, const std::function<void()>& inChild = {}) {
        if (inChild)
            p.setChildProcessModifier(inChild);
        p.start(QStringLiteral(PANOMAT_SIM_EXE), arguments);
    }
    // Whether it says this on standard error within 10 s; by default: it is ready.
    bool says(const QByteArray& text = "Ctrl+C") {
        return QTest::qWaitFor([&] { return (said += p.readAllStandardError()).contains(text); },
                               10000);
    }
    QByteArray stop() {
        p.kill();
        p.waitForFinished();
        return said += p.readAllStandardError();
    }
    ~SimProcess() { stop(); }
};

QByteArray wallText(const ControllerState& s) {
    QByteArray text =
        QByteArray::number(s.value("wall.rows")) + 'x' + QByteArray::number(s.value("wall.cols"));
    for (char output : {'a', 'b', 'c', 'd'})
        text += ' ' + QByteArray::number(s.value(QByteArray("wall.position.") + output));
    return text + (s.value("bypass") ? " bypass" : "") + (s.value("bezel.mode") ? " bezel" : "");
}

} // namespace

class TestSim : public QObject {
    Q_OBJECT

    const QHostAddress home = addr("127.20.1.2");
    VirtualController* ctl = nullptr;

private slots:
    void init() {
        ctl = new VirtualController(1, this);
        QVERIFY2(ctl->listen(home), qPrintable(ctl->errorString()));
    }
    void cleanup() {
        delete ctl;
        ctl = nullptr;
    }

    // Plays a script on controller #1 at `home`, fresh from the factory, step by step:
    //   "line=reply"  sends the line; the next chunk is the reply and CR LF
    //   "line~bytes"  the same, the chunk exactly these bytes; no bytes: none for 150 ms
    //   "line"        sends the line; no reply may come (it would be the next one seen)
    //   "?wall"       the wall as wallText() shows it; "!" every setting as from the factory
    //   "+address"    the connection closes, the controller serves there (default home);
    //   "*address"    the same, and an idle second connection closes too (a restart)
    // A script's line may be empty, to wait for a chunk without sending.
    void conversations() {
        QTcpServer taken; // for the restart that finds its new address taken
        QVERIFY(taken.listen(addr("127.20.2.60"), 23));
        QFETCH(QByteArray, script);
        QFETCH(Faults, faults);
        ctl->setFaults(faults);
        std::optional<Client> c(std::in_place, home);
        Client other(home);
        for (const QByteArray& step : script.split('|')) {
            if (step.startsWith('+') || step.startsWith('*')) {
                QVERIFY(QTest::qWaitFor(
                    [&] { return !c->connected() && (step[0] == '+' || !other.connected()); },
                    3000));
                const QHostAddress at = step.size() > 1 ? addr(step.mid(1)) : home;
                QCOMPARE(ctl->address(), at);
                c.emplace(at);
            } else if (step.startsWith('?')) {
                QCOMPARE(wallText(ctl->state()), step.mid(1));
            } else if (step == "!") {
                QCOMPARE(ctl->state(), ControllerState::factory(1, home.toIPv4Address()));
            } else {
                const qsizetype cut = qMax(step.indexOf('='), step.indexOf('~'));
                if (cut != 0)
                    c->send(cut < 0 ? step : step.left(cut));
                if (cut < 0)
                    continue;
                const QByteArray want = step.mid(cut + 1) + (step[cut] == '=' ? "\r\n" : "");
                QCOMPARE(c->next(want.isEmpty() ? 150 : 3000), want);
            }
        }
        c->send("RVER"); // whatever comes before its reply was not wanted
        QVERIFY(c->waitFor("VERS102\r\n"));
        QCOMPARE(c->chunks.join(), QByteArray("VERS102\r\n"));
    }

    // Reads before a setter show the factory value; a value out of range is
    // acknowledged where the tool waits for that, but not applied.
    void conversations_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<Faults>("faults");
        for (const char* s :
             {"RPOW=POWE001|SPOW 0=POWE000|SPOW 2=POWE000|RPOW=POWE000|rver=VERS102",
              "RMDN=MODN000|SMDN 3|RMDN=MODN003|RBY=BYPA000|SBY 1|RBY=BYPA001",
              "RBEZ=BEZE000|SBEZ 1|RBEZ=BEZE001|RIPM=IPMD001|SIPM 0=IPMD000|RIPM=IPMD000",
              "RRES=RESO006|SRES 16|RRES=RESO016|SRES 17|RRES=RESO016",
              "ROSDD=OSDD000|SOSDD 1|ROSDD=OSDD001|SOSDI|RMUTE=MUTE000|SMUTE 1|RMUTE=MUTE001",
              "ROSDT=OSDT002|SOSDT 1|ROSDT=OSDT002|SOSDT 50|ROSDT=OSDT050",
              "ROSDH=OSDH005|SOSDH 07|ROSDH=OSDH007|ROSDV=OSDV005|SOSDV 20|ROSDV=OSDV020",
              "ROSDG=OSDG002|SOSDG 10|ROSDG=OSDG010",
              "RLINK=IP00127IP01020IP02001IP03002MA00255MA01000MA02000MA03000"
              "GA00127GA01000GA02000GA03001",
              "SIPA 127.020.001.099=IPA0|SMAA 255.255.0.0=MAA0|SGAA 127.020.001.254=GAA0|"
              "SIPA 127.020.1.256=IPA0|RLINK=IP00127IP01020IP02001IP03099"
              "MA00255MA01255MA02000MA03000GA00127GA01020GA02001GA03254",
              "RBRI 1=BRIR001BRIV050|SBRI 3 75|RBRI 3=BRIR003BRIV075|SBRI 1 3.7|"
              "RBRI 1=BRIR001BRIV003|SBRI 1 101|RBRI 1=BRIR001BRIV003|RBRI 5|XYZ 1|SBRI 1|SGAA",
              "RCON 2=CONR002CONV050|SCON 1 0|RCON 1=CONR001CONV000|RSAT 3=SATR003SATV050|"
              "SSAT 4 100|RSAT 4=SATR004SATV100|RHUE 4=HUER004HUEV050|SHUE 2 010|"
              "RHUE 2=HUER002HUEV010",
              "RCBH 1=CBHR001CBHV010|SCBH 2 255=CBHC002|RCBH 2=CBHR002CBHV255|"
              "SCBH 2 -1=CBHC002|RCBH 2=CBHR002CBHV255|RCBV 4=CBVR004CBVV010|"
              "SCBV 1 0=CBVC001|RCBV 1=CBVR001CBVV000",
              "RCHS 1=CHSC001PHSV000|  SMCHS  1   55 |RCHS 1=CHSC001MHSV055|SPCHS  1 12|"
              "RCHS 1=CHSC001PHSV012|SPCHS 1 -5|RCHS 1=CHSC001PHSV012|SMCHE  2 255|RCHE "
              "2=CHEC002MHEV255|SPCHE  2 45|"
              "RCHE 2=CHEC002PHEV045",
              "SPCVS  3 9|RCVS 3=CVSC003PVSV009|SMCVS  3 0|RCVS 3=CVSC003PVSV000|"
              "SMCVE  4 45|RCVE 4=CVEC004MVEV045|SPCVE  4 256|RCVE 4=CVEC004MVEV045",
              // Resets: each restores its own part only.
              "SCON 2 2|SBRI 2 1|SIMRE 2=IMRE|RCON 2=CONR002CONV050|RBRI 2=BRIR002BRIV001|"
              "SSAT 1 1|SIMRE 5=IMRE|RSAT 1=SATR001SATV001|SIMRE 3=IMRE|RSAT 1=SATR001SATV050",
              "SBRI 1 1|SCON 2 2|SSAT 3 3|SHUE 4 4|SCBH 2 99=CBHC002|SCBV 3 0=CBVC003|"
              "SRES 1|SOSDD 1|SOSDT 9|SOSDH 1|SOSDV 1|SOSDG 9|SMUTE 1|SOSDR=OSDR|"
              "RBRI 1=BRIR001BRIV001|RCBH 2=CBHR002CBHV099|SPIRE=PIRE|RCBH 2=CBHR002CBHV099|"
              "SWDE=WDEF|!",
              "SMDN 9|SCO 1 3=COCH|SIPA 127.020.001.077=IPA0|SDEF=DEFA|!|*",
              // Wall shapes, hot keys, favourites; bypass turns both ways.
              "SMNC 3 4 2=MNCM|SCO 2 12=COCH|?3x4 1 12 3 4|SMNC 3 4 5=MNCM|SCO 2 13=COCH|"
              "?3x4 1 12 3 4",
              "SHOT 0=HOTK|?1x1 1 1 1 1 bypass|SHOT 2=HOTK|?3x3 1 2 3 4|"
              "SHOT 13=HOTK|?2x1 1 2 1 2 bypass|SHOT 6=HOTK|?2x3 1 2 3 4|"
              "SHOT 14=HOTK|?1x3 1 2 3 1 bypass|SHOT 23=HOTK|?6x3 1 2 3 4|"
              "SHOT 16=HOTK|?1x4 1 2 3 4|SHOT 24=HOTK|?1x4 1 2 3 4",
              "SMNC 3 4 2=MNCM|SCO 2 7=COCH|SBY 1|SBEZ 1|SCBH 1 30=CBHC001|SFAVE 2|"
              "SBEZ 0|SHOT 2=HOTK|SCBH 1 10=CBHC001|RFAVE 2=RFAV002|?3x4 1 7 3 4 bypass bezel|"
              "RCBH 1=CBHR001CBHV030|RFAVE 5=RFAV005|?2x2 1 2 3 4|SFAVE 6|RFAVE 6",
              // A restart applies the stored network settings where it can.
              "SIPM 1=IPMD001|SIPA 127.020.002.050=IPA0|SREL=RELI|*127.20.2.50",
              "SIPA 127.020.002.051=IPA0|SIPM 0=IPMD000|SREL=RELI|*",
              "SIPA 0.0.0.0=IPA0|SREL=RELI|*", "SIPA 127.20.2.60=IPA0|SREL=RELI|*"})
            QTest::newRow(s) << QByteArray(s) << Faults{};
        // Faults change how replies are cut into chunks, and which come at all.
        QTest::newRow("split") << QByteArray("RPOW~POWE|~001\r\n|SWDE~WDEF|~\r\n")
                               << Faults{.splitAt = 4, .splitGapMs = 300, .silent = {}};
        QTest::newRow("join") << QByteArray("RPOW~|RMDN=POWE001\r\nMODN000|RBY~|=BYPA000")
                              << Faults{.join = true, .joinHoldMs = 400, .silent = {}};
        QTest::newRow("latency") << QByteArray("RPOW~|=POWE001")
                                 << Faults{.latencyMs = 300, .silent = {}};
        QTest::newRow("silent, drop after 3")
            << QByteArray("SHOT 0|RMDN~|RBY=BYPA001|+|RPOW=POWE001")
            << Faults{.silent = {"SHOT", "RMDN"}, .dropAfter = 3};
    }

    void linesAreFramedAsTheControllerDoes() {
        Client c(home);
        c.socket.write("RP");
        QTest::qWait(50); // sends what was written
        c.socket.write("OW\r\nrver\n\r\nRMDN\r");
        QVERIFY(c.waitFor("MODN000\r\n"));
        QCOMPARE(c.chunks.join(), QByteArray("POWE001\r\nVERS102\r\nMODN000\r\n"));
    }

    void startFailuresAreExplained() {
        Simulator s;
        // Refused before anything binds.
        QVERIFY(!s.start(addr("128.0.0.1"), 1) && s.errorString().contains("127.0.0.0/8"));
        QTcpServer taken;
        QVERIFY(taken.listen(addr("127.20.5.3"), 23));
        QVERIFY(!s.start(addr("127.20.5.2"), 3));
        QVERIFY2(s.errorString().contains("127.20.5.3 port 23"), qPrintable(s.errorString()));
        QCOMPARE(s.count(), 0);
        QVERIFY(!Client(addr("127.20.5.2")).connected()); // controller 1 was stopped again
    }

    // Outside loopback a virtual controller would answer a real network: only when
    // asked for, and never on an address that is no host's.
    void addressesRefused_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("message");
        const auto row = [](const char* tag, const QString& arguments, const QByteArray& message) {
            QTest::newRow(tag) << arguments.split(u' ') << message;
        };
        row("not loopback", "--first 192.0.2.10",
            "--first must be an IPv4 address in 127.0.0.0/8, not '192.0.2.10' (--any-address");
        row("0.0.0.1 with --any-address", "--any-address --first 0.0.0.1",
            "0.0.0.1 is no address to listen on");
        row("into multicast", "--any-address --first 223.255.255.254 -n 3",
            "3 controllers from 223.255.255.254 do not fit");
        row("not an address, --any-address or not", "--any-address --first 192.0.2",
            "--first must be an IPv4 address in 127.0.0.0/8, not '192.0.2'\n");
    }
    void addressesRefused() {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, message);
        SimProcess sim(arguments);
        QVERIFY(sim.p.waitForFinished(10000));
        QVERIFY2(sim.p.exitCode() != 0 && sim.says(message), sim.said.constData());
    }

    void commandLine() {
        SimProcess sim(
            {"--devices", "2", "--first", "127.20.6.2", "--silent", "2:RVER", "--latency", "1:1"});
        QVERIFY(sim.says());
        Client one(addr("127.20.6.2")), two(addr("127.20.6.3"));
        two.send("RVER\r\nRPOW");
        one.send("RVER");
        QVERIFY(one.waitFor("\r\n") && two.waitFor("\r\n"));
        QCOMPARE(one.chunks.join() + two.chunks.join(), QByteArray("VERS102\r\nPOWE001\r\n"));
        // What it refuses or does not apply is logged with the reason.
        const std::pair<QByteArray, QByteArray> refused[] = {
            {"RBRI 5", "[no output 5]"},
            {"SFAVE 6", "[no such favourite slot]"},
            {"SGAA", "[missing address]"},
            {"SBRI 1", "[missing or bad argument 2]"},
            {"XYZ 1", "[unknown command]"},
            {"SPOW 2", "->  POWE001  [value out of range, not applied]"}};
        for (const auto& [line, note] : refused)
            one.send(line);
        QByteArray log;
        QVERIFY(QTest::qWaitFor(
            [&] { return (log += sim.p.readAllStandardOutput()).contains("SPOW 2"); }, 3000));
        QVERIFY2(log.contains("#1 127.20.6.2  RVER  ->  VERS102"), log.constData());
        for (const auto& [line, note] : refused)
            QVERIFY2(log.contains("#1 127.20.6.2  " + line + "  " + note), log.constData());
    }

    // A client floods controller 1 of the program, which runs with a data limit a
    // fraction of the flood and holds each reply of controller 1 back a while. Then, while the
    // flood is on its way, once it is all handed over, or once its connection is reset, controller
    // 2 answers at once, and nothing warns of writes to a client that has gone.
    void floods_data() {
        QTest::addColumn<QByteArray>("flood");
        QTest::addColumn<bool>("reads");
        QTest::addColumn<QByteArray>("then");
        constexpr int MiB = 1 << 20;
        QTest::newRow("16 MiB, replies never read")
            << QByteArray("RLINK\r\n").repeated(16 * MiB / 7) << false << QByteArray("on its way");
        QTest::newRow("16 MiB, replies read")
            << QByteArray("RPOW\r\n").repeated(16 * MiB / 6) << true << QByteArray("on its way");
        QTest::newRow("lines of 1 MiB") << ("RVER" + QByteArray(MiB, 'x') + "\r\n").repeated(100)
                                        << true << QByteArray("handed over");
        QTest::newRow("reset after 1 MiB")
            << QByteArray("RPOW\r\n").repeated(MiB / 6) << false << QByteArray("reset");
    }
    void floods() {
        QFETCH(QByteArray, flood);
        QFETCH(bool, reads);
        QFETCH(QByteArray, then);
        SimProcess sim({"-q", "--devices", "2", "--first", "127.20.7.2", "--latency", "1:200"}, [] {
            if (!limitData(64 << 20))
                _exit(125);
        });
        QVERIFY(sim.says());
        QTcpSocket flooder;
        flooder.setReadBufferSize(reads ? 0 : 1); // 1: takes hardly anything
        if (reads)
            connect(&flooder, &QTcpSocket::readyRead, &flooder, [&] { flooder.readAll(); });
        flooder.connectToHost(addr("127.20.7.2"), 23);
        QVERIFY(flooder.waitForConnected(3000));
        flooder.write(flood);
        QTest::qWait(300);
        if (then == "handed over")
            QVERIFY(QTest::qWaitFor([&] { return flooder.bytesToWrite() == 0; }, 10000));
        if (then == "reset")
            flooder.abort();
        Client other(addr("127.20.7.3"));
        other.send("RVER");
        QVERIFY(other.waitFor("VERS103\r\n")); // controller 2 has firmware 1.03
        QCOMPARE(sim.p.state(), QProcess::Running);
        QVERIFY2(!sim.stop().contains("QIODevice"), sim.said.left(300).constData());
    }

    // More clients than the program has descriptors: it pauses accepting instead of
    // spinning on the listening socket, and serves the waiting clients as others go.
    void descriptorExhaustion() {
#ifdef __SANITIZE_ADDRESS__
        // The sanitizers probe memory through a pipe of their own: with no descriptor
        // left they take every object for an invalid one and stop the program.
        QSKIP("the sanitizers need a free descriptor of their own");
#endif
        SimProcess sim({"--devices", "1", "--first", "127.20.8.2"}, [] {
            const rlimit few{64, 64};
            if (setrlimit(RLIMIT_NOFILE, &few) != 0)
                _exit(125);
        });
        QVERIFY(sim.says());
        std::vector<std::unique_ptr<Client>> clients;
        for (int i = 0; i < 70; ++i) {
            clients.push_back(std::make_unique<Client>(addr("127.20.8.2")));
            QVERIFY(clients.back()->connected()); // in the listen queue at least
            clients.back()->send("RVER");
        }
        const auto served = [&] {
            return std::count_if(clients.begin(), clients.end(),
                                 [](const auto& c) { return c->chunks.join() == "VERS102\r\n"; });
        };
        // Those it could take are served; a slow build takes a while to get there.
        QVERIFY(QTest::qWaitFor([&] { return served() > 0; }, 10000));
        QTest::qWait(500);
        QVERIFY2(served() < 70, "the descriptors did not run out");
        const auto cpu = [&] { // user + system time of the program, in clock ticks
            QFile stat(QStringLiteral("/proc/%1/stat").arg(sim.p.processId()));
            const QList<QByteArray> fields = stat.open(QIODevice::ReadOnly)
                                                 ? stat.readAll().split(')').value(1).split(' ')
                                                 : QList<QByteArray>{};
            return fields.value(12).toLongLong() + fields.value(13).toLongLong();
        };
        const long long before = cpu();
        QTest::qWait(1000);
        // Spinning takes the whole second; waiting takes next to nothing.
        QVERIFY2(cpu() - before < sysconf(_SC_CLK_TCK) / 4,
                 qPrintable(QStringLiteral("%1 ticks in 1 s").arg(cpu() - before)));
        const QByteArray log = sim.p.readAllStandardOutput();
        QVERIFY2(log.contains("no file descriptor left for another connection"),
                 log.right(300).constData());
        std::erase_if(clients, [](const auto& c) { return !c->chunks.isEmpty(); });
        QVERIFY(QTest::qWaitFor(
            [&] {
                return std::all_of(clients.begin(), clients.end(),
                                   [](const auto& c) { return c->chunks.join() == "VERS102\r\n"; });
            },
            10000));
        QCOMPARE(sim.p.state(), QProcess::Running);
    }
};

QTEST_GUILESS_MAIN(TestSim)
#include "test_sim.moc"
