#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using driver::find;

// Each test uses its own addresses in 127.30.0.0/16.
namespace {

// Connected controllers answering the refresh, with what the refresh sent and showed
// forgotten. The first one is selected.
struct Wall {
    explicit Wall(int subnet, int devices = 1)
    {
        QStringList addresses;
        for (int i = 1; i <= devices; ++i) {
            controllers.push_back(std::make_unique<FakeController>(QStringLiteral("127.30.%1.%2").arg(subnet).arg(i)));
            controllers.back()->answerLikeController();
            addresses << controllers.back()->address();
        }
        form.show();
        driver::connectTo(form, addresses);
        for (auto& controller : controllers) {
            QTRY_COMPARE(controller->acceptedCount(), 1);
            controller->clear();
        }
        boxes.clear();
    }
    FakeController& device(int i = 0) { return *controllers[i]; }
    void page(const char* selector) { driver::click(find<QRadioButton>(form, QLatin1String(selector))); }
    QPushButton* button(const QString& name) { return find<QPushButton>(form, name); }
    bool panelsLocked() { return !form.ui.frame_control[4]->isEnabled() && !form.ui.con_interface->isEnabled(); }

    std::vector<std::unique_ptr<FakeController>> controllers;
    MessageBoxAnswerer boxes;
    Form1 form;
};

// An option button takes clicks on its mark and caption only, not the whole width.
void clickOption(QAbstractButton* option)
{
    QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(6, option->height() / 2));
}

// Runs fn from within whatever wait is running ms from now.
void later(int ms, std::function<void()> fn) { QTimer::singleShot(ms, std::move(fn)); }

} // namespace

class TestWall : public QObject {
    Q_OBJECT
private slots:
    void sendWaitsForEachAcknowledgement_data();
    void sendWaitsForEachAcknowledgement();
    void sendAcknowledgementsOutOfTurnAreIgnored();
    void sendRefusesIncompleteChoice();
    void typedSize_data();
    void typedSize();
    void typedPosition();
    void positionListFollowsSizeButKeepsChoice();
    void disconnectedControllerGetsNothing_data();
    void disconnectedControllerGetsNothing();
    void saveGoesToEveryController();
    void recallLocksUntilCompletionIsClosed();
    void recallReleasedOnlyByStoredSlot();
    void bypass_data();
    void bypass();
    void hotKey_data();
    void hotKey();
    void hotKeyWaitsForItsOwnAcknowledgement();
    void hotKeyGrid();
};

void TestWall::sendWaitsForEachAcknowledgement_data()
{
    QTest::addColumn<int>("devices");
    QTest::addColumn<bool>("allIp");
    QTest::newRow("selected only") << 2 << false;
    QTest::newRow("ALL IP") << 3 << true;
}

