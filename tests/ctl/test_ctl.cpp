// panomat-ctl as a whole program against virtual controllers in this process.

#include "client/controllerclient.h"
#include "virtualcontroller.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <vector>
#ifdef Q_OS_WIN
#include <windows.h>
#else
#include "support/datalimit.h"
#include <sys/stat.h>
#endif

namespace {

struct Run {
    int exit = -1;
    QString out;
    QString err;
};

// A copy of the program keeps its suffix: Windows starts nothing without one.
#ifdef Q_OS_WIN
const QString CtlName = QStringLiteral("panomat-ctl.exe");
#else
const QString CtlName = QStringLiteral("panomat-ctl");
#endif

#ifdef Q_OS_WIN
// wine, which runs these tests on Linux, exports its version from ntdll.
bool underWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}
#endif

QString address(int i) {
    return QStringLiteral("127.67.0.%1").arg(i + 2);
}

} // namespace

class TestCtl : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void backupChangeRestore();
    void restoreOntoAReplacement();
    void wallPlanAppliedToFourControllers();
    void badInputSendsNothing_data();
    void badInputSendsNothing();
    void faultsAreNamedAndTheOthersDone_data();
    void faultsAreNamedAndTheOthersDone();
    void aCutRunIsReportedAsTheControllerHasIt_data();
    void aCutRunIsReportedAsTheControllerHasIt();
    void timeOutsNeverFireEarly();
    void outputReplacesAPlantedLink_data();
    void outputReplacesAPlantedLink();
    void sendWithoutAnAnswerFails_data();
    void sendWithoutAnAnswerFails();
    void allTakesOnlyPlainAddresses_data();
    void allTakesOnlyPlainAddresses();
    void searchProbesTheGivenHosts_data();
    void searchProbesTheGivenHosts();
    void searchLinesReachTheTerminalEscapedAndCut();

private:
    // Runs panomat-ctl while this process's controllers answer it.
    Run ctl(const QStringList& arguments, const QString& program = QStringLiteral(PANOMAT_CTL));
    QString hosts(int count) const;
    QString file(const QString& name) const { return dir_->filePath(name); }
    void write(const QString& name, const QByteArray& text);
    qsizetype linesReceived() const;

    std::vector<std::unique_ptr<sim::VirtualController>> controllers_;
    std::unique_ptr<QTemporaryDir> dir_;
};

void TestCtl::init() {
    dir_ = std::make_unique<QTemporaryDir>();
    for (int i = 0; i < 4; ++i) {
        controllers_.push_back(std::make_unique<sim::VirtualController>(i + 1));
        QVERIFY2(controllers_.back()->listen(QHostAddress(address(i))),
                 qPrintable(controllers_.back()->errorString()));
    }
}

void TestCtl::cleanup() {
    controllers_.clear();
}

Run TestCtl::ctl(const QStringList& arguments, const QString& program) {
    QProcess process;
#ifndef Q_OS_WIN
    // A file that offers more than its cap must not take the machine's memory.
    process.setChildProcessModifier([] {
        if (!limitData(1 << 30))
            _exit(125);
    });
#endif
    process.start(program, arguments);
    // The controllers answer from this process's event loop while the program runs.
    QDeadlineTimer deadline(30000);
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired())
        QTest::qWait(5);
    Run run{process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
#ifdef Q_OS_WIN
    // A Windows console program ends its lines with CRLF.
    run.out.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    run.err.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
#endif
    return run;
}

QString TestCtl::hosts(int count) const {
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << address(i);
    return list.join(u',');
}

void TestCtl::write(const QString& name, const QByteArray& text) {
    QFile f(file(name));
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(text);
}

qsizetype TestCtl::linesReceived() const {
    qsizetype lines = 0;
    for (const auto& c : controllers_)
        lines += c->received().size();
    return lines;
}

