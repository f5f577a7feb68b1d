#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

// Each test function uses its own addresses in 127.30.0.0/16.
namespace {

// Connected controllers answering the refresh, its traffic forgotten; the first is
// selected.
struct Wall {
    Wall(int subnet, int devices) {
        QStringList addresses;
        for (int i = 1; i <= devices; ++i) {
            addresses << QStringLiteral("127.30.%1.%2").arg(subnet).arg(i);
            fakes.push_back(std::make_unique<FakeController>(addresses.last()));
            fakes.back()->answerLikeController();
        }
        form.show();
        driver::connectTo(form, addresses);
        driver::click(form.ui.opt_tv2);
        for (auto& fake : fakes) {
            QTRY_COMPARE(fake->acceptedCount(), 1);
            fake->clear();
        }
        boxes.clear(); // the connect's own message
    }
    FakeController& device(int i = 0) { return *fakes[i]; }
    bool locked() { return !ui.frame_control[4]->isEnabled() && !ui.sys_setting->isEnabled(); }

    std::vector<std::unique_ptr<FakeController>> fakes;
    MessageBoxAnswerer boxes;
    Form1 form;
    Controls& ui = form.ui;
    WaitBytes& w = form.w;
};

// Pushes the chunks one at a time, each once the window has shown the one before
// (loopback would join small writes), calling before() ahead of each. Runs from within
// whatever wait is running.
void feed(Wall& wall, QList<QByteArray> chunks, std::function<void()> before) {
    before();
    const QByteArray chunk = chunks.takeFirst();
    wall.device().push(chunk);
    if (!chunks.isEmpty())
        driver::when(
            &wall.form, [&wall, chunk] { return wall.ui.TextInfo->text().toLatin1() == chunk; },
            [&wall, chunks, before] { feed(wall, chunks, before); });
}

} // namespace