void TestWall::sendWaitsForEachAcknowledgement()
{
    QFETCH(int, devices);
    QFETCH(bool, allIp);
    Wall wall(1, devices);
    wall.page("opt_tv2");
    driver::pick(wall.form.ui.cbo_tv_row, 2);
    driver::pick(wall.form.ui.cbo_tv_col, 3);
    driver::pick(wall.form.ui.cbo_tv_ch, 1);
    driver::pick(wall.form.ui.cbo_tv_posi, 6);
    wall.form.ui.chk_tv_allip[0]->setChecked(allIp);
    // Only the selected controller answers, and each acknowledgement comes late.
    int sentBeforeAck = -1;
    wall.device().reply(QStringLiteral("SMNC"), [&](const QString&) {
        later(60, [&] { sentBeforeAck = int(wall.device().lines().size()); wall.device().push("MNCM001\r\n"); });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    driver::click(wall.button(QStringLiteral("btn_panomat_send")));
    QCOMPARE(sentBeforeAck, 1);
    const QStringList expected = {QStringLiteral("SMNC 3 4 2"), QStringLiteral("SCO 2 7")};
    for (int i = 0; i < devices; ++i)
        QTRY_COMPARE(wall.device(i).lines(), (allIp || i == 0) ? expected : QStringList());
    QCOMPARE(wall.form.w.wait_wall, quint8(0));
    QVERIFY(wall.boxes.texts().isEmpty());
}

void TestWall::sendAcknowledgementsOutOfTurnAreIgnored()
{
    Wall wall(3);
    wall.page("opt_tv2");
    // Unasked acknowledgements change nothing.
    wall.device().push("MNCM001\r\n");
    QTest::qWait(50);
    QCOMPARE(wall.form.w.wait_wall, quint8(0));

    driver::pick(wall.form.ui.cbo_tv_row, 0);
    driver::pick(wall.form.ui.cbo_tv_col, 0);
    driver::pick(wall.form.ui.cbo_tv_ch, 3);
    quint8 afterEarlyCoch = 0;
    wall.device().reply(QStringLiteral("SMNC"), [&](const QString&) {
        later(40, [&] { wall.device().push("COCH001\r\n"); });
        later(100, [&] { afterEarlyCoch = wall.form.w.wait_wall; wall.device().push("MNCM001\r\n"); });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    driver::click(wall.button(QStringLiteral("btn_panomat_send")));
    QCOMPARE(afterEarlyCoch, quint8(1));
    // No tile chosen: 0 goes out.
    QCOMPARE(wall.device().lines(), (QStringList{QStringLiteral("SMNC 1 1 4"), QStringLiteral("SCO 4 0")}));
}

void TestWall::sendRefusesIncompleteChoice()
{
    Wall wall(4);
    wall.page("opt_tv2");
    driver::click(wall.button(QStringLiteral("btn_panomat_send")));
    driver::pick(wall.form.ui.cbo_tv_row, 1);
    driver::pick(wall.form.ui.cbo_tv_col, 1);
    driver::click(wall.button(QStringLiteral("btn_panomat_send"))); // still no channel
    QCOMPARE(wall.boxes.texts(), QStringList(2, QStringLiteral("Please choose the correct values !")));
    QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::Warning);
    QTest::qWait(50);
    QVERIFY(wall.device().lines().isEmpty());
    QCOMPARE(wall.form.w.wait_wall, quint8(0));
}

void TestWall::typedSize_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("refusals"); // every keystroke is checked
    QTest::addColumn<int>("positions"); // typed size times the 4 columns picked first
    QTest::newRow("2.5 rounds to even") << "cbo_tv_row" << "2.5" << 0 << 8;
    QTest::newRow("3.5 rounds to even") << "cbo_tv_row" << "3.5" << 0 << 16;
    QTest::newRow("15") << "cbo_tv_row" << "15" << 0 << 60;
    QTest::newRow("16 after 1") << "cbo_tv_row" << "16" << 1 << 4;
    QTest::newRow("0") << "cbo_tv_row" << "0" << 1 << 0;
    QTest::newRow("letters") << "cbo_tv_row" << "abc" << 3 << 0;
    QTest::newRow("columns too") << "cbo_tv_col" << "3" << 0 << 12;
}

void TestWall::typedSize()
{
    QFETCH(QString, box);
    QFETCH(QString, text);
    QFETCH(int, refusals);
    QFETCH(int, positions);
    Wall wall(5);
    wall.page("opt_tv2");
    // Four of the other dimension, so the list shows what was stored.
    driver::pick(box == QLatin1String("cbo_tv_row") ? wall.form.ui.cbo_tv_col : wall.form.ui.cbo_tv_row, 3);
    driver::type(find<QComboBox>(wall.form, box), text);
    QCOMPARE(wall.boxes.texts(), QStringList(refusals, QStringLiteral("Please type 1 ~ 15!")));
    for (const auto& seen : wall.boxes.seen())
        QCOMPARE(seen.icon, QMessageBox::Warning);
    QCOMPARE(wall.form.ui.cbo_tv_posi->count(), positions);
}

void TestWall::typedPosition()
{
    Wall wall(6);
    wall.page("opt_tv2");
    driver::type(wall.form.ui.cbo_tv_posi, QStringLiteral("1"));
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Please type 1 ~ 0!")});
    wall.boxes.clear();
    driver::pick(wall.form.ui.cbo_tv_row, 2);
    driver::pick(wall.form.ui.cbo_tv_col, 3);
    driver::pick(wall.form.ui.cbo_tv_ch, 0);
    driver::type(wall.form.ui.cbo_tv_posi, QStringLiteral("13")); // "1" is fine, "13" is not
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Please type 1 ~ 12!")});
    driver::type(wall.form.ui.cbo_tv_posi, QStringLiteral("9.5"));
    QCOMPARE(wall.boxes.texts().size(), 1);
    wall.device().reply(QStringLiteral("SMNC"), QStringLiteral("MNCM001"));
    wall.device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    driver::click(wall.button(QStringLiteral("btn_panomat_send")));
    QCOMPARE(wall.device().lines().last(), QStringLiteral("SCO 1 10"));
}

void TestWall::positionListFollowsSizeButKeepsChoice()
{
    Wall wall(7);
    wall.page("opt_tv2");
    QComboBox* positions = wall.form.ui.cbo_tv_posi;
    driver::pick(wall.form.ui.cbo_tv_row, 14);
    driver::pick(wall.form.ui.cbo_tv_col, 14);
    QCOMPARE(positions->count(), 225);
    QCOMPARE(positions->itemText(0), QStringLiteral(" 1"));
    QCOMPARE(positions->itemText(224), QStringLiteral(" 225"));
    QCOMPARE(positions->currentIndex(), -1);

    driver::pick(wall.form.ui.cbo_tv_row, 2);
    driver::pick(wall.form.ui.cbo_tv_col, 3);
    driver::pick(positions, 11);
    driver::pick(wall.form.ui.cbo_tv_row, 1);
    driver::pick(wall.form.ui.cbo_tv_col, 1);
    QCOMPARE(positions->count(), 4);
    QCOMPARE(positions->currentText(), QString());
    driver::pick(wall.form.ui.cbo_tv_ch, 2);
    wall.device().reply(QStringLiteral("SMNC"), QStringLiteral("MNCM001"));
    wall.device().reply(QStringLiteral("SCO"), QStringLiteral("COCH001"));
    driver::click(wall.button(QStringLiteral("btn_panomat_send")));
    QCOMPARE(wall.device().lines(), (QStringList{QStringLiteral("SMNC 2 2 3"), QStringLiteral("SCO 3 12")}));
}

void TestWall::disconnectedControllerGetsNothing_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("control");
    QTest::newRow("Send") << "opt_tv2" << "btn_panomat_send";
    QTest::newRow("save") << "opt_tv3" << "btn_save(1)";
    QTest::newRow("recall") << "opt_tv3" << "btn_recall(4)";
    QTest::newRow("bypass") << "opt_tv2" << "opt_ch4_bypass(0)";
    QTest::newRow("hot key") << "opt_tv1" << "btn_tv_fs(3)";
}

void TestWall::disconnectedControllerGetsNothing()
{
    QFETCH(QString, selector);
    QFETCH(QString, control);
    Wall wall(8, 2);
    wall.page(qPrintable(selector));
    driver::pick(wall.form.ui.cbo_tv_row, 0);
    driver::pick(wall.form.ui.cbo_tv_col, 0);
    driver::pick(wall.form.ui.cbo_tv_ch, 0);
    wall.device().dropConnections();
    QTRY_VERIFY(!wall.form.linkUp());
    auto* target = find<QAbstractButton>(wall.form, control);
    qobject_cast<QRadioButton*>(target) ? clickOption(target) : driver::click(target);
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Ethernet is disconnected !")});
    QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::Critical);
    QVERIFY(!wall.form.is_connected);
    QTRY_COMPARE(wall.device(1).connectionCount(), 0); // offline closes every socket
    QVERIFY(wall.device(1).lines().isEmpty());
    QCOMPARE(wall.form.w.wait_fav + wall.form.w.wait_hotkey + wall.form.w.wait_wall, 0);
}