// Back up two, change one behind the tool's back, preview, restore, and read back equal.
void TestCtl::backupChangeRestore() {
    Run run = ctl({"backup", "-o", file("b.json"), "--host", hosts(2)});
    QCOMPARE(run.exit, 0);
    QVERIFY(run.err.contains("backup 127.67.0.3 done"));
    const sim::ControllerState before = controllers_[0]->state();
    sim::ControllerState changed = before;
    changed.set("brightness.b", 12);
    changed.set("trim.v_end.d", -40);
    changed.set("osd.timeout", 9);
    controllers_[0]->setState(changed);

    run = ctl({"restore", file("b.json"), "--dry-run"});
    QCOMPARE(run.exit, 0);
    QVERIFY2(run.out.contains("brightness.b: 12 -> 50") &&
                 run.out.contains("trim.v_end.d: -40 -> 0") &&
                 run.out.contains("127.67.0.3: nothing to change"),
             qPrintable(run.out));
    QCOMPARE(controllers_[0]->state(), changed);

    run = ctl({"restore", file("b.json")});
    QCOMPARE(run.exit, 0);
    QVERIFY2(run.out.contains("127.67.0.2: 3 settings: 3 read back equal\n"
                              "  osd.timeout = 2: read back equal\n"),
             qPrintable(run.out));
    QCOMPARE(controllers_[0]->state(), before);
    run = ctl(
        {"get", "brightness.b", "trim.v_end.d", "network.address", "--host", address(0), "--json"});
    QVERIFY(run.out.contains("\"brightness.b\": 50") &&
            run.out.contains("\"network.address\": \"127.67.0.2\""));
}

// A replacement gets every writable setting of the controller it replaces.
void TestCtl::restoreOntoAReplacement() {
    sim::ControllerState old = controllers_[0]->state();
    old.set("hue.a", 77);
    old.set("bezel.v.c", 200);
    old.set("model", 9);
    controllers_[0]->setState(old);
    QCOMPARE(ctl({"backup", "-o", file("one.json"), "--host", address(0)}).exit, 0);
    QCOMPARE(ctl({"restore", file("one.json"), "--to", address(1)}).exit, 0);
    for (const char* name : {"hue.a", "bezel.v.c", "model"})
        QCOMPARE(controllers_[1]->state().value(name), old.value(name));
    // Its own address stays: network settings go only when asked for.
    QCOMPARE(controllers_[1]->state().value("network.address"),
             protocol::Value(controllers_[1]->state().factoryAddress));
}

void TestCtl::wallPlanAppliedToFourControllers() {
    Run run = ctl(
        {"wall", "plan", "--rows", "4", "--cols", "4", "--host", hosts(4), "-o", file("p.json")});
    QCOMPARE(run.exit, 0);
    run = ctl({"wall", "apply", file("p.json")});
    QCOMPARE(run.exit, 0);
    for (int i = 0; i < 4; ++i) {
        const sim::ControllerState& s = controllers_[i]->state();
        QCOMPARE(s.value("wall.rows"), 4);
        QCOMPARE(s.value("wall.cols"), 4);
        for (int output = 0; output < 4; ++output)
            QCOMPARE(s.value(QStringLiteral("wall.position.%1").arg(QChar(u'a' + output))),
                     4 * i + output + 1);
    }
    // Two controllers on a 3 x 4 wall leave tiles 9-12 to nobody: said, and still applied.
    run = ctl(
        {"wall", "plan", "--rows", "3", "--cols", "4", "--host", hosts(2), "-o", file("q.json")});
    QVERIFY(run.err.contains("tiles without an output: 9, 10, 11, 12"));
    QCOMPARE(ctl({"wall", "apply", file("q.json")}).exit, 0);
}

