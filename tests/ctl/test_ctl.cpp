// panomat-ctl as a whole program against virtual controllers in this process.

#include "virtualcontroller.h"

#include <QDeadlineTimer>
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

namespace {

struct Run {
    int exit = -1;
    QString out;
    QString err;
};

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

private:
    // Runs panomat-ctl while this process's controllers answer it.
    Run ctl(const QStringList& arguments);
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

Run TestCtl::ctl(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral(PANOMAT_CTL), arguments);
    // The controllers answer from this process's event loop while the program runs.
    QDeadlineTimer deadline(30000);
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired())
        QTest::qWait(5);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
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
                                  << "No such file";
}

void TestCtl::badInputSendsNothing() {
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, fileText);
    QFETCH(QString, message);
    if (!fileText.isEmpty())
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
        names = QStringList{"wall.position.a", "wall.position.b", "wall.position.c",
                            "wall.position.d"};
        arguments = QStringList{"wall", "apply", file("p.json"), "--json"};
    }
    const sim::ControllerState sent = first.state();
    sim::Faults faults;
    faults.dropAfterWrites = k;
    faults.latencyMs = deadline.isEmpty() ? 0 : 150;
    first.setFaults(faults);
    if (!deadline.isEmpty())
        arguments << "--deadline" << deadline << "--timeout" << "1000";
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
        const bool holds = procedure == "restore"
                               ? first.state().value(name) == before.value(name)
                               : first.state().value(name) != sent.value(name);
        QVERIFY2(holds == (outcome.value(name) == done), qPrintable(name + ": " + outcome.value(name)));
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

QTEST_GUILESS_MAIN(TestCtl)
#include "test_ctl.moc"