void TestWall::saveGoesToEveryController()
{
    Wall wall(9, 3);
    wall.page("opt_tv3");
    wall.form.ui.cbo_ipaddr->setCurrentIndex(1); // any selection; all are written
    driver::click(wall.button(QStringLiteral("btn_save(5)")));
    for (int i = 0; i < 3; ++i)
        QTRY_COMPARE(wall.device(i).lines(), QStringList{QStringLiteral("SFAVE 5")});
    QVERIFY(wall.boxes.texts().isEmpty());
    QCOMPARE(wall.form.w.wait_fav, quint8(0));
}

void TestWall::recallLocksUntilCompletionIsClosed()
{
    Wall wall(10, 2);
    wall.page("opt_tv3");
    wall.device().reply(QStringLiteral("RFAVE"), QStringLiteral("RFAV005")); // not the slot asked for
    wall.device().reply(QStringLiteral("RBY"), QStringLiteral("BYPA001"));
    wall.device().reply(QStringLiteral("RBEZ"), QStringLiteral("BEZE000"));
    wall.device().reply(QStringLiteral("RCBH"), [](const QString& line) {
        return QStringLiteral("CBHV%1  CBHV02%1").arg(line.right(1)).toLatin1();
    });
    bool lockedWhileWaiting = false;
    connect(&wall.device(), &FakeController::lineReceived, &wall.form, [&](const QString& line) {
        if (line.startsWith(QLatin1String("RFAVE")))
            lockedWhileWaiting = wall.panelsLocked() && wall.form.ui.ProgressBar1->isVisible() &&
                                 wall.form.ui.ProgressBar1->value() == 0;
    });
    // Look at the window while the completion message is up, then close it.
    bool lockedAtMessage = false;
    int progressAtMessage = -1;
    wall.boxes.hold(true);
    QTimer watch;
    connect(&watch, &QTimer::timeout, &wall.form, [&] {
        if (!QApplication::activeModalWidget())
            return;
        lockedAtMessage = wall.panelsLocked();
        progressAtMessage = wall.form.ui.ProgressBar1->isVisible() ? wall.form.ui.ProgressBar1->value() : -1;
        wall.boxes.pressNow();
    });
    watch.start(5);
    driver::click(wall.button(QStringLiteral("btn_recall(2)")));
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Recall completed !")});
    QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::NoIcon);
    QVERIFY(lockedWhileWaiting);
    QVERIFY(lockedAtMessage);
    QCOMPARE(progressAtMessage, 100);
    QVERIFY(!wall.panelsLocked());
    QVERIFY(wall.form.ui.ProgressBar1->isHidden());
    QCOMPARE(wall.form.w.wait_fav, quint8(0));

    const QStringList lines = wall.device().lines();
    QCOMPARE(lines.mid(0, 4), (QStringList{QStringLiteral("RFAVE 2"), QStringLiteral("RBY"),
                                           QStringLiteral("RBEZ"), QStringLiteral("RCBH 1")}));
    QCOMPARE(wall.device(1).lines(), QStringList{QStringLiteral("RFAVE 2")});
    QVERIFY(wall.form.ui.opt_ch4_bypass[0]->isChecked());
    QVERIFY(wall.form.ui.opt_bezel[0]->isChecked());
    QCOMPARE(wall.form.ui.cbo_val_H[3]->currentText(), QStringLiteral(" 23"));
    QVERIFY(!lines.contains(QStringLiteral("SBY 1"))); // set by the read, not sent back
}