void TestCtl::badInputSendsNothing_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("fileText");
    QTest::addColumn<QString>("message");
    const QByteArray plan = R"({"format": "panomat-wall-plan/1", "rows": 2, "cols": 2,
        "assignments": [{"address": "127.67.0.2", "output": "A", "tile": 5}]})";
    QTest::newRow("unknown setting") << QStringList{"get", "brightnes.a", "--host", "127.67.0.2"}
                                     << QByteArray() << "did you mean brightness.a";
    QTest::newRow("out of range") << QStringList{"set", "osd.h_offset=21", "--host", "127.67.0.2"}
                                  << QByteArray() << "0..20";
    QTest::newRow("second value bad")
        << QStringList{"set", "hue.a=5", "trim.h_end.b=300", "--host", "127.67.0.2"} << QByteArray()
        << "-255..255";
    QTest::newRow("read only") << QStringList{"set", "firmware=1", "--host", "127.67.0.2"}
                               << QByteArray() << "cannot be written";
    QTest::newRow("not an address")
        << QStringList{"get", "--host", "127.1"} << QByteArray() << "not a dotted IPv4 address";
    QTest::newRow("no targets") << QStringList{"get"} << QByteArray() << "--host";
    QTest::newRow("malformed json")
        << QStringList{"restore", "FILE"}
        << QByteArray("{\n  \"format\": \"panomat-settings/1\",\n  oops\n}") << "at line 3, column";
    QTest::newRow("other format") << QStringList{"restore", "FILE"}
                                  << QByteArray(R"({"format": "panomat-settings/2"})")
                                  << "expected \"panomat-settings/1\"";
    QTest::newRow("value out of range in file")
        << QStringList{"restore", "FILE"}
        << QByteArray(
               R"({"format": "panomat-settings/1", "controllers": [{"address": "127.67.0.2", "settings": {"brightness.a": 101}}]})")
        << "brightness.a";
    QTest::newRow("tile beyond the wall")
        << QStringList{"wall", "apply", "FILE"} << plan << "tile 5 is not on a 2 x 2 wall";
    QTest::newRow("missing file") << QStringList{"restore", "FILE"} << QByteArray()
#ifdef Q_OS_WIN // in the system's words, which differ between its versions
                                  << "in.json: ";
#else
                                  << "No such file";
#endif
    QTest::newRow("empty --host") << QStringList{"get", "--host", ""} << QByteArray()
                                  << "names an empty address";
    QTest::newRow("--host of commas")
        << QStringList{"get", "--host", ",,,"} << QByteArray() << "names an empty address";
    QTest::newRow("--host with an empty part")
        << QStringList{"get", "--host", "127.67.0.2,,127.67.0.3"} << QByteArray()
        << "names an empty address";
    QTest::newRow("--host 0.0.0.0") << QStringList{"send", "RVER", "--host", "0.0.0.0"}
                                    << QByteArray() << "not a dotted IPv4 address";
    QTest::newRow("0.0.0.0 in a settings file")
        << QStringList{"restore", "FILE"}
        << QByteArray(
               R"({"format": "panomat-settings/1", "controllers": [{"address": "0.0.0.0", "settings": {}}]})")
        << "\"0.0.0.0\" is not a controller address";
    QTest::newRow("127.1 in a plan, after a good address")
        << QStringList{"wall", "apply", "FILE"}
        << QByteArray(R"({"format": "panomat-wall-plan/1", "rows": 1, "cols": 2,
               "assignments": [{"address": "127.67.0.2", "output": "A", "tile": 1},
                               {"address": "127.1", "output": "A", "tile": 2}]})")
        << "\"127.1\" is not a controller address";
    QTest::newRow("restore --to 0.0.0.0")
        << QStringList{"restore", "FILE", "--to", "0.0.0.0"}
        << QByteArray(
               R"({"format": "panomat-settings/1", "controllers": [{"address": "127.67.0.2", "settings": {"hue.a": 5}}]})")
        << "--to: \"0.0.0.0\" is not a dotted IPv4 address";
    // Input files that are no files: refused by name at once, in bounded memory.
    for (const char* command : {"restore", "wall apply"})
        for (auto [kind, message] : {
#ifndef Q_OS_WIN // no FIFOs or devices among a Windows user's files
                 std::pair{"FIFO", "it is a FIFO, not a regular file"},
                 std::pair{"/dev/zero", "it is a character device"},
#endif
                 std::pair{"FOLDER", "it is a folder"},
                                     {"SPARSE", "larger than 16 MiB"}}) {
            QStringList arguments = QString(command).split(u' ');
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(command, kind)))
                << (arguments << "FILE") << QByteArray(kind) << "in.json: " + QString(message);
        }
}

