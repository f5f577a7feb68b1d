#include "support/bench.h"
#include "support/files.h"
#include "system/searchnetworks.h"

#include <QApplication>
#include <QPlainTextEdit>

namespace {

QString beside(const QString& name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

void write(const QString& name, const QByteArray& bytes) {
    if (!writeFile(beside(name), bytes))
        qFatal("cannot write %s", qPrintable(name));
}

// The search program, running `extra` first; and what it will find.
void prepare(const QByteArray& mac, const QByteArray& ip, const QByteArray& extra = {}) {
    write("ZEDA.exe", "#!/bin/sh\ncd \"$(dirname \"$0\")\"\n" + extra +
                          "[ -f MAC.next ] && cp MAC.next MAC.txt\n"
                          "[ -f IP.next ] && cp IP.next IP.txt\nexit 0\n");
    QFile::setPermissions(beside("ZEDA.exe"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (!mac.isNull())
        write("MAC.next", mac);
    if (!ip.isNull())
        write("IP.next", ip);
}

void search(Form1& form) {
    driver::click(form.ui.btn_sys_search);
}

} // namespace

// "Search MAC" with a stand-in search program beside the tool: it copies the result files the test
// prepared (MAC.next, IP.next) into place, as the real one writes what it found. Addresses in
// 127.11.0.0/16.
class TestDiscovery : public QObject {
    Q_OBJECT
private slots:
    void init() {
        for (const char* name :
             {"ZEDA.exe", "MAC.txt", "IP.txt", "MAC.next", "IP.next", "runs.log"})
            QFile::remove(beside(QLatin1String(name)));
    }

    // MACs are the lines' first 17 characters; addresses come from IP.txt's last line. Selecting
    // the first device connects it alone: "SOSDI", then the refresh.
    void searchFillsListsAndSelectsFirst() {
        Bench bench("127.11.1.1", 2);
        prepare("AA-BB-CC-DD-EE-01 and more\r\nAA-BB-CC-DD-EE-02\r\n",
                "an older line\r\n127.011.001.001127.011.001.002\r\n");
        search(bench.form);
        QComboBox* devices = bench.ui.cbo_ipaddr;
        QCOMPARE(devices->count(), 2);
        QCOMPARE(devices->itemText(0), QStringLiteral("AA-BB-CC-DD-EE-01"));
        QCOMPARE(devices->itemText(1), QStringLiteral("AA-BB-CC-DD-EE-02"));
        QCOMPARE(bench.form.services().addresses(), bench.addresses());
        QCOMPARE(bench.ui.cbo_model->count(), 2);
        QCOMPARE(bench.ui.cbo_model->itemText(1), QStringLiteral(" 1"));
        QCOMPARE(devices->currentIndex(), 0);
        QVERIFY(bench.ui.con_interface->isEnabled());
        QCOMPARE(bench.boxes.texts(),
                 (QStringList{"Search MAC completed !", "Refresh completed !"}));
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
        QCOMPARE(bench.lines(0).mid(0, 2), (QStringList{"SOSDI", "RPOW"}));
        QCOMPARE(bench.device(1).acceptedCount(), 0);
    }

    void searchFails_data() {
        QTest::addColumn<bool>("program");
        QTest::addColumn<QByteArray>("extra"); // what the program does first
        QTest::addColumn<QByteArray>("mac");   // null: no MAC.next
        QTest::addColumn<QByteArray>("ip");
        QTest::addColumn<QString>("message");
        const QByteArray none, empty(""), mac("AA-BB-CC-DD-EE-01\r\n"), ip("127.011.002.001\r\n");
        const QString dir = QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
        QTest::newRow("nothing found") << true << none << empty << empty << "Not Find MAC !";
        QTest::newRow("no search program")
            << false << none << none << none
            << QStringLiteral("Cannot find ZEDA.exe in %1 !").arg(dir);
        QTest::newRow("no MAC.txt")
            << true << none << none << ip << "ZEDA.exe left no readable MAC.txt !";
        QTest::newRow("no IP.txt")
            << true << none << mac << none << "ZEDA.exe left no readable IP.txt !";
        // Result files of an earlier search lie beside the tool: never listed.
        QTest::newRow("fails") << true << QByteArray("exit 3\n") << mac << ip
                               << "ZEDA.exe failed with exit code 3 !";
        QTest::newRow("is killed")
            << true << QByteArray("kill -KILL $$\n") << mac << ip << "ZEDA.exe ended abnormally !";
        // Whatever lies at a result file's name must be a result file to be read.
        QTest::newRow("MAC.txt a FIFO") << true << QByteArray("mkfifo MAC.txt\n") << none << ip
                                        << "ZEDA.exe left no readable MAC.txt !";
        QTest::newRow("IP.txt beyond its cap")
            << true << QByteArray("head -c 5000000 /dev/zero >IP.txt\n") << mac << none
            << "ZEDA.exe left no readable IP.txt !";
    }

    // The message names what is missing; nothing is listed, the model list is left as it was, and
    // the window goes on working.
    void searchFails() {
        QFETCH(bool, program);
        QFETCH(QByteArray, extra);
        QFETCH(QByteArray, mac);
        QFETCH(QByteArray, ip);
        QFETCH(QString, message);
        if (program)
            prepare(mac, ip, extra);
        write("MAC.txt", "AA-BB-CC-DD-EE-09\r\n");
        write("IP.txt", "127.011.009.009\r\n");
        MessageBoxAnswerer boxes;
        Form1 form;
        form.ui.cbo_model->addItem(QStringLiteral(" 0"));
        search(form);
        QCOMPARE(boxes.texts(), QStringList{message});
        QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
        QCOMPARE(form.ui.cbo_ipaddr->count(), 0);
        QCOMPARE(form.ui.cbo_model->count(), 1);
        QVERIFY(!form.ui.con_interface->isEnabled() && !form.services().searchDone());
        search(form);
        QCOMPARE(boxes.seen().size(), 2);
    }

    // Nothing listens at the address found: the search stays done, not torn down.
    void failedAutomaticSelectionKeepsWindow() {
        prepare("AA-BB-CC-DD-EE-01\r\n", "127.011.004.001\r\n");
        MessageBoxAnswerer boxes;
        Form1 form;
        search(form);
        QCOMPARE(boxes.texts(), (QStringList{"Search MAC completed !", "Connected error!"}));
        QVERIFY(form.services().searchDone() && form.ui.con_interface->isEnabled());
        QCOMPARE(form.ui.cbo_ipaddr->count(), 1);
    }

    void moreThan255DevicesKeepsFirst255() {
        Bench bench("127.11.5.1", 1);
        QByteArray mac, ip;
        for (int i = 1; i <= 300; ++i) {
            mac += QString::asprintf("02-00-7F-0B-%02x-%02x\r\n", i / 256, i % 256).toLatin1();
            ip += QString::asprintf("127.011.%03d.%03d", 5 + i / 256, i % 256).toLatin1();
        }
        prepare(mac, ip + "\r\n");
        search(bench.form);
        QCOMPARE(bench.ui.cbo_ipaddr->count(), 255);
        QCOMPARE(bench.form.services().addresses().size(), 255);
        QCOMPARE(bench.form.services().addresses().last(), QStringLiteral("127.11.5.255"));
        QCOMPARE(bench.ui.cbo_model->count(), 255);
        QCOMPARE(bench.boxes.texts().mid(0, 2),
                 (QStringList{"MAC.txt lists 300 devices; only the first 255 are shown !",
                              "Search MAC completed !"}));
    }

    void secondSearchWhileRunningDoesNothing() {
        prepare("", "", "echo run >> runs.log\nsleep 0.5\n");
        MessageBoxAnswerer boxes;
        Form1 form;
        // The second click comes while the first search's program runs.
        driver::when(
            &form, [] { return QFile::exists(beside("runs.log")); },
            [&form] { form.ui.btn_sys_search->click(); });
        search(form);
        QTest::qWait(700);
        QCOMPARE(readFile(beside("runs.log")), QByteArray("run\n"));
        QCOMPARE(boxes.texts(), QStringList{"Not Find MAC !"});
    }

    // The status bar names what is probed; "Stop waiting" cancels the search, and what the
    // program had written is not read.
    void cancelLeavesNoResultRead() {
        prepare({}, {},
                "printf 'AA-BB-CC-DD-EE-01\\r\\n' >MAC.txt\n"
                "printf '127.011.007.001\\r\\n' >IP.txt\nexec sleep 30\n");
        qputenv("ZEDA_HOSTS", "127.11.7.1");
        MessageBoxAnswerer boxes;
        Form1 form;
        auto* status = form.findChild<QLabel*>(QStringLiteral("wait_status"));
        QString shown;
        driver::when(
            &form, [&] { return !status->text().isEmpty(); },
            [&] {
                shown = status->text();
                form.StopWaiting();
            });
        search(form);
        qunsetenv("ZEDA_HOSTS");
        QTRY_COMPARE(boxes.texts(), QStringList{"The search was cancelled; nothing was read."});
        QVERIFY2(shown.startsWith(QStringLiteral("Search MAC: probing the environment variable "
                                                 "ZEDA_HOSTS for ")),
                 qPrintable(shown));
        QCOMPARE(form.ui.cbo_ipaddr->count(), 0);
        QVERIFY(!form.services().searchDone());
    }

    // File > Networks to search... writes the user's own list, refuses what is no host,
    // and goes back to the automatic search.
    void networksToSearchEditsTheUserList() {
        QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.filePath("user")));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(config.filePath("system")));
        const QString list = config.filePath("user/panomat-set/ZEDA.conf");
        MessageBoxAnswerer boxes;
        Form1 form;
        form.show();
        form.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QStringList sources;
        QByteArray saved;
        const auto open = [] {
            auto* dialog = qobject_cast<SearchNetworks*>(QApplication::activeModalWidget());
            return dialog && dialog->isVisible() ? dialog : nullptr;
        };
        driver::when(
            &form, [&] { return open() != nullptr; },
            [&] {
                SearchNetworks* dialog = open();
                const auto source = [dialog] {
                    return dialog->findChild<QLabel*>(QStringLiteral("search_source"))->text();
                };
                const auto press = [dialog](const char* name) {
                    QTest::mouseClick(dialog->findChild<QPushButton*>(QLatin1String(name)),
                                      Qt::LeftButton);
                };
                const auto type = [](const QStringList& lines) {
                    for (const QString& line : lines) {
                        QTest::keyClicks(QApplication::focusWidget(), line);
                        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                    }
                };
                auto* editor = dialog->findChild<QPlainTextEdit*>(QStringLiteral("search_list"));
                sources << source();
                driver::key(editor, Qt::Key_End);
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
                type({"192.0.2.7 # the lab", "192.0.2.0/30"});
                press("search_save");
                sources << source();
                saved = readFile(list);
                driver::key(editor, Qt::Key_End);
                type({"printer"});
                press("search_save");
                press("search_automatic");
                sources << source();
                dialog->reject();
            });
        QTest::keyClick(&form, Qt::Key_F, Qt::AltModifier);
        QVERIFY(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }));
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_N);
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CONFIG_DIRS");
        QCOMPARE(saved, QByteArray("192.0.2.7 # the lab\n192.0.2.0/30\n"));
        QCOMPARE(boxes.texts(), QStringList{"\"printer\" is not an address, a range or a network "
                                            "of at most a /16; the list was not saved."});
        QVERIFY(!QFile::exists(list));
        QCOMPARE(sources.size(), 3);
        QVERIFY2(sources[1].contains(QStringLiteral("your list %1").arg(list)),
                 qPrintable(sources[1]));
        QVERIFY2(sources[2].contains(QStringLiteral("the networks of this computer (automatic)")),
                 qPrintable(sources[2]));
    }
};

QTEST_MAIN(TestDiscovery)

#include "test_discovery.moc"