void TestWall::recallReleasedOnlyByStoredSlot()
{
    Wall wall(11);
    wall.page("opt_tv3");
    quint8 waitAfterWrongValues = 0;
    wall.device().reply(QStringLiteral("RFAVE"), [&](const QString&) {
        later(0, [&] { wall.device().push("RFAV006\r\n"); });
        later(40, [&] { wall.device().push("RFAV\r\n"); });
        later(80, [&] { wall.device().push("MNCM001\r\n"); });
        later(120, [&] { waitAfterWrongValues = wall.form.w.wait_fav; wall.device().push("RFAV001\r\n"); });
        return QByteArray();
    });
    driver::click(wall.button(QStringLiteral("btn_recall(1)")));
    QCOMPARE(waitAfterWrongValues, quint8(1));
    QCOMPARE(wall.boxes.texts(), QStringList{QStringLiteral("Recall completed !")});
    QCOMPARE(wall.form.w.wait_wall, quint8(0));
}

void TestWall::bypass_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("line");
    QTest::newRow("ON sends 1") << 0 << "SBY 1";
    QTest::newRow("OFF sends 0") << 1 << "SBY 0";
}

void TestWall::bypass()
{
    QFETCH(int, index);
    QFETCH(QString, line);
    Wall wall(12, 2);
    wall.page("opt_tv2");
    QVERIFY(!wall.form.ui.chk_tv_allip[0]->isChecked());
    clickOption(wall.form.ui.opt_ch4_bypass[index]);
    for (int i = 0; i < 2; ++i)
        QTRY_COMPARE(wall.device(i).lines(), QStringList{line});
    // While a status read runs, a Click raised by the read is not sent back.
    wall.form.w.wait_status = 3;
    clickOption(wall.form.ui.opt_ch4_bypass[1 - index]);
    wall.form.w.wait_status = 0;
    QTest::qWait(50);
    QCOMPARE(wall.device().lines(), QStringList{line});
    QVERIFY(wall.boxes.texts().isEmpty());
}