void TestCtl::badInputSendsNothing() {
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, fileText);
    QFETCH(QString, message);
    const QByteArray in = QFile::encodeName(file("in.json"));
#ifndef Q_OS_WIN
    if (fileText == "FIFO")
        QCOMPARE(mkfifo(in.constData(), 0600), 0);
    else if (fileText == "/dev/zero")
        QVERIFY(QFile::link(fileText, in));
    else
#endif
    if (fileText == "FOLDER")
        QVERIFY(QDir(dir_->path()).mkdir("in.json"));
    else if (fileText == "SPARSE")
        QVERIFY(QFile(in).open(QIODevice::WriteOnly) && QFile::resize(in, 200 << 20));
    else if (!fileText.isEmpty())
        write("in.json", fileText);
    arguments.replaceInStrings(QStringLiteral("FILE"), file("in.json"));
    const Run run = ctl(arguments);
    QCOMPARE(run.exit, 2);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QCOMPARE(linesReceived(), 0);
}

void TestCtl::faultsAreNamedAndTheOthersDone_data() {
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("message");
    QTest::newRow("silent") << "silent"
                            << "127.67.0.3: no reply to RBRI 1 within 300 ms";
    QTest::newRow("closes") << "drop"
                            << "127.67.0.3: closed the connection";
    QTest::newRow("unreachable") << "stopped"
                                 << "127.67.0.3: Connection refused";
    QTest::newRow("wrong key") << "garbage"
                               << "127.67.0.3: answered RBRI 1 with ZZZZ\\x01\\r";
}

// One controller fails; the others are read and printed, and the exit status is 1.
void TestCtl::faultsAreNamedAndTheOthersDone() {
    QFETCH(QString, fault);
    QFETCH(QString, message);
#ifdef Q_OS_WIN
    if (fault == "drop" && underWine())
        QSKIP("under wine a connection the peer closed is not reported within the time-out");
#endif
    sim::VirtualController& second = *controllers_[1];
    sim::Faults faults;
    QTcpServer impostor;
    if (fault == "silent")
        faults.silent = {"RBRI"};
    if (fault == "drop")
        faults.dropAfter = 1;
    second.setFaults(faults);
    if (fault == "stopped" || fault == "garbage")
        second.stop();
    if (fault == "garbage") {
        QVERIFY(impostor.listen(QHostAddress(address(1)), 23));
        connect(&impostor, &QTcpServer::newConnection, this, [&impostor] {
            QTcpSocket* s = impostor.nextPendingConnection();
            connect(s, &QTcpSocket::readyRead, s, [s] { s->write("ZZZZ\x01\r\r\n"); });
        });
    }
    const Run run =
        ctl({"get", "brightness.a", "contrast.a", "--host", hosts(3), "--timeout", "300"});
    QCOMPARE(run.exit, 1);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(run.err.contains("1 of 3 controllers failed; the others are done"));
    for (int i : {0, 2})
        QCOMPARE(run.out.count(address(i)), 2);
}

void TestCtl::aCutRunIsReportedAsTheControllerHasIt_data() {
    QTest::addColumn<QString>("procedure");
    QTest::addColumn<int>("k");
    QTest::addColumn<QString>("deadline");
    for (int k : {1, 4, 8})
        QTest::addRow("restore, drop after write %d", k) << "restore" << k << QString();
    for (int k : {1, 4, 7})
        QTest::addRow("apply, drop after write %d", k) << "apply" << k << QString();
    QTest::newRow("restore, deadline") << "restore" << 0 << "1";
}

