// The protocol catalogue: lines and replies byte for byte, values and their ranges,
// and command lines as the controller reads them.

#include "protocol/catalogue.h"
#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"
#include "protocol/wallplan.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>
#ifndef Q_OS_WIN
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace protocol;

namespace {

const QString NotApplied = QStringLiteral("value out of range, not applied");

const Setting& named(const QString& name) {
    const Setting* s = find(name);
    if (!s)
        qFatal("no setting %s", qPrintable(name));
    return *s;
}

QString namesOf(const QList<const Setting*>& settings) {
    QStringList names;
    for (const Setting* s : settings)
        names << s->name;
    return names.join(u' ');
}

// What the controller answers while its settings hold their factory values.
QByteArray factoryReply(const Request& q) {
    QList<Value> current;
    for (const Setting* s : q.settings)
        current << s->factory;
    return replyText(q, current);
}

// Rows named after their first two columns.
template <typename... More> void row(const QString& first, const QString& second, More... more) {
    const QString tag = QString(first + u' ' + second).replace("\r\n", "\\r\\n");
    ((QTest::newRow(qPrintable(tag)) << first << second) << ... << QString(more));
}

} // namespace

class TestProtocol : public QObject {
    Q_OBJECT
private slots:
    void lines_data();
    void lines();
    void placement();
    void replies_data();
    void replies();
    void values_data();
    void values();
    void roundTrips_data();
    void roundTrips();
    void controllerReads_data();
    void controllerReads();
    void addressesInFiles_data();
    void addressesInFiles();
    void readingFiles_data();
    void readingFiles();
    void writingOverAPlantedLink();
};

// Value empty: the read line. "!": the refusal.
void TestProtocol::lines_data() {
    for (const char* column : {"name", "value", "line", "ack"})
        QTest::addColumn<QString>(column);
    row("brightness.b", "57", "SBRI 2 57\r\n", "");
    row("contrast.c", "75", "SCON 3 75\r\n", "");
    row("resolution", "16", "SRES 16\r\n", "");
    row("osd.timeout", "2", "SOSDT 2\r\n", "");
    row("mute", "1", "SMUTE 1\r\n", "");
    row("bezel.mode", "0", "SBEZ 0\r\n", "");
    row("bezel.h.c", "255", "SCBH 3 255\r\n", "CBHC");
    row("bezel.v.a", "20", "SCBV 1 20\r\n", "CBVC");
    row("power", "1", "SPOW 1\r\n", "POWE");
    row("model", "2", "SMDN 2\r\n", "");
    row("network.mode", "0", "SIPM 0\r\n", "IPMD");
    row("network.address", "127.40.1.10", "SIPA 127.040.001.010\r\n", "IPA0");
    row("network.mask", "255.255.255.0", "SMAA 255.255.255.000\r\n", "MAA0");
    row("network.gateway", "127.40.1.1", "SGAA 127.040.001.001\r\n", "GAA0");
    // Trims: the sign in the keyword, the magnitude after two blanks; zero is plus.
    row("trim.h_start.b", "-55", "SMCHS  2 55\r\n", "");
    row("trim.h_end.b", "45", "SPCHE  2 45\r\n", "");
    row("trim.v_end.a", "-255", "SMCVE  1 255\r\n", "");
    row("trim.v_start.d", "0", "SPCVS  4 0\r\n", "");
    row("power", "", "RPOW\r\n", "");
    row("saturation.d", "", "RSAT 4\r\n", "");
    row("bezel.v.b", "", "RCBV 2\r\n", "");
    row("trim.v_end.d", "", "RCVE 4\r\n", "");
    row("network.gateway", "", "RLINK\r\n", "");
    row("wall.position.a", "", "", "");
    row("firmware", "103", "!firmware cannot be written", "");
    row("brightness.a", "101", "!brightness.a takes 0..100 %, not 101", "");
    row("wall.rows", "3",
        "!wall.rows is written with the wall placement: rows, columns and the tile of one output "
        "together",
        "");
}