void TestWall::hotKey_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("allIp");
    QTest::addColumn<QString>("bypass"); // the controller's answer to the read-back
    QTest::newRow("1x1") << 0 << false << "BYPA001";
    QTest::newRow("6x3") << 23 << false << "BYPA000";
    QTest::newRow("3x3 to all") << 2 << true << "BYPA001";
}

void TestWall::hotKey()
{
    QFETCH(int, index);
    QFETCH(bool, allIp);
    QFETCH(QString, bypass);
    Wall wall(20, 3);
    wall.page("opt_tv1");
    find<QCheckBox>(wall.form, QStringLiteral("Check1(2)"))->setChecked(allIp);
    wall.device().reply(QStringLiteral("SHOT"), QStringLiteral("HOTK001"));
    wall.device().reply(QStringLiteral("RBY"), bypass);
    const bool on = bypass.endsWith(QLatin1String("1"));
    wall.form.ui.opt_ch4_bypass[on ? 1 : 0]->setChecked(true);
    driver::click(wall.button(QStringLiteral("btn_tv_fs(%1)").arg(index)));
    const QString shot = QStringLiteral("SHOT %1").arg(index);
    QCOMPARE(wall.device().lines(), (QStringList{shot, QStringLiteral("RBY")}));
    for (int i = 1; i < 3; ++i)
        QTRY_COMPARE(wall.device(i).lines(), allIp ? QStringList{shot} : QStringList());
    QVERIFY(wall.form.ui.opt_ch4_bypass[on ? 0 : 1]->isChecked());
    QCOMPARE(wall.form.w.wait_hotkey, quint8(0));
    QCOMPARE(wall.form.w.wait_status, quint8(0));
    QTest::qWait(50);
    QCOMPARE(wall.device().lines().size(), 2); // the option set by the read sent nothing
}

void TestWall::hotKeyWaitsForItsOwnAcknowledgement()
{
    Wall wall(50);
    wall.page("opt_tv1");
    int linesAtWdef = -1;
    quint8 hotkeyAtWdef = 0, wallDefaultAtWdef = 0;
    wall.device().reply(QStringLiteral("SHOT"), [&](const QString&) {
        // The bezel reset's acknowledgement shares the handler and is tested first.
        wall.form.w.wait_wall_default = 1;
        later(0, [&] { wall.device().push("WDEF001\r\n"); });
        later(60, [&] {
            linesAtWdef = int(wall.device().lines().size());
            hotkeyAtWdef = wall.form.w.wait_hotkey;
            wallDefaultAtWdef = wall.form.w.wait_wall_default;
            wall.device().push("HOTK001\r\n");
        });
        return QByteArray();
    });
    wall.device().reply(QStringLiteral("RBY"), QStringLiteral("BYPA000"));
    driver::click(wall.button(QStringLiteral("btn_tv_fs(7)")));
    QCOMPARE(linesAtWdef, 1);
    QCOMPARE(hotkeyAtWdef, quint8(1));
    QCOMPARE(wallDefaultAtWdef, quint8(2));
    QCOMPARE(wall.device().lines(), (QStringList{QStringLiteral("SHOT 7"), QStringLiteral("RBY")}));
}

void TestWall::hotKeyGrid()
{
    Form1 form;
    form.show();
    auto at = [&](int i) { return find<QPushButton>(form, QStringLiteral("btn_tv_fs(%1)").arg(i))->geometry(); };
    for (int i = 0; i < 24; ++i) {
        QCOMPARE(at(i).top(), at(i / 6 * 6).top());   // rows of six
        QCOMPARE(at(i).left(), at(i % 6).left());      // columns line up
        if (i % 6)
            QVERIFY(at(i).left() > at(i - 1).left());
        if (i >= 6)
            QVERIFY(at(i).top() > at(i - 6).top());
    }
    QVERIFY(form.ui.frame_control[0]->isAncestorOf(find<QCheckBox>(form, QStringLiteral("Check1(2)"))));
}

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestWall test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_wall.moc"
