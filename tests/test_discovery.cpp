#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QPushButton>
#include <QTest>

using driver::find;

// A stand-in search program: it copies the result files the test prepared (MAC.next,
// IP.next) into place, as the real one writes what it found. Addresses in 127.11.0.0/16.
class TestDiscovery : public QObject {
    Q_OBJECT
private slots:
    void init();
    void searchFillsListsAndSelectsFirst();
    void emptyResultFindsNothing();
    void missingFiles_data();
    void missingFiles();
    void staleResultsAreNeverListed_data();
    void staleResultsAreNeverListed();
    void failedAutomaticSelectionKeepsWindow();
    void moreThan255DevicesKeepsFirst255();
    void secondSearchWhileRunningDoesNothing();

private:
    static QString beside(const QString& name) {
        return QDir(QCoreApplication::applicationDirPath()).filePath(name);
    }
    static void writeFile(const QString& name, const QByteArray& bytes) {
        QFile file(beside(name));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }
    static void writeSearchProgram(const QByteArray& extra = {}) {
        writeFile(QStringLiteral("ZEDA.exe"), "#!/bin/sh\ncd \"$(dirname \"$0\")\"\n" + extra +
                                                  "[ -f MAC.next ] && cp MAC.next MAC.txt\n"
                                                  "[ -f IP.next ] && cp IP.next IP.txt\nexit 0\n");
        QFile::setPermissions(beside(QStringLiteral("ZEDA.exe")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    static void prepareResult(const QByteArray& mac, const QByteArray& ip) {
        writeFile(QStringLiteral("MAC.next"), mac);
        writeFile(QStringLiteral("IP.next"), ip);
    }
    static void search(Form1& form) {
        driver::click(find<QPushButton>(form, QStringLiteral("btn_sys_search")));
    }
};

void TestDiscovery::init() {
    for (const char* name : {"ZEDA.exe", "MAC.txt", "IP.txt", "MAC.next", "IP.next", "runs.log"})
        QFile::remove(beside(QLatin1String(name)));
}

void TestDiscovery::searchFillsListsAndSelectsFirst() {
    FakeController first(QStringLiteral("127.11.1.1"));
    FakeController second(QStringLiteral("127.11.1.2"));
    first.answerLikeController();
    writeSearchProgram();
    prepareResult("AA-BB-CC-DD-EE-01 and more\r\nAA-BB-CC-DD-EE-02\r\n",
                  "an older line\r\n127.011.001.001127.011.001.002\r\n");
    MessageBoxAnswerer boxes;
    Form1 form;
    search(form);

    QComboBox* devices = form.ui.cbo_ipaddr;
    QCOMPARE(devices->count(), 2);
    QCOMPARE(devices->itemText(0), QStringLiteral("AA-BB-CC-DD-EE-01"));
    QCOMPARE(devices->itemText(1), QStringLiteral("AA-BB-CC-DD-EE-02"));
    QCOMPARE(form.session().addresses(), (QStringList{"127.11.1.1", "127.11.1.2"}));
    QCOMPARE(form.ui.cbo_model->count(), 2);
    QCOMPARE(form.ui.cbo_model->itemText(1), QStringLiteral(" 1"));
    QCOMPARE(devices->currentIndex(), 0);
    QVERIFY(find<QGroupBox>(form, QStringLiteral("con_interface"))->isEnabled());
    QVERIFY(form.session().searchDone());
    QCOMPARE(boxes.texts(), (QStringList{"Search MAC completed !", "Refresh completed !"}));
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Information);
    // Selecting the first device reconnects it alone: OSD info, then the refresh.
    QCOMPARE(first.lines().value(0), QStringLiteral("SOSDI"));
    QCOMPARE(first.lines().value(1), QStringLiteral("RPOW"));
    QCOMPARE(second.acceptedCount(), 0);
}

void TestDiscovery::emptyResultFindsNothing() {
    writeSearchProgram();
    prepareResult("", "");
    MessageBoxAnswerer boxes;
    Form1 form;
    form.ui.cbo_model->addItem(QStringLiteral(" 0"));
    search(form);
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Not Find MAC !")});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
    QCOMPARE(form.ui.cbo_ipaddr->count(), 0);
    QCOMPARE(form.ui.cbo_model->count(), 1); // left as it was
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("con_interface"))->isEnabled());
    QVERIFY(!form.session().searchDone());
}

void TestDiscovery::missingFiles_data() {
    QTest::addColumn<bool>("program");
    QTest::addColumn<QByteArray>("mac");
    QTest::addColumn<QByteArray>("ip");
    QTest::addColumn<QString>("named");
    QTest::newRow("no search program") << false << QByteArray() << QByteArray() << "ZEDA.exe";
    QTest::newRow("no MAC.txt") << true << QByteArray() << QByteArray("127.011.002.001\r\n")
                                << "MAC.txt";
    QTest::newRow("no IP.txt") << true << QByteArray("AA-BB-CC-DD-EE-01\r\n") << QByteArray()
                               << "IP.txt";
}

