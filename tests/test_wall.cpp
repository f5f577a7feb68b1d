#include "simulator.h"
#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using driver::find;

// Each test function uses its own addresses in 127.30.0.0/16.
namespace {

// Connected controllers answering the refresh, the refresh's traffic forgotten. The
// first is selected; the window shows the page of selector.
struct Wall {
    Wall(int subnet, const char* selector, int devices = 1) {
        QStringList addresses;
        for (int i = 1; i <= devices; ++i) {
            fakes.push_back(std::make_unique<FakeController>(
                QStringLiteral("127.30.%1.%2").arg(subnet).arg(i)));
            fakes.back()->answerLikeController();
            addresses << fakes.back()->address();
        }
        form.show();
        driver::connectTo(form, addresses);
        driver::click(find<QRadioButton>(form, QLatin1String(selector)));
        for (auto& fake : fakes) {
            QTRY_COMPARE(fake->acceptedCount(), 1);
            fake->clear();
        }
        boxes.clear();
    }
    FakeController& device(int i = 0) { return *fakes[i]; }
    void press(const QString& name) {
        auto* button = find<QAbstractButton>(form, name);
        // An option button takes clicks on its mark and caption only.
        if (qobject_cast<QRadioButton*>(button))
            QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2));
        else
            driver::click(button);
    }
    void choose(int rows, int cols, int channel) {
        driver::pick(form.ui.cbo_tv_row, rows - 1);
        driver::pick(form.ui.cbo_tv_col, cols - 1);
        if (channel)
            driver::pick(form.ui.cbo_tv_ch, channel - 1);
    }
    void acknowledgeWall() {
        device().reply(QStringLiteral("SMNC"), QStringLiteral("MNCM001"));
        device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    }
    bool locked() {
        return !form.ui.frame_control[4]->isEnabled() && !form.ui.sys_setting->isEnabled();
    }

    std::vector<std::unique_ptr<FakeController>> fakes;
    MessageBoxAnswerer boxes;
    Form1 form;
};

// Sends the chunks to the window one at a time, each once the window has read the one
// before (loopback would join small writes), calling before(i) ahead of chunk i. Runs
// from within whatever wait is running.
void feed(Wall& wall, QList<QByteArray> chunks, std::function<void(int)> before = {}) {
    auto* timer = new QTimer(&wall.form);
    QObject::connect(timer, &QTimer::timeout, timer, [=, &wall, next = 0]() mutable {
        if (next > 0 && wall.form.ui.TextInfo->text().toLatin1() != chunks[next - 1])
            return;
        if (next == chunks.size())
            return timer->stop();
        if (before)
            before(next);
        wall.device().push(chunks[next++]);
    });
    timer->start(5);
}

} // namespace

class TestWall : public QObject {
    Q_OBJECT
private slots:
    void sendWaitsForEachAcknowledgement_data();
    void sendWaitsForEachAcknowledgement();
    void typedSize_data();
    void typedSize();
    void positionListAndTypedPosition();
    void refusedWithoutSending_data();
    void refusedWithoutSending();
    void recall();
    void hotKey_data();
    void hotKey();
    void withVirtualControllers();
};

void TestWall::sendWaitsForEachAcknowledgement_data() {
    QTest::addColumn<bool>("allIp");
    QTest::newRow("selected only") << false;
    QTest::newRow("ALL IP") << true;
}