void TestProtocol::lines() {
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, line);
    QFETCH(QString, ack);
    const Setting& s = named(name);
    if (value.isEmpty()) {
        QCOMPARE(readLine(s), line.toLatin1());
        return;
    }
    const Value v = s.kind == Kind::Address ? *parseValue(s, value) : value.toLongLong();
    const Result<Write> w = writeLine(s, v);
    QCOMPARE(w ? QString::fromLatin1(w->line + w->ack) : u'!' + w.error, line + ack);
}

void TestProtocol::placement() {
    const Result<QList<Write>> w = placementLines(3, 4, 2, 7);
    QVERIFY2(w, qPrintable(w.error));
    QCOMPARE(w->size(), 2);
    QCOMPARE(w->at(0).line + w->at(0).ack + w->at(1).line + w->at(1).ack,
             QByteArray("SMNC 3 4 2\r\nMNCMSCO 2 7\r\nCOCH"));
    QCOMPARE(placementLines(3, 4, 1, 13).error, "a wall of 3 x 4 has tiles 1..12, not 13");
    QCOMPARE(placementLines(16, 1, 1, 1).error, "wall.rows takes 1..15, not 16");
    QCOMPARE(placementLines(2, 2, 5, 1).error, "no output 5");
}

// The value read, or "!" and the start of the error.
void TestProtocol::replies_data() {
    for (const char* column : {"name", "chunk", "want"})
        QTest::addColumn<QString>(column);
    row("power", "POWE001\r\nMODN002\r\n", "1"); // the first reply of a chunk
    row("firmware", "VERS102\r\n", "102");
    row("resolution", "RESO016", "16");
    row("osd.timeout", "OSDT010", "10");
    row("mute", "MUTE001", "1");
    row("model", "POWE001", "!expected MODN");
    row("model", "MODN1\r\n", "!no three-digit value");
    row("osd.timeout", "OSDT001", "!osd.timeout takes 2..50 s, not 1");
    // Picture and bezel by their second key; characters 1-7 are not read.
    row("brightness.a", "BRIR001BRIV050\r\n", "50");
    row("brightness.a", "xxxxxxxBRIV080", "80");
    row("brightness.a", "BRIV080", "!expected BRIV");
    row("hue.c", "HUER003HUEV101", "!hue.c takes 0..100 %");
    row("bezel.h.a", "CBHR001CBHV007", "7");
    row("bezel.h.a", "CBVR001CBVV007", "!expected CBHV");
    // Trims by their first key; any second key but the plus one means minus.
    row("trim.h_start.c", "CHSCabcPHSV012", "12");
    row("trim.h_start.a", "CHSC001MHSV055\r\n", "-55");
    row("trim.v_end.b", "CVEC002PHSV009", "-9");
    row("trim.h_end.b", "CHSC002PHSV009", "!expected CHEC");
    const QString block = "IP00127IP01040IP02001IP03010MA00255MA01255MA02255MA03000"
                          "GA00127GA01040GA02001GA03001\r\n";
    row("network.address", block, "127.40.1.10");
    row("network.mask", block, "255.255.255.0");
    row("network.gateway", block, "127.40.1.1");
    row("network.gateway", block.left(70), "!no octet 3 of network.gateway");
    row("wall.cols", "MNCM", "!wall.cols cannot be read");
}

void TestProtocol::replies() {
    QFETCH(QString, name);
    QFETCH(QString, chunk);
    QFETCH(QString, want);
    const Setting& s = named(name);
    const Result<Value> v = parseReply(s, chunk.toLatin1());
    const QString got = v ? valueText(s, *v) : u'!' + v.error;
    QVERIFY2(got.startsWith(want) && (want.startsWith(u'!') || got == want), qPrintable(got));
}