// The first controller drops after its k-th write, or answers each read just in time
// for its time-out but too slowly for the whole run's deadline. The report says of each
// setting what the controller holds.
void TestCtl::aCutRunIsReportedAsTheControllerHasIt() {
    QFETCH(QString, procedure);
    QFETCH(int, k);
    QFETCH(QString, deadline);
    sim::VirtualController& first = *controllers_[0];
    const sim::ControllerState before = first.state();
    QStringList arguments;
    QStringList names;
    if (procedure == "restore") {
        QCOMPARE(ctl({"backup", "-o", file("b.json"), "--host", address(0)}).exit, 0);
        sim::ControllerState changed = before;
        for (const char* family : {"brightness", "contrast", "saturation", "hue"})
            for (const char* output : {"a", "b", "c", "d"}) {
                names << QStringLiteral("%1.%2").arg(QLatin1String(family), QLatin1String(output));
                changed.set(names.last(), 11);
            }
        first.setState(changed);
        arguments = QStringList{"restore", file("b.json"), "--json"};
    } else {
        sim::ControllerState elsewhere = before;
        for (const char* output : {"a", "b", "c", "d"})
            elsewhere.set(QStringLiteral("wall.position.%1").arg(QLatin1String(output)), 16);
        first.setState(elsewhere);
        QCOMPARE(ctl({"wall", "plan", "--rows", "4", "--cols", "4", "--host", hosts(4), "-o",
                      file("p.json")})
                     .exit,
                 0);
        names =
            QStringList{"wall.position.a", "wall.position.b", "wall.position.c", "wall.position.d"};
        arguments = QStringList{"wall", "apply", file("p.json"), "--json"};
    }
    const sim::ControllerState sent = first.state();
    sim::Faults faults;
    faults.dropAfterWrites = k;
    faults.latencyMs = deadline.isEmpty() ? 0 : 150;
    first.setFaults(faults);
    if (!deadline.isEmpty())
        arguments << "--deadline" << deadline << "--timeout"
                  << "1000";
    const Run run = ctl(arguments);
    QCOMPARE(run.exit, 1);
    const QJsonArray report = QJsonDocument::fromJson(run.out.toUtf8()).array();
    QVERIFY2(!report.isEmpty(), qPrintable(run.out));
    const QJsonObject mine = report.first().toObject();
    QCOMPARE(mine.value("address").toString(), address(0));
    QMap<QString, QString> outcome;
    for (const QJsonValue& v : mine.value("settings").toArray())
        outcome.insert(v["name"].toString(), v["outcome"].toString());
    // A setting is called done exactly where the controller holds what was wanted.
    const QString done = procedure == "restore" ? "equal" : "written";
    int held = 0;
    for (const QString& name : names) {
        const bool holds = procedure == "restore" ? first.state().value(name) == before.value(name)
                                                  : first.state().value(name) != sent.value(name);
        QVERIFY2(holds == (outcome.value(name) == done),
                 qPrintable(name + ": " + outcome.value(name)));
        held += holds;
    }
    if (deadline.isEmpty())
        QCOMPARE(held, procedure == "restore" ? k : k / 2);
    else
        QVERIFY2(mine.value("failure").toString().endsWith("the deadline passed") && held == 0,
                 qPrintable(run.out));
    // The other controllers of the plan are done.
    for (qsizetype i = 1; i < report.size(); ++i)
        QVERIFY(report[i].toObject().value("done").toBool());
}

// Another user plants a link where the output goes in a shared folder: the file it
// points to stays as it was; the link is replaced by the new file.
void TestCtl::outputReplacesAPlantedLink_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("backup -o") << QStringList{"backup", "--host", address(0), "-o", "OUT"};
    QTest::newRow("wall plan -o") << QStringList{"wall", "plan",   "--rows",   "1",  "--cols",
                                                 "1",    "--host", address(0), "-o", "OUT"};
}

void TestCtl::outputReplacesAPlantedLink() {
#ifdef Q_OS_WIN
    QSKIP("Windows users plant no links without privilege");
#endif
    QFETCH(QStringList, arguments);
    QTemporaryDir elsewhere;
    QFile target(elsewhere.filePath("shadow"));
    QVERIFY(target.open(QIODevice::WriteOnly) && target.write("root:x") == 6);
    target.close();
    QVERIFY(target.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile::link(target.fileName(), file("out.json")));
    const Run run = ctl(arguments.replaceInStrings("OUT", file("out.json")));
    QVERIFY2(run.exit == 0, qPrintable(run.err));
    QVERIFY(target.open(QIODevice::ReadOnly));
    QCOMPARE(target.readAll(), QByteArray("root:x"));
    const QFileInfo written(file("out.json"));
    QVERIFY(written.isFile() && !written.isSymLink() && written.size() > 0);
}