void TestDiscovery::missingFiles() {
    QFETCH(bool, program);
    QFETCH(QByteArray, mac);
    QFETCH(QByteArray, ip);
    QFETCH(QString, named);
    if (program)
        writeSearchProgram();
    if (!mac.isEmpty())
        writeFile(QStringLiteral("MAC.next"), mac);
    if (!ip.isEmpty())
        writeFile(QStringLiteral("IP.next"), ip);
    MessageBoxAnswerer boxes;
    Form1 form;
    search(form);
    QCOMPARE(boxes.seen().size(), 1);
    QVERIFY2(boxes.texts().first().contains(named), qPrintable(boxes.texts().first()));
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("con_interface"))->isEnabled());
    search(form); // and the window goes on working
    QCOMPARE(boxes.seen().size(), 2);
}

// Result files of an earlier search lie beside the tool; this run's program leaves
// none, or fails.
void TestDiscovery::staleResultsAreNeverListed_data() {
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("message");
    QTest::newRow("writes nothing") << QByteArray() << "ZEDA.exe left no readable MAC.txt !";
    QTest::newRow("fails") << QByteArray("exit 3\n") << "ZEDA.exe failed with exit code 3 !";
    QTest::newRow("is killed") << QByteArray("kill -KILL $$\n") << "ZEDA.exe ended abnormally !";
}

void TestDiscovery::staleResultsAreNeverListed() {
    QFETCH(QByteArray, program);
    QFETCH(QString, message);
    writeSearchProgram(program);
    writeFile(QStringLiteral("MAC.txt"), "AA-BB-CC-DD-EE-09\r\n");
    writeFile(QStringLiteral("IP.txt"), "127.011.009.009\r\n");
    MessageBoxAnswerer boxes;
    Form1 form;
    search(form);
    QCOMPARE(boxes.texts(), QStringList{message});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
    QCOMPARE(form.ui.cbo_ipaddr->count(), 0);
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("con_interface"))->isEnabled());
}

void TestDiscovery::failedAutomaticSelectionKeepsWindow() {
    writeSearchProgram();
    prepareResult("AA-BB-CC-DD-EE-01\r\n", "127.011.004.001\r\n"); // nothing listens there
    MessageBoxAnswerer boxes;
    Form1 form;
    search(form);
    QCOMPARE(boxes.texts(), (QStringList{"Search MAC completed !", "Connected error!"}));
    QVERIFY(form.session().searchDone()); // not torn down by SetOffline
    QVERIFY(find<QGroupBox>(form, QStringLiteral("con_interface"))->isEnabled());
    QCOMPARE(form.ui.cbo_ipaddr->count(), 1);
}

void TestDiscovery::moreThan255DevicesKeepsFirst255() {
    FakeController first(QStringLiteral("127.11.5.1"));
    first.answerLikeController();
    QByteArray mac, ip;
    for (int i = 1; i <= 300; ++i) {
        mac += QStringLiteral("02-00-7F-0B-%1-%2\r\n")
                   .arg(i / 256, 2, 16, QLatin1Char('0'))
                   .arg(i % 256, 2, 16, QLatin1Char('0'))
                   .toLatin1();
        ip += QStringLiteral("127.011.%1.%2")
                  .arg(5 + i / 256, 3, 10, QLatin1Char('0'))
                  .arg(i % 256, 3, 10, QLatin1Char('0'))
                  .toLatin1();
    }
    writeSearchProgram();
    prepareResult(mac, ip + "\r\n");
    MessageBoxAnswerer boxes;
    Form1 form;
    search(form);
    QCOMPARE(form.ui.cbo_ipaddr->count(), 255);
    QCOMPARE(form.session().addresses().size(), 255);
    QCOMPARE(form.session().addresses().last(), QStringLiteral("127.11.5.255"));
    QCOMPARE(form.ui.cbo_model->count(), 255);
    QVERIFY(boxes.texts().first().contains(QStringLiteral("255")));
    QVERIFY(boxes.texts().contains(QStringLiteral("Search MAC completed !")));
}

void TestDiscovery::secondSearchWhileRunningDoesNothing() {
    writeSearchProgram("echo run >> runs.log\nsleep 0.5\n");
    prepareResult("", "");
    MessageBoxAnswerer boxes;
    Form1 form;
    auto* button = find<QPushButton>(form, QStringLiteral("btn_sys_search"));
    // The second click comes while the first search's program runs.
    driver::when(
        &form, [] { return QFile::exists(beside(QStringLiteral("runs.log"))); },
        [button] { button->click(); });
    driver::click(button);
    QTest::qWait(700);
    QFile log(beside(QStringLiteral("runs.log")));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(log.readAll(), QByteArray("run\n"));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Not Find MAC !")});
    QCOMPARE(boxes.seen().size(), 1);
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestDiscovery test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_discovery.moc"