// Typed values: their normal form, "!" and the message, or "?" for no such setting.
void TestProtocol::values_data() {
    for (const char* column : {"name", "text", "want"})
        QTest::addColumn<QString>(column);
    row("osd.h_offset", "20", "20");
    row("contrast.d", " 007 ", "7");
    row("trim.h_end.c", "-255", "-255");
    row("osd.timeout", "51", "!osd.timeout takes 2..50 s, not 51");
    row("trim.h_end.c", "-256", "!trim.h_end.c takes -255..255 step, not -256");
    row("brightness.a", "3.7", "!brightness.a takes a whole number 0..100 %, not '3.7'");
    row("model", "abc", "!model takes a whole number 0..255, not 'abc'");
    row("network.address", "127.020.001.099", "127.20.1.99");
    row("network.mask", "255.255.0", "!network.mask takes a dotted IPv4 address, not '255.255.0'");
    row("network.gateway", "127.0.0.256",
        "!network.gateway takes a dotted IPv4 address, not '127.0.0.256'");
    row("brightness.e", "1", "?");
    row("brightness", "1", "?");
    row("Power", "1", "?");
}

void TestProtocol::values() {
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, want);
    const Setting* s = find(name);
    QCOMPARE(s == nullptr, want == u'?');
    if (!s)
        return;
    const Result<Value> v = parseValue(*s, text);
    QCOMPARE(v ? valueText(*s, *v) : u'!' + v.error, want);
}

// Every setting at its ends and its factory value: the controller's answer to the read
// line reads back as that value, and the write line sets it.
void TestProtocol::roundTrips_data() {
    QTest::addColumn<QString>("name");
    for (const Setting& s : settings())
        QTest::newRow(qPrintable(s.name)) << s.name;
}

void TestProtocol::roundTrips() {
    QFETCH(QString, name);
    const Setting& s = named(name);
    QVERIFY(s.readable() || s.writable());
    QVERIFY2(rangeError(s, s.factory).isEmpty(), qPrintable(rangeError(s, s.factory)));
    for (const Value v : {s.min, s.max, s.factory}) {
        if (s.readable()) {
            const Request q = parseCommand(readLine(s));
            QVERIFY(q.settings.contains(&s));
            QList<Value> current;
            for (const Setting* each : q.settings)
                current << (each == &s ? v : each->factory);
            const Result<Value> back = parseReply(s, replyText(q, current));
            QVERIFY2(back, qPrintable(back.error));
            QCOMPARE(*back, v);
        }
        if (s.writable() && s.group != Group::Wall) {
            const Result<Write> w = writeLine(s, v);
            QVERIFY2(w, qPrintable(w.error));
            const Request q = parseCommand(w->line);
            QVERIFY2(q.command && q.applies, qPrintable(q.note));
            QCOMPARE(namesOf(q.settings), s.name);
            QCOMPARE(q.values, QList<Value>{v});
            QCOMPARE(factoryReply(q).left(4), w->ack);
        }
    }
}