// A script must learn that nothing came back: exit status 1, the controller named.
void TestCtl::sendWithoutAnAnswerFails_data() {
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("exit");
    QTest::newRow("answers") << "" << 0;
    QTest::newRow("silent") << "silent" << 1;
    QTest::newRow("closes without a word") << "close" << 1;
}

void TestCtl::sendWithoutAnAnswerFails() {
    QFETCH(QString, fault);
    QFETCH(int, exit);
    sim::Faults faults;
    if (!fault.isEmpty())
        faults.silent = {"RBRI"};
    if (fault == "close")
        faults.dropAfter = 1;
    controllers_[0]->setFaults(faults);
    const Run run = ctl({"send", "RBRI 1", "--host", address(0), "--wait", "300"});
    QCOMPARE(run.exit, exit);
    QCOMPARE(run.err.contains("127.67.0.2: no answer to RBRI 1 within 300 ms"), exit == 1);
    QCOMPARE(run.out.contains("127.67.0.2: BRI"), exit == 0);
}

// --all takes the addresses of the last search's IP.txt only where each field is an
// address in itself: read by value, "127.1" would become 127.1.0.0.
void TestCtl::allTakesOnlyPlainAddresses_data() {
    QTest::addColumn<QByteArray>("macs");
    QTest::addColumn<QByteArray>("ips");
    QTest::addColumn<QString>("refused"); // empty: read
    const QByteArray one = "02-00-7F-43-00-02\r\n";
    QTest::newRow("zero-padded") << one << QByteArray("127.067.000.002\r\n") << "";
    QTest::newRow("127.1") << one << QByteArray("127.1\r\n") << "\"127.1\" for controller 1";
    QTest::newRow("fewer addresses than MACs")
        << one + "02-00-7F-43-00-03\r\n"
        << QByteArray("127.067.000.002\r\n") << "\"\" for controller 2";
    QTest::newRow("0.0.0.0") << one << QByteArray("000.000.000.000\r\n")
                             << "\"000.000.000.000\" for controller 1";
    QTest::newRow("escape") << one << QByteArray("\x1b[2J.1.1.1\r\n")
                            << "\"\\x1b[2J.1.1.1\" for controller 1";
}

void TestCtl::allTakesOnlyPlainAddresses() {
    QFETCH(QByteArray, macs);
    QFETCH(QByteArray, ips);
    QFETCH(QString, refused);
    // A copy of the program alone in a folder keeps its search results there.
    const QString program = file(CtlName);
    QVERIFY(QFile::copy(QStringLiteral(PANOMAT_CTL), program));
    write("MAC.txt", macs);
    write("IP.txt", ips);
    const Run run = ctl({"get", "brightness.a", "--all", "--timeout", "1000"}, program);
    QCOMPARE(run.exit, refused.isEmpty() ? 0 : 2);
    QVERIFY2(refused.isEmpty() || run.err.contains(refused), qPrintable(run.err));
    QVERIFY(!run.err.contains(u'\x1b'));
    QCOMPARE(linesReceived(), refused.isEmpty() ? 1 : 0);
}

// A reply time-out is a promise to wait at least that long: a timer that fires a few per
// cent early gives a controller that answers just in time up for lost.
void TestCtl::timeOutsNeverFireEarly() {
    sim::Faults silent;
    silent.silent = {"RBRI"};
    controllers_[1]->setFaults(silent);
    for (int timeoutMs : {110, 230, 470, 950}) {
        ControllerClient client(address(1), timeoutMs);
        QElapsedTimer sent;
        qint64 waited = -1;
        connect(&client, &ControllerClient::wrote, this, [&] { sent.start(); });
        connect(&client, &ControllerClient::failed, this, [&] { waited = sent.elapsed(); });
        client.exchange("RBRI 1\r\n", "BRIR");
        client.begin();
        QTRY_VERIFY_WITH_TIMEOUT(waited >= 0, 5000);
        QVERIFY2(waited >= timeoutMs,
                 qPrintable(QStringLiteral("%1 ms for %2").arg(waited).arg(timeoutMs)));
    }
}

