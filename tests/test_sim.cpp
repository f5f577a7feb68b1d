// Virtual controllers over real TCP on 127.20.0.0/16, port 23.

#include "simulator.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

using namespace sim;

namespace {

QHostAddress addr(const char* text) {
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
        (void)QTest::qWaitFor(
            [this] {
                const auto s = socket.state();
                return s == QAbstractSocket::ConnectedState ||
                       s == QAbstractSocket::UnconnectedState;
            },
            3000);
    }
    bool connected() const { return socket.state() == QAbstractSocket::ConnectedState; }
    void send(const QByteArray& line) {
        socket.write(line + "\r\n");
        socket.flush();
    }
    QByteArray next(int ms = 3000) {
        if (!QTest::qWaitFor([this] { return !chunks.isEmpty(); }, ms))
            return {};
        return chunks.takeFirst();
    }
    QByteArray ask(const QByteArray& line) {
        send(line);
        return next();
    }
    bool waitClosed() {
        return QTest::qWaitFor(
            [this] { return socket.state() == QAbstractSocket::UnconnectedState; }, 3000);
    }
};

// Characters from..from+len-1 of a reply, counted from 1 as the tool counts them.
QByteArray field(const QByteArray& reply, int from, int len) {
    return reply.mid(from - 1, len);
}

} // namespace

class TestSim : public QObject {
    Q_OBJECT

private:
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