// A line as the controller reads it: the settings it reads, writes or resets, their new
// values where they apply, the note (any but NotApplied refuses the line) and the reply
// while every setting holds its factory value.
void TestProtocol::controllerReads_data() {
    for (const char* column : {"line", "settings", "values", "note", "reply"})
        QTest::addColumn<QString>(column);
    row("RCBH 4", "bezel.h.d", "", "", "CBHR004CBHV010\r\n");
    row("rchs 2", "trim.h_start.b", "", "", "CHSC002PHSV000\r\n");
    row("RLINK", "network.address network.mask network.gateway", "", "",
        "IP00000IP01000IP02000IP03000MA00255MA01000MA02000MA03000GA00127GA01000GA02000GA03001\r\n");
    row("SBRI 1 3.7", "brightness.a", "3", "", "");
    row("  SMCHS  1   55 ", "trim.h_start.a", "-55", "", "");
    row("SPCHS 1 -5", "trim.h_start.a", "", NotApplied, "");
    row("SPOW 2", "power", "", NotApplied, "POWE001\r\n");
    row("SCBH 2 -1", "bezel.h.b", "", NotApplied, "CBHC002\r\n");
    row("SMNC 3 4 5", "wall.rows wall.cols", "", NotApplied, "MNCM\r\n");
    row("SCO 2 7", "wall.position.b", "7", "", "COCH\r\n");
    row("SIPA 127.020.1.256", "network.address", "", NotApplied, "IPA0\r\n");
    row("SOSDR", "resolution osd.display osd.timeout osd.h_offset osd.v_offset osd.gain mute",
        "6 0 2 5 5 2 0", "", "OSDR\r\n");
    row("SIMRE 3", "saturation.a saturation.b saturation.c saturation.d", "50 50 50 50", "",
        "IMRE\r\n");
    row("SIMRE 5", "", "", NotApplied, "IMRE\r\n");
    row("SWDE", "bezel.h.a bezel.h.b bezel.h.c bezel.h.d bezel.v.a bezel.v.b bezel.v.c bezel.v.d",
        "10 10 10 10 10 10 10 10", "", "WDEF\r\n");
    row("RFAVE 3", "", "", "", "RFAV003\r\n");
    row("SHOT 24", "", "", NotApplied, "HOTK\r\n");
    row("RBRI 5", "", "", "no output 5", "");
    row("SFAVE 6", "", "", "no such favourite slot", "");
    row("SBRI 1", "", "", "missing or bad argument 2", "");
    row("SGAA", "", "", "missing address", "");
    row("XYZ 1", "", "", "unknown command", "");
}

void TestProtocol::controllerReads() {
    QFETCH(QString, line);
    QFETCH(QString, settings);
    QFETCH(QString, values);
    QFETCH(QString, note);
    QFETCH(QString, reply);
    const Request q = parseCommand(line.toLatin1());
    QCOMPARE(q.note, note);
    QCOMPARE(namesOf(q.settings), settings);
    QCOMPARE(q.command == nullptr, !note.isEmpty() && note != NotApplied);
    if (!q.command)
        return;
    QCOMPARE(q.applies, note.isEmpty());
    if (q.applies && q.command->effect != Effect::Read) {
        QStringList texts;
        for (Value v : q.values)
            texts << QString::number(v);
        QCOMPARE(texts.join(u' '), values);
    }
    QCOMPARE(factoryReply(q), reply.toLatin1());
}

// A settings file or plan names controllers by plain dotted addresses only: anything
// else would be looked up by name or read as another address by the system.
void TestProtocol::addressesInFiles_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("taken");
    for (const char* good : {"127.0.0.2", "192.168.1.20", "255.255.255.255", "10.0.0.0"})
        QTest::newRow(good) << QString(good) << true;
    for (const char* bad : {"0.0.0.0", "127.1", "010.0.0.1", "127.0.0.256", "127.0.0.2 ",
                            "1.2.3.4.5", "1..2.3", "localhost", "1234.0.0.1", "0x7f.0.0.1"})
        QTest::newRow(bad) << QString(bad) << false;
    QTest::newRow("other digits") << QStringLiteral("127.0.0.\u0662") << false;
    QTest::newRow("escape") << QStringLiteral("\x1b[2J") << false;
}

void TestProtocol::addressesInFiles() {
    QFETCH(QString, address);
    QFETCH(bool, taken);
    QString error;
    const QJsonArray controllers{QJsonObject{{"address", address}, {"settings", QJsonObject{}}}};
    const bool settings =
        settingsfile::fromJson({{"controllers", controllers}}, &error).has_value();
    QCOMPARE(settings, taken);
    QVERIFY(taken || (error.contains("is not a controller address") && !error.contains(u'\x1b')));
    const QJsonArray assignments{QJsonObject{{"address", address}, {"output", "A"}, {"tile", 1}}};
    const bool plan =
        wallplan::fromJson({{"rows", 1}, {"cols", 1}, {"assignments", assignments}}, &error)
            .has_value();
    QCOMPARE(plan, taken);
}