// --hosts replaces every configured list. What was probed is said on the error
// output, so that the table and the JSON stay alone on standard output.
void TestCtl::searchProbesTheGivenHosts_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exit");
    QTest::addColumn<QStringList>("found");
    QTest::addColumn<QString>("said");
    QTest::newRow("table") << QStringList{"--hosts", "127.67.0.1-127.67.0.3"} << 0
                           << QStringList{address(0), address(1)}
                           << "probing the host list ZEDA_HOSTS (3 hosts)\n";
    QTest::newRow("JSON, the option twice")
        << QStringList{"--json", "--hosts", address(2), "--hosts", address(3)} << 0
        << QStringList{address(2), address(3)} << "probing the host list ZEDA_HOSTS (2 hosts)\n";
    QTest::newRow("a blank list") << QStringList{"--hosts", " "} << 2 << QStringList{}
                                  << "panomat-ctl search: --hosts takes a list of hosts";
}

void TestCtl::searchProbesTheGivenHosts() {
    QFETCH(QStringList, arguments);
    QFETCH(int, exit);
    QFETCH(QStringList, found);
    QFETCH(QString, said);
    // The program and the search program alone in a folder, results kept beside.
    const QString program = file(CtlName);
    QVERIFY(QFile::copy(QStringLiteral(PANOMAT_CTL), program) &&
            QFile::copy(QStringLiteral(ZEDA_EXE), file("ZEDA.exe")));
    const Run run = ctl(QStringList{"search"} + arguments, program);
    QCOMPARE(run.exit, exit);
    QVERIFY2(run.err.contains(said), qPrintable(run.err));
    QVERIFY(!run.out.contains("probing"));
    QStringList listed;
    if (arguments.contains("--json")) {
        QJsonParseError error;
        const QJsonArray rows = QJsonDocument::fromJson(run.out.toUtf8(), &error).array();
        QCOMPARE(error.error, QJsonParseError::NoError);
        for (const QJsonValue& row : rows)
            listed << row.toObject().value("address").toString();
    } else {
        for (const QString& line : run.out.split(u'\n', Qt::SkipEmptyParts).mid(1))
            listed << line.section(u' ', 1, 1, QString::SectionSkipEmpty);
    }
    QCOMPARE(listed, found);
    QCOMPARE(QFile::exists(file("MAC.txt")), exit == 0);
}

// The search program's standard output is shown to the operator: bytes that would drive
// the terminal come escaped, a runaway line is cut, and an unfinished last line counts.
void TestCtl::searchLinesReachTheTerminalEscapedAndCut() {
#ifdef Q_OS_WIN
    QSKIP("the stand-in search program is a shell script");
#endif
    const QString program = file(CtlName);
    QVERIFY(QFile::copy(QStringLiteral(PANOMAT_CTL), program));
    write("ZEDA.exe", "#!/bin/sh\n"
                      "printf '\\033[2Jprobing\\r\\n'\n"
                      "head -c 100000 /dev/zero | tr '\\0' a\n"
                      "printf '\\nlast'\n"
                      ": >MAC.txt; : >IP.txt\n");
    QVERIFY(QFile::setPermissions(file("ZEDA.exe"), QFile::ReadOwner | QFile::ExeOwner));
    const Run run = ctl({"search", "--hosts", "127.67.0.1"}, program);
    QCOMPARE(run.exit, 0);
    QCOMPARE(run.err, "\\x1b[2Jprobing\n" + QString(200, u'a') + "\nlast\n");
}

QTEST_GUILESS_MAIN(TestCtl)
#include "test_ctl.moc"