class TestWall : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    void sendWaitsForEachAcknowledgement_data() {
        QTest::addColumn<bool>("allIp");
        QTest::newRow("selected only") << false;
        QTest::newRow("ALL IP") << true;
    }

    void sendWaitsForEachAcknowledgement() {
        QFETCH(bool, allIp);
        Wall wall(1, 3);
        driver::pick(wall.ui.cbo_tv_row, 15 - 1);
        driver::pick(wall.ui.cbo_tv_col, 15 - 1);
        driver::click(wall.ui.btn_panomat_send); // no channel yet: refused, nothing sent
        driver::pick(wall.ui.cbo_tv_ch, 2 - 1);
        QCOMPARE(wall.ui.cbo_tv_posi->count(), 225);
        QCOMPARE(wall.ui.cbo_tv_posi->itemText(224), QStringLiteral(" 225"));
        driver::pick(wall.ui.cbo_tv_row, 3 - 1);
        driver::type(wall.ui.cbo_tv_col, "4");
        driver::type(wall.ui.cbo_tv_posi, "13");   // "1" passes, "13" does not
        driver::type(wall.ui.cbo_tv_posi, "11.5"); // 12, rounded
        // A smaller wall drops the list's items but not the chosen tile.
        driver::pick(wall.ui.cbo_tv_row, 2 - 1);
        driver::pick(wall.ui.cbo_tv_col, 2 - 1);
        QCOMPARE(wall.ui.cbo_tv_posi->count(), 4);
        wall.ui.chk_tv_allip[0]->setChecked(allIp);
        // Only the selected controller answers; a "COCH" comes out of turn first.
        QList<int> linesAndStep;
        wall.device().reply("SMNC", [&](const QString&) {
            feed(wall, {"COCH001\r\n", "MNCM001\r\n"},
                 [&] { linesAndStep << int(wall.device().lines().size()) << wall.w.wait_wall; });
            return QByteArray();
        });
        wall.device().reply("SCO", "COCH001");
        driver::click(wall.ui.btn_panomat_send);
        QCOMPARE(linesAndStep, (QList<int>{1, 1, 1, 1}));
        QCOMPARE(wall.boxes.texts(),
                 (QStringList{"Please choose the correct values !", "Please type 1 ~ 12!"}));
        const QStringList lines = {"SMNC 2 2 2", "SCO 2 12"};
        for (int i = 0; i < 3; ++i)
            QTRY_COMPARE(wall.device(i).lines(), (allIp || i == 0) ? lines : QStringList());
    }

    // Rows typed, every keystroke checked; columns are 4.
    void typedSize_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("refusals");
        QTest::addColumn<int>("positions");
        QTest::newRow("2.5 to even") << "2.5" << 0 << 8;
        QTest::newRow("3.5 to even") << "3.5" << 0 << 16;
        QTest::newRow("15") << "15" << 0 << 60;
        QTest::newRow("16 after 1") << "16" << 1 << 4;
        QTest::newRow("0") << "0" << 1 << 0;
        QTest::newRow("letters") << "abc" << 3 << 0;
    }

    void typedSize() {
        QFETCH(QString, text);
        QFETCH(int, refusals);
        QFETCH(int, positions);
        Wall wall(2, 1);
        driver::pick(wall.ui.cbo_tv_col, 4 - 1);
        driver::type(wall.ui.cbo_tv_row, text);
        QCOMPARE(wall.boxes.texts(), QStringList(refusals, "Please type 1 ~ 15!"));
        QCOMPARE(wall.ui.cbo_tv_posi->count(), positions);
    }

    // Every handler checks the link first; one row each.
    void offlineRefusedWithoutSending_data() {
        QTest::addColumn<QString>("control");
        for (const char* control : {"btn_panomat_send", "btn_save(1)", "btn_recall(4)",
                                    "opt_ch4_bypass(0)", "btn_tv_fs(3)", "HS_A(0)", "btn_posi(1)"})
            QTest::newRow(control) << control;
    }

    void offlineRefusedWithoutSending() {
        QFETCH(QString, control);
        Wall wall(4, 2);
        wall.device().dropConnections();
        QTRY_VERIFY(!wall.form.session().linkUp());
        if (auto* bar = wall.form.findChild<QScrollBar*>(control))
            bar->setValue(100);
        else
            driver::click(driver::find<QAbstractButton>(wall.form, control));
        QCOMPARE(wall.boxes.texts(), QStringList{"Ethernet is disconnected !"});
        QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::Critical);
        QVERIFY(!wall.form.session().isConnected());
        QCOMPARE(wall.ui.value_posi[0]->text(), QStringLiteral("Value"));
        QCOMPARE(wall.w.wait_fav + wall.w.wait_hotkey + wall.w.wait_wall + wall.w.wait_posi, 0);
        QTest::qWait(30);
        QVERIFY(wall.device().lines().isEmpty() && wall.device(1).lines().isEmpty());
    }

    void saveAndRecall() {
        Wall wall(6, 2);
        driver::click(wall.ui.btn_save[3]);
        wall.ui.opt_ch4_bypass[1]->click(); // "OFF" sends 0, to every controller as well
        for (int i = 0; i < 2; ++i) {
            QTRY_COMPARE(wall.device(i).lines(), (QStringList{"SFAVE 3", "SBY 0"}));
            wall.device(i).clear();
        }
        // Only a stored slot's number releases the recall, whichever slot was asked for.
        QList<int> stepsWhileWrong;
        bool lockedWhileWaiting = false, lockedAtMessage = false;
        wall.device().reply("RFAVE", [&](const QString&) {
            lockedWhileWaiting = wall.locked() && wall.ui.ProgressBar1->isVisible();
            feed(wall, {"RFAV006\r\n", "RFAV\r\n", "MNCM001\r\n", "RFAV005\r\n"},
                 [&] { stepsWhileWrong << wall.w.wait_fav; });
            return QByteArray();
        });
        wall.device().reply("RBY", "BYPA001");
        // Looks at the window while the completion message is up, then closes it.
        wall.boxes.hold(true);
        driver::when(&wall.form, QApplication::activeModalWidget, [&] {
            lockedAtMessage = wall.locked() && wall.ui.ProgressBar1->value() == 100;
            wall.boxes.pressNow();
        });
        driver::click(wall.ui.btn_recall[2]);
        QVERIFY(lockedWhileWaiting && lockedAtMessage);
        QCOMPARE(stepsWhileWrong, (QList<int>{1, 1, 1, 1}));
        QCOMPARE(wall.boxes.texts(), QStringList{"Recall completed !"});
        QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::NoIcon);
        QVERIFY(!wall.locked() && wall.ui.ProgressBar1->isHidden() && !wall.w.wait_fav);
        QVERIFY(wall.ui.opt_ch4_bypass[0]->isChecked());
        QCOMPARE(wall.device().lines().mid(0, 4),
                 (QStringList{"RFAVE 2", "RBY", "RBEZ", "RCBH 1"}));
        QVERIFY(!wall.device().lines().contains("SBY 1")); // read, not sent back
        QCOMPARE(wall.device(1).lines(), QStringList{"RFAVE 2"});
    }

    void hotKey_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("allIp");
        QTest::addColumn<bool>("bypassOn"); // the controller's state, read back afterwards
        QTest::newRow("1x1") << 0 << false << true;
        QTest::newRow("6x3") << 23 << false << false;
        QTest::newRow("3x3 to all") << 2 << true << true;
    }

    void hotKey() {
        QFETCH(int, index);
        QFETCH(bool, allIp);
        QFETCH(bool, bypassOn);
        Wall wall(7, 3);
        wall.ui.Check1[2]->setChecked(allIp);
        wall.ui.opt_ch4_bypass[bypassOn ? 1 : 0]->setChecked(true);
        // The bezel reset's "WDEF" shares the reply handler, comes first and does not release.
        QList<int> seen; // lines sent and the step, ahead of each reply
        wall.device().reply("SHOT", [&](const QString&) {
            wall.w.wait_wall_default = 1;
            feed(wall, {"WDEF001\r\n", "HOTK001\r\n"},
                 [&] { seen << int(wall.device().lines().size()) << wall.w.wait_hotkey; });
            return QByteArray();
        });
        wall.device().reply("RBY", bypassOn ? "BYPA001" : "BYPA000");
        driver::click(wall.ui.btn_tv_fs[index]);
        QCOMPARE(seen, (QList<int>{1, 1, 1, 1}));
        QCOMPARE(wall.w.wait_hotkey + wall.w.wait_status, 0);
        QVERIFY(wall.ui.opt_ch4_bypass[bypassOn ? 0 : 1]->isChecked());
        QTest::qWait(30); // the option set by the read sends nothing
        const QString shot = QStringLiteral("SHOT %1").arg(index);
        QCOMPARE(wall.device().lines(), (QStringList{shot, "RBY"}));
        for (int i = 1; i < 3; ++i)
            QCOMPARE(wall.device(i).lines(), allIp ? QStringList{shot} : QStringList());
    }
};

QTEST_MAIN(TestWall)
#include "test_wall.moc"