// Whatever path names, reading ends at once with a named reason or the file's text,
// and never holds more than the cap.
void TestProtocol::readingFiles_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("message"); // empty: read
    QTest::newRow("regular") << "regular"
                             << "";
    QTest::newRow("folder") << "folder"
                            << "it is a folder";
    QTest::newRow("17 MiB") << "large"
                            << "larger than 16 MiB";
#ifndef Q_OS_WIN // links, FIFOs and devices are Linux's; so is the wording of errno
    QTest::newRow("link to a regular file") << "link"
                                            << "";
    QTest::newRow("FIFO") << "fifo"
                          << "it is a FIFO, not a regular file";
    QTest::newRow("/dev/zero") << "zero"
                               << "it is a character device, not a regular file";
    QTest::newRow("missing") << "missing"
                             << "No such file or directory";
#endif
}

void TestProtocol::readingFiles() {
    QFETCH(QString, kind);
    QFETCH(QString, message);
    QTemporaryDir dir;
    const QString path = dir.filePath("in.json");
    const QString real = dir.filePath("real.json");
    QFile text(kind == "link" ? real : path);
    if (kind == "regular" || kind == "link" || kind == "large")
        QVERIFY(text.open(QIODevice::WriteOnly) &&
                text.write(R"({"format": "panomat-wall-plan/1"})") > 0 &&
                (kind != "large" || text.resize(17 << 20)));
    text.close();
    if (kind == "link")
        QVERIFY(QFile::link(real, path));
#ifndef Q_OS_WIN
    if (kind == "fifo")
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
#endif
    if (kind == "zero")
        QVERIFY(QFile::link("/dev/zero", path));
    if (kind == "folder")
        QVERIFY(QDir(dir.path()).mkdir("in.json"));
    QString error;
    const auto object = jsonfile::read(path, wallplan::Format, &error);
    QCOMPARE(object.has_value(), message.isEmpty());
    if (!message.isEmpty())
        QCOMPARE(error, path + ": " + message);
}

// Another user plants a link where a backup or plan is saved: the file it points to
// stays as it was, and the link is replaced by the new file. A private file stays
// private when it is saved again.
void TestProtocol::writingOverAPlantedLink() {
#ifdef Q_OS_WIN
    QSKIP("Windows users plant no links without privilege");
#endif
    QTemporaryDir dir, elsewhere;
    const QString secret = elsewhere.filePath("shadow");
    QFile target(secret);
    QVERIFY(target.open(QIODevice::WriteOnly) && target.write("root:x") == 6);
    target.close();
    QVERIFY(target.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    const QString path = dir.filePath("plan.json");
    QVERIFY(QFile::link(secret, path));
    QString error;
    const wallplan::Plan plan{2, 2, {}};
    QVERIFY2(jsonfile::write(path, wallplan::toJson(plan), &error), qPrintable(error));
    QVERIFY(target.open(QIODevice::ReadOnly));
    QCOMPARE(target.readAll(), QByteArray("root:x"));
    target.close();
    QVERIFY(!QFileInfo(path).isSymLink() && QFileInfo(path).isFile());
    QVERIFY2(jsonfile::read(path, wallplan::Format, &error), qPrintable(error));

    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY2(jsonfile::write(path, wallplan::toJson(plan), &error), qPrintable(error));
    QCOMPARE(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser),
             QFile::ReadOwner | QFile::WriteOwner);
    // Nothing but the file is left in the folder.
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"plan.json"});
    QVERIFY(
        !jsonfile::write(dir.filePath("no/such/folder/plan.json"), wallplan::toJson(plan), &error));
    QVERIFY(error.startsWith(dir.filePath("no/such/folder/plan.json") + ": "));
}

QTEST_GUILESS_MAIN(TestProtocol)
#include "test_protocol.moc"