    void everyCommandHasItsReplyForm_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("reply");
        auto row = [](const char* command, const char* reply) {
            QTest::newRow(command) << QByteArray(command) << QByteArray(reply);
        };
        // Status, I/O and network reads of a fresh controller #1 on 127.20.1.2.
        for (auto [c, r] : {std::pair{"RPOW", "POWE001"},
                            {"RMDN", "MODN000"},
                            {"RBY", "BYPA000"},
                            {"RBEZ", "BEZE000"},
                            {"RVER", "VERS102"},
                            {"RRES", "RESO006"},
                            {"ROSDD", "OSDD000"},
                            {"ROSDT", "OSDT002"},
                            {"ROSDH", "OSDH005"},
                            {"ROSDV", "OSDV005"},
                            {"ROSDG", "OSDG002"},
                            {"RMUTE", "MUTE000"},
                            {"RIPM", "IPMD001"}})
            row(c, r);
        row("RLINK", "IP00127IP01020IP02001IP03002MA00255MA01000MA02000MA03000"
                     "GA00127GA01000GA02000GA03001");
        // Long layout: first key and output, second key at 8-11, value at 12-14.
        for (auto [c, r] : {std::pair{"RBRI 1", "BRIR001BRIV050"},
                            {"RCON 2", "CONR002CONV050"},
                            {"RSAT 3", "SATR003SATV050"},
                            {"RHUE 4", "HUER004HUEV050"},
                            {"RCBH 1", "CBHR001CBHV010"},
                            {"RCBV 4", "CBVR004CBVV010"},
                            {"RCHS 1", "CHSC001PHSV000"},
                            {"RCHE 2", "CHEC002PHEV000"},
                            {"RCVS 3", "CVSC003PVSV000"},
                            {"RCVE 4", "CVEC004PVEV000"}})
            row(c, r);
        // Acknowledged commands; a value out of range is acknowledged, not applied.
        for (auto [c, r] : {std::pair{"SPOW 0", "POWE000"},
                            {"SOSDR", "OSDR"},
                            {"SIMRE 3", "IMRE"},
                            {"SPIRE", "PIRE"},
                            {"SMNC 3 4 2", "MNCM"},
                            {"SCO 2 3", "COCH"},
                            {"SCBH 3 5", "CBHC003"},
                            {"SCBV 4 5", "CBVC004"},
                            {"SCBH 2 -1", "CBHC002"},
                            {"SWDE", "WDEF"},
                            {"RFAVE 5", "RFAV005"},
                            {"SHOT 23", "HOTK"},
                            {"SIPM 0", "IPMD000"},
                            {"SIPA 127.020.001.009", "IPA0"},
                            {"SMAA 255.255.000.000", "MAA0"},
                            {"SGAA 127.000.000.001", "GAA0"}})
            row(c, r);
        // Setters the tool does not wait for, and commands the controller does not know.
        for (const char* c :
             {"SOSDI",      "SRES 16",     "SOSDD 1",      "SOSDT 50",     "SOSDH 7",
              "SOSDV 07",   "SOSDG 10",    "SMUTE 1",      "SBRI 2 57",    "SCON 3 75",
              "SSAT 4 100", "SHUE 1 0",    "SBEZ 1",       "SBY 1",        "SFAVE 3",
              "SMDN 2",     "SMCHS  2 55", "SPCHS  1 0",   "SMCHE  3 1",   "SPCHE  2 45",
              "SMCVS  4 9", "SPCVS  1 9",  "SMCVE  1 255", "SPCVE  4 255", "XYZ 1",
              "RBRI 5"})
            row(c, "");
    }
    void everyCommandHasItsReplyForm() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, reply);
        Client c(home);
        QVERIFY(c.connected());
        // Request and reply alternate, as the tool sends them. Nothing but the one
        // reply may come: the next request's reply must be the next chunk.
        if (reply.isEmpty())
            c.send(command);
        else
            QCOMPARE(c.ask(command), reply + "\r\n");
        QCOMPARE(c.ask("RVER"), QByteArray("VERS102\r\n"));
        QVERIFY(c.chunks.isEmpty());
    }

    void setThenRead_data() {
        QTest::addColumn<QByteArray>("set");
        QTest::addColumn<QByteArray>("read");
        QTest::addColumn<int>("keyAt"); // where the tool finds the key and value
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("value");
        auto row = [](const char* name, const char* set, const char* read, int keyAt,
                      const char* key, const char* value) {
            QTest::newRow(name) << QByteArray(set) << QByteArray(read) << keyAt << QByteArray(key)
                                << QByteArray(value);
        };
        row("brightness", "SBRI 3 75", "RBRI 3", 8, "BRIV", "075");
        row("contrast 0", "SCON 1 0", "RCON 1", 8, "CONV", "000");
        row("saturation 100", "SSAT 4 100", "RSAT 4", 8, "SATV", "100");
        row("hue typed 050", "SHUE 2 050", "RHUE 2", 8, "HUEV", "050");
        row("typed 3.7 reads as 3", "SBRI 1 3.7", "RBRI 1", 8, "BRIV", "003");
        row("brightness 101 refused", "SBRI 1 101", "RBRI 1", 8, "BRIV", "050");
        row("resolution", "SRES 16", "RRES", 1, "RESO", "016");
        row("osd display", "SOSDD 1", "ROSDD", 1, "OSDD", "001");
        row("osd timeout", "SOSDT 50", "ROSDT", 1, "OSDT", "050");
        row("osd timeout 1 refused", "SOSDT 1", "ROSDT", 1, "OSDT", "002");
        row("osd h", "SOSDH 07", "ROSDH", 1, "OSDH", "007");
        row("osd v", "SOSDV 20", "ROSDV", 1, "OSDV", "020");
        row("osd gain", "SOSDG 10", "ROSDG", 1, "OSDG", "010");
        row("mute", "SMUTE 1", "RMUTE", 1, "MUTE", "001");
        row("bypass", "SBY 1", "RBY", 1, "BYPA", "001");
        row("bezel on", "SBEZ 1", "RBEZ", 1, "BEZE", "001");
        row("model", "SMDN 3", "RMDN", 1, "MODN", "003");
        row("power off", "SPOW 0", "RPOW", 1, "POWE", "000");
        row("dhcp", "SIPM 0", "RIPM", 1, "IPMD", "000");
        row("bezel h", "SCBH 2 255", "RCBH 2", 8, "CBHV", "255");
        row("bezel v", "SCBV 1 0", "RCBV 1", 8, "CBVV", "000");
        row("trim h start +", "SPCHS  1 12", "RCHS 1", 8, "PHSV", "012");
        row("trim h end -", "SMCHE  2 255", "RCHE 2", 8, "MHEV", "255");
        row("trim v start 0", "SMCVS  3 0", "RCVS 3", 8, "PVSV", "000");
        row("trim v end -", "SMCVE  4 45", "RCVE 4", 8, "MVEV", "045");
    }
    void setThenRead() {
        QFETCH(QByteArray, set);
        QFETCH(QByteArray, read);
        QFETCH(int, keyAt);
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, value);
        Client c(home);
        c.send(set);
        c.send("RVER"); // drains an acknowledgement, if the setter has one
        QByteArray seen;
        QVERIFY(QTest::qWaitFor(
            [&] {
                while (!c.chunks.isEmpty())
                    seen += c.chunks.takeFirst();
                return seen.endsWith("VERS102\r\n");
            },
            3000));
        const QByteArray reply = c.ask(read);
        QCOMPARE(field(reply, keyAt, 4), key);
        QCOMPARE(field(reply, keyAt + 4, 3), value);
        QVERIFY(reply.endsWith("\r\n"));
    }

    void addressBlockFields() {
        Client c(home);
        c.ask("SIPA 127.020.001.099");
        c.ask("SMAA 255.255.0.0");
        c.ask("SGAA 127.020.001.254");
        const QByteArray block = c.ask("RLINK");
        QCOMPARE(block.size(), 84 + 2);
        QCOMPARE(field(block, 1, 4), QByteArray("IP00"));
        auto octets = [&](int first) {
            QList<QByteArray> parts;
            for (int i = 0; i < 4; ++i)
                parts << field(block, first + 7 * i, 3);
            return parts.join('.');
        };
        QCOMPARE(octets(5), QByteArray("127.020.001.099"));
        QCOMPARE(octets(33), QByteArray("255.255.000.000"));
        QCOMPARE(octets(61), QByteArray("127.020.001.254"));
        QCOMPARE(ctl->state().address, 0x7F140163u);
        c.ask("SIPA 127.020.1.256"); // acknowledged, not stored
        QCOMPARE(ctl->state().address, 0x7F140163u);
    }

    void favouritesKeepTheWall() {
        Client c(home);
        for (const char* line : {"SMNC 3 4 2", "SCO 2 7"})
            c.ask(line);
        for (const char* line : {"SBY 1", "SBEZ 1", "SFAVE 2", "SBEZ 0"})
            c.send(line);
        c.ask("SHOT 0");
        c.ask("SCBH 1 30");
        const WallSettings saved = ctl->state().favourites[1];
        QCOMPARE(saved.rows, 3);
        QCOMPARE(saved.cols, 4);
        QCOMPARE(saved.position[1], 7);
        QVERIFY(saved.bypass && saved.bezelOn);
        QVERIFY(ctl->state().wall != saved);

        QCOMPARE(c.ask("RFAVE 2"), QByteArray("RFAV002\r\n"));
        QCOMPARE(ctl->state().wall, saved);
        QCOMPARE(c.ask("RBY"), QByteArray("BYPA001\r\n"));
        QCOMPARE(c.ask("RBEZ"), QByteArray("BEZE001\r\n"));
        QCOMPARE(c.ask("RCBH 1"), QByteArray("CBHR001CBHV010\r\n"));

        // An unused slot holds the factory wall.
        c.ask("RFAVE 5");
        QCOMPARE(ctl->state().wall, WallSettings{});
    }

    void hotKeysApplyTheirShape_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("cols");
        QTest::addColumn<QList<int>>("positions");
        QTest::addColumn<bool>("bypass");
        QTest::newRow("0 1x1") << 0 << 1 << 1 << QList<int>{1, 1, 1, 1} << true;
        QTest::newRow("2 3x3") << 2 << 3 << 3 << QList<int>{1, 2, 3, 4} << false;
        QTest::newRow("6 2x3") << 6 << 2 << 3 << QList<int>{1, 2, 3, 4} << false;
        QTest::newRow("13 2x1") << 13 << 2 << 1 << QList<int>{1, 2, 1, 2} << true;
        QTest::newRow("14 1x3") << 14 << 1 << 3 << QList<int>{1, 2, 3, 1} << true;
        QTest::newRow("16 1x4") << 16 << 1 << 4 << QList<int>{1, 2, 3, 4} << false;
        QTest::newRow("23 6x3") << 23 << 6 << 3 << QList<int>{1, 2, 3, 4} << false;
    }
    void hotKeysApplyTheirShape() {
        QFETCH(int, key);
        QFETCH(int, rows);
        QFETCH(int, cols);
        QFETCH(QList<int>, positions);
        QFETCH(bool, bypass);
        Client c(home);
        c.send(bypass ? "SBY 0" : "SBY 1"); // the preset must change it
        QCOMPARE(c.ask("SHOT " + QByteArray::number(key)), QByteArray("HOTK\r\n"));
        const WallSettings& w = ctl->state().wall;
        QCOMPARE(w.rows, rows);
        QCOMPARE(w.cols, cols);
        QCOMPARE(QList<int>(w.position.begin(), w.position.end()), positions);
        QCOMPARE(c.ask("RBY"), bypass ? QByteArray("BYPA001\r\n") : QByteArray("BYPA000\r\n"));
    }

    void resetsRestoreDefaults() {
        Client c(home);
        for (const char* line : {"SBRI 1 1", "SCON 2 2", "SSAT 3 3", "SHUE 4 4", "SRES 1",
                                 "SOSDD 1", "SOSDT 9", "SOSDH 1", "SOSDV 1", "SOSDG 9", "SMUTE 1"})
            c.send(line);
        c.ask("SCBH 2 99");
        c.ask("SCBV 3 0");

        c.ask("SIMRE 2"); // contrast of every output only
        QCOMPARE(c.ask("RCON 2"), QByteArray("CONR002CONV050\r\n"));
        QCOMPARE(c.ask("RBRI 1"), QByteArray("BRIR001BRIV001\r\n"));
        c.ask("SPIRE");
        for (const auto& row : ctl->state().picture)
            QCOMPARE(QList<int>(row.begin(), row.end()), QList<int>(4, 50));

        c.ask("SWDE");
        QCOMPARE(c.ask("RCBH 2"), QByteArray("CBHR002CBHV010\r\n"));
        QCOMPARE(c.ask("RCBV 3"), QByteArray("CBVR003CBVV010\r\n"));

        c.ask("SOSDR");
        const ControllerState factory = ControllerState::factory(1, home.toIPv4Address());
        QCOMPARE(ctl->state(), factory);

        c.send("SMDN 9");
        c.ask("SCO 1 3");
        QVERIFY(ctl->state() != factory);
        QCOMPARE(c.ask("SDEF"), QByteArray("DEFA\r\n"));
        QCOMPARE(ctl->state(), factory);
        QVERIFY(c.waitClosed()); // a factory reset restarts the controller
    }

    void controllersDifferAndKeepTheirOwnState() {
        Simulator s;
        QVERIFY2(s.start(addr("127.20.3.2"), 3), qPrintable(s.errorString()));
        Client a(addr("127.20.3.2")), b(addr("127.20.3.4"));
        QCOMPARE(a.ask("RVER"), QByteArray("VERS102\r\n"));
        QCOMPARE(b.ask("RVER"), QByteArray("VERS104\r\n"));
        QCOMPARE(b.ask("RMDN"), QByteArray("MODN002\r\n"));
        b.send("SBRI 1 7");
        QCOMPARE(b.ask("RBRI 1"), QByteArray("BRIR001BRIV007\r\n"));
        QCOMPARE(a.ask("RBRI 1"), QByteArray("BRIR001BRIV050\r\n"));

        // Several connections to one controller share its settings.
        Client b2(addr("127.20.3.4"));
        QCOMPARE(b2.ask("RBRI 1"), QByteArray("BRIR001BRIV007\r\n"));
        QCOMPARE(s.controller(3)->connectionCount(), 2);
        QCOMPARE(s.controller(3)->received(),
                 (QList<QByteArray>{"RVER", "RMDN", "SBRI 1 7", "RBRI 1", "RBRI 1"}));
    }

    void linesAreFramedAsTheControllerDoes() {
        Client c(home);
        c.socket.write("RP");
        c.socket.flush();
        QTest::qWait(50);
        c.socket.write("OW\r\n");
        QCOMPARE(c.next(), QByteArray("POWE001\r\n"));
        c.socket.write("rver\n\r\nRMDN\r");
        QByteArray both = c.next();
        if (both.size() < 18)
            both += c.next();
        QCOMPARE(both, QByteArray("VERS102\r\nMODN000\r\n"));
    }

    void relinkMovesOrStays_data() {
        QTest::addColumn<QByteArrayList>("setup");
        QTest::addColumn<QString>("after");
        QTest::newRow("static, new loopback address")
            << QByteArrayList{"SIPM 1", "SIPA 127.020.002.050"} << "127.20.2.50";
        QTest::newRow("dhcp stays")
            << QByteArrayList{"SIPA 127.020.002.051", "SIPM 0"} << "127.20.1.2";
        QTest::newRow("static, outside loopback")
            << QByteArrayList{"SIPM 1", "SIPA 0.0.0.0"} << "127.20.1.2";
        QTest::newRow("static, address taken")
            << QByteArrayList{"SIPM 1", "SIPA 127.20.2.60"} << "127.20.1.2";
    }
    void relinkMovesOrStays() {
        QFETCH(QByteArrayList, setup);
        QFETCH(QString, after);
        QTcpServer taken;
        QVERIFY(taken.listen(addr("127.20.2.60"), 23));

        Client c(home), other(home);
        for (const QByteArray& line : setup)
            c.ask(line);
        QSignalSpy restarted(ctl, &VirtualController::restarted);
        QCOMPARE(c.ask("SREL"), QByteArray("RELI\r\n"));
        QVERIFY(c.waitClosed());
        QVERIFY(other.waitClosed());
        QVERIFY(restarted.size() == 1 || restarted.wait(3000));
        QCOMPARE(ctl->address().toString(), after);

        Client again{QHostAddress(after)};
        QCOMPARE(again.ask("RVER"), QByteArray("VERS102\r\n"));
        if (after != home.toString()) {
            Client old(home);
            QVERIFY(!old.connected());
        }
    }

    void faultsChangeTheChunks() {
        Faults f;
        f.splitAt = 4;
        f.splitGapMs = 300;
        ctl->setFaults(f);
        Client c(home);
        QCOMPARE(c.ask("RPOW"), QByteArray("POWE"));
        QCOMPARE(c.next(), QByteArray("001\r\n"));
        QCOMPARE(c.ask("SWDE"), QByteArray("WDEF"));
        QCOMPARE(c.next(), QByteArray("\r\n"));

        f = {};
        f.join = true;
        f.joinHoldMs = 400;
        ctl->setFaults(f);
        c.send("RPOW");
        QVERIFY(c.next(150).isEmpty()); // held for the next reply
        c.send("RMDN");
        QCOMPARE(c.next(), QByteArray("POWE001\r\nMODN000\r\n"));
        c.send("RBY");
        QVERIFY(c.next(150).isEmpty());
        QCOMPARE(c.next(), QByteArray("BYPA000\r\n")); // alone, once the hold is over

        f = {};
        f.latencyMs = 300;
        ctl->setFaults(f);
        c.send("RVER");
        QVERIFY(c.next(150).isEmpty());
        QCOMPARE(c.next(), QByteArray("VERS102\r\n"));
    }

    void faultsSilenceAndDrop() {
        Simulator s;
        QVERIFY(s.start(addr("127.20.4.2"), 2));
        Faults f;
        f.silent = {"RBY", "SHOT"};
        f.dropAfter = 3;
        s.setFaults(2, f);

        Client one(addr("127.20.4.2")), two(addr("127.20.4.3"));
        // Controller 1 keeps its manners.
        for (const char* line : {"RBY", "RVER", "RPOW", "RMDN"})
            QVERIFY(!one.ask(line).isEmpty());
        QVERIFY(one.connected());

        two.send("SHOT 2"); // carried out, not answered
        two.send("RBY");
        QVERIFY(two.next(300).isEmpty());
        QCOMPARE(s.controller(2)->state().wall.rows, 3);
        QCOMPARE(two.ask("RVER"), QByteArray("VERS103\r\n")); // the third command is answered
        QVERIFY(two.waitClosed());

        // Counting starts again on a new connection.
        Client again(addr("127.20.4.3"));
        QCOMPARE(again.ask("RPOW"), QByteArray("POWE001\r\n"));
        QVERIFY(again.connected());
    }

    void startFailuresAreExplained() {
        Simulator s;
        QVERIFY(!s.start(addr("128.0.0.1"), 1)); // refused before anything binds
        QVERIFY(s.errorString().contains("127.0.0.0/8"));

        QTcpServer taken;
        QVERIFY(taken.listen(addr("127.20.5.3"), 23));
        QVERIFY(!s.start(addr("127.20.5.2"), 3));
        QVERIFY2(s.errorString().contains("127.20.5.3 port 23"), qPrintable(s.errorString()));
        QCOMPARE(s.count(), 0);
        Client c(addr("127.20.5.2")); // controller 1 was stopped again
        QVERIFY(!c.connected());
    }

    void commandLine() {
        QProcess bad;
        bad.start(QStringLiteral(PANOMAT_SIM_EXE), {"--devices", "0"});
        QVERIFY(bad.waitForFinished(10000));
        QCOMPARE(bad.exitCode(), 2);
        QVERIFY(bad.readAllStandardError().contains("--devices"));

        QProcess p;
        p.start(QStringLiteral(PANOMAT_SIM_EXE), {"--devices", "2", "--first", "127.20.6.2",
                                                  "--silent", "2:RVER", "--latency", "1:1"});
        QVERIFY(p.waitForStarted());
        QVERIFY(
            QTest::qWaitFor([&] { return p.readAllStandardError().contains("Ctrl+C"); }, 10000));
        Client one(addr("127.20.6.2")), two(addr("127.20.6.3"));
        QCOMPARE(one.ask("RVER"), QByteArray("VERS102\r\n"));
        two.send("RVER");
        QVERIFY(two.next(300).isEmpty());
        QCOMPARE(two.ask("RPOW"), QByteArray("POWE001\r\n"));
        QVERIFY(QTest::qWaitFor([&] { return p.canReadLine(); }, 3000));
        const QByteArray log = p.readAllStandardOutput();
        QVERIFY2(log.contains("#1 127.20.6.2  RVER  ->  VERS102"), log.constData());
        p.kill();
        p.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestSim)
#include "test_sim.moc"