void TestWall::sendWaitsForEachAcknowledgement() {
    QFETCH(bool, allIp);
    Wall wall(1, "opt_tv2", 3);
    wall.device().push("MNCM001\r\n"); // unasked: changes nothing
    QTRY_COMPARE(wall.form.ui.TextInfo->text(), QStringLiteral("MNCM001\r\n"));
    wall.choose(3, 4, 2);
    driver::pick(wall.form.ui.cbo_tv_posi, 6);
    wall.form.ui.chk_tv_allip[0]->setChecked(allIp);
    // Only the selected controller answers; a "COCH" comes out of turn first.
    int linesAtAck = -1, stepAtAck = -1;
    wall.device().reply(QStringLiteral("SMNC"), [&](const QString&) {
        feed(wall, {"COCH001\r\n", "MNCM001\r\n"}, [&](int) {
            linesAtAck = int(wall.device().lines().size());
            stepAtAck = wall.form.w.wait_wall;
        });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    wall.press(QStringLiteral("btn_panomat_send"));
    QCOMPARE(linesAtAck, 1);
    QCOMPARE(stepAtAck, 1);
    const QStringList lines = {QStringLiteral("SMNC 3 4 2"), QStringLiteral("SCO 2 7")};
    for (int i = 0; i < 3; ++i)
        QTRY_COMPARE(wall.device(i).lines(), (allIp || i == 0) ? lines : QStringList());
    QCOMPARE(wall.form.w.wait_wall, quint8(0));
    QVERIFY(wall.boxes.texts().isEmpty());
}

void TestWall::typedSize_data() {
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("refusals");  // every keystroke is checked
    QTest::addColumn<int>("positions"); // the typed size times 4 picked for the other
    QTest::newRow("2.5 to even") << "cbo_tv_row"
                                 << "2.5" << 0 << 8;
    QTest::newRow("3.5 to even") << "cbo_tv_row"
                                 << "3.5" << 0 << 16;
    QTest::newRow("15") << "cbo_tv_row"
                        << "15" << 0 << 60;
    QTest::newRow("16 after 1") << "cbo_tv_row"
                                << "16" << 1 << 4;
    QTest::newRow("0") << "cbo_tv_row"
                       << "0" << 1 << 0;
    QTest::newRow("letters") << "cbo_tv_row"
                             << "abc" << 3 << 0;
    QTest::newRow("column") << "cbo_tv_col"
                            << "3" << 0 << 12;
}

void TestWall::typedSize() {
    QFETCH(QString, box);
    QFETCH(QString, text);
    QFETCH(int, refusals);
    QFETCH(int, positions);
    Wall wall(2, "opt_tv2");
    const bool rows = box == QLatin1String("cbo_tv_row");
    driver::pick(rows ? wall.form.ui.cbo_tv_col : wall.form.ui.cbo_tv_row, 3);
    driver::type(find<QComboBox>(wall.form, box), text);
    QCOMPARE(wall.boxes.texts(), QStringList(refusals, QStringLiteral("Please type 1 ~ 15!")));
    for (const auto& seen : wall.boxes.seen())
        QCOMPARE(seen.icon, QMessageBox::Warning);
    QCOMPARE(wall.form.ui.cbo_tv_posi->count(), positions);
}

void TestWall::positionListAndTypedPosition() {
    Wall wall(3, "opt_tv2");
    QComboBox* positions = wall.form.ui.cbo_tv_posi;
    driver::type(positions, QStringLiteral("1"));
    wall.choose(15, 15, 0);
    QCOMPARE(positions->count(), 225);
    QCOMPARE(positions->itemText(0), QStringLiteral(" 1"));
    QCOMPARE(positions->itemText(224), QStringLiteral(" 225"));
    wall.choose(3, 4, 3);
    driver::type(positions, QStringLiteral("13")); // "1" passes, "13" does not
    QCOMPARE(wall.boxes.texts(), (QStringList{QStringLiteral("Please type 1 ~ 0!"),
                                              QStringLiteral("Please type 1 ~ 12!")}));
    driver::type(positions, QStringLiteral("11.5")); // 12 after rounding to even
    // A smaller wall drops the list's items but not the chosen tile.
    wall.choose(2, 2, 0);
    QCOMPARE(positions->count(), 4);
    QCOMPARE(positions->currentText(), QString());
    wall.acknowledgeWall();
    wall.press(QStringLiteral("btn_panomat_send"));
    QCOMPARE(wall.device().lines(),
             (QStringList{QStringLiteral("SMNC 2 2 3"), QStringLiteral("SCO 3 12")}));
    QCOMPARE(wall.boxes.texts().size(), 2);
}

void TestWall::refusedWithoutSending_data() {
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("control");
    QTest::addColumn<bool>("drop");
    QTest::addColumn<QString>("message");
    const QString offline = QStringLiteral("Ethernet is disconnected !");
    QTest::newRow("Send, no channel")
        << "opt_tv2"
        << "btn_panomat_send" << false << "Please choose the correct values !";
    QTest::newRow("Send") << "opt_tv2"
                          << "btn_panomat_send" << true << offline;
    QTest::newRow("save") << "opt_tv3"
                          << "btn_save(1)" << true << offline;
    QTest::newRow("recall") << "opt_tv3"
                            << "btn_recall(4)" << true << offline;
    QTest::newRow("bypass") << "opt_tv2"
                            << "opt_ch4_bypass(0)" << true << offline;
    QTest::newRow("hot key") << "opt_tv1"
                             << "btn_tv_fs(3)" << true << offline;
}

void TestWall::refusedWithoutSending() {
    QFETCH(QString, selector);
    QFETCH(QString, control);
    QFETCH(bool, drop);
    QFETCH(QString, message);
    Wall wall(4, qPrintable(selector), 2);
    wall.choose(1, 1, drop ? 1 : 0);
    if (drop) {
        wall.device().dropConnections();
        QTRY_VERIFY(!wall.form.linkUp());
    }
    wall.press(control);
    QCOMPARE(wall.boxes.texts(), QStringList{message});
    QCOMPARE(wall.boxes.seen().first().icon, drop ? QMessageBox::Critical : QMessageBox::Warning);
    QCOMPARE(wall.form.is_connected, !drop);
    QTest::qWait(30);
    QVERIFY(wall.device().lines().isEmpty() && wall.device(1).lines().isEmpty());
    QCOMPARE(wall.form.w.wait_fav + wall.form.w.wait_hotkey + wall.form.w.wait_wall, 0);
}

void TestWall::recall() {
    Wall wall(6, "opt_tv3", 2);
    QList<int> stepsWhileWrong;
    bool lockedWhileWaiting = false;
    wall.device().reply(QStringLiteral("RFAVE"), [&](const QString&) {
        lockedWhileWaiting = wall.locked() && wall.form.ui.ProgressBar1->isVisible();
        feed(wall, {"RFAV006\r\n", "RFAV\r\n", "MNCM001\r\n", "RFAV005\r\n"},
             [&](int) { stepsWhileWrong << wall.form.w.wait_fav; });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("RBY"), QStringLiteral("BYPA001"));
    wall.device().reply(QStringLiteral("RCBH"), [](const QString& line) {
        return QStringLiteral("CBHV%1  CBHV02%1").arg(line.right(1)).toLatin1();
    });
    // Look at the window while the completion message is up, then close it.
    bool lockedAtMessage = false;
    int progressAtMessage = -1;
    wall.boxes.hold(true);
    QTimer watch;
    connect(&watch, &QTimer::timeout, &wall.form, [&] {
        if (!QApplication::activeModalWidget())
            return;
        lockedAtMessage = wall.locked();
        progressAtMessage = wall.form.ui.ProgressBar1->value();
        wall.boxes.pressNow();
    });
    watch.start(5);
    wall.press(QStringLiteral("btn_recall(2)")); // any stored slot answers
    QVERIFY(lockedWhileWaiting);
    QCOMPARE(stepsWhileWrong, (QList<int>{1, 1, 1, 1}));
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Recall completed !")});
    QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::NoIcon);
    QVERIFY(lockedAtMessage);
    QCOMPARE(progressAtMessage, 100);
    QVERIFY(!wall.locked());
    QVERIFY(wall.form.ui.ProgressBar1->isHidden());
    QCOMPARE(wall.form.w.wait_fav + wall.form.w.wait_wall, 0);
    QCOMPARE(wall.device().lines().mid(0, 4),
             (QStringList{QStringLiteral("RFAVE 2"), QStringLiteral("RBY"), QStringLiteral("RBEZ"),
                          QStringLiteral("RCBH 1")}));
    QVERIFY(!wall.device().lines().contains(QStringLiteral("SBY 1"))); // read, not sent back
    QCOMPARE(wall.device(1).lines(), QStringList{QStringLiteral("RFAVE 2")});
    QVERIFY(wall.form.ui.opt_ch4_bypass[0]->isChecked());
    QCOMPARE(wall.form.ui.cbo_val_H[3]->currentText(), QStringLiteral(" 23"));
}

void TestWall::hotKey_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("allIp");
    QTest::addColumn<bool>("bypassOn"); // the controller's state, read back afterwards
    QTest::newRow("1x1") << 0 << false << true;
    QTest::newRow("6x3") << 23 << false << false;
    QTest::newRow("3x3 to all") << 2 << true << true;
}

void TestWall::hotKey() {
    QFETCH(int, index);
    QFETCH(bool, allIp);
    QFETCH(bool, bypassOn);
    Wall wall(7, "opt_tv1", 3);
    find<QCheckBox>(wall.form, QStringLiteral("Check1(2)"))->setChecked(allIp);
    wall.form.ui.opt_ch4_bypass[bypassOn ? 1 : 0]->setChecked(true);
    // The bezel reset's "WDEF" shares the handler, is tested first and does not release.
    int linesAtHotk = -1, stepAtHotk = -1;
    wall.device().reply(QStringLiteral("SHOT"), [&](const QString&) {
        wall.form.w.wait_wall_default = 1;
        feed(wall, {"WDEF001\r\n", "HOTK001\r\n"}, [&](int) {
            linesAtHotk = int(wall.device().lines().size());
            stepAtHotk = wall.form.w.wait_hotkey * 10 + wall.form.w.wait_wall_default;
        });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("RBY"),
                        bypassOn ? QStringLiteral("BYPA001") : QStringLiteral("BYPA000"));
    wall.press(QStringLiteral("btn_tv_fs(%1)").arg(index));
    QCOMPARE(linesAtHotk, 1);
    QCOMPARE(stepAtHotk, 12);
    const QString shot = QStringLiteral("SHOT %1").arg(index);
    QCOMPARE(wall.device().lines(), (QStringList{shot, QStringLiteral("RBY")}));
    for (int i = 1; i < 3; ++i)
        QTRY_COMPARE(wall.device(i).lines(), allIp ? QStringList{shot} : QStringList());
    QVERIFY(wall.form.ui.opt_ch4_bypass[bypassOn ? 0 : 1]->isChecked());
    QCOMPARE(wall.form.w.wait_hotkey + wall.form.w.wait_status, 0);
    QTest::qWait(30);
    QCOMPARE(wall.device().lines().size(), 2); // the option set by the read sent nothing
}

// Two virtual controllers that keep what they are told.
void TestWall::withVirtualControllers() {
    sim::Simulator controllers;
    QVERIFY(controllers.start(QHostAddress(QStringLiteral("127.30.90.1")), 2));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {QStringLiteral("127.30.90.1"), QStringLiteral("127.30.90.2")});
    auto wall = [&](int n) { return controllers.controller(n)->state().wall; };
    driver::pick(form.ui.cbo_tv_row, 2);
    driver::pick(form.ui.cbo_tv_col, 3);
    driver::pick(form.ui.cbo_tv_ch, 1);
    driver::pick(form.ui.cbo_tv_posi, 6);
    form.ui.chk_tv_allip[0]->setChecked(true);
    driver::click(form.ui.btn_panomat_send);
    for (int n = 1; n <= 2; ++n) {
        QTRY_COMPARE(wall(n).rows * 100 + wall(n).cols * 10 + wall(n).channel, 342);
        QCOMPARE(wall(n).position[1], 7);
    }
    driver::click(form.ui.btn_save[2]);
    QTRY_COMPARE(controllers.controller(2)->state().favourites[1], wall(2));
    const sim::WallSettings saved = wall(1);
    driver::click(form.ui.btn_tv_fs[2]); // 3x3, on the selected controller only
    QVERIFY(!(wall(1) == saved));
    QCOMPARE(wall(2), saved);
    form.ui.opt_ch4_bypass[0]->click(); // "ON" to both
    QTRY_VERIFY(wall(1).bypass && wall(2).bypass);
    boxes.clear();
    driver::click(form.ui.btn_recall[2]);
    QCOMPARE(wall(1), saved);
    QTRY_COMPARE(wall(2), saved);
    QVERIFY(form.ui.opt_ch4_bypass[1]->isChecked()); // read back after the recall
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Recall completed !")});
    form.ui.opt_ch4_bypass[0]->click();
    form.ui.cbo_ipaddr->setCurrentIndex(1); // bypass goes to all whatever is selected
    form.ui.opt_ch4_bypass[1]->click();
    for (int n = 1; n <= 2; ++n)
        QTRY_VERIFY(controllers.controller(n)->received().endsWith("SBY 0"));
    QCOMPARE(controllers.controller(1)->received().count("SBY 1"), 2);
    QVERIFY(!wall(1).bypass && !wall(2).bypass);
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestWall test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_wall.moc"
