#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using driver::find;

namespace {

const QStringList RefreshReads = {"RPOW",   "RMDN",   "RBY",    "RBEZ",   "RVER",   "RIPM",
                                  "RLINK",  "RCBH 1", "RCBH 2", "RCBH 3", "RCBH 4", "RCBV 1",
                                  "RCBV 2", "RCBV 3", "RCBV 4", "RRES",   "ROSDD",  "ROSDT",
                                  "ROSDH",  "ROSDV",  "ROSDG",  "RMUTE"};

// Answers "SCBH n v" with "CBHC00n", and likewise for the V column.
QByteArray acknowledgeBezel(const QString& line) {
    return (line.startsWith(QLatin1String("SCBH")) ? "CBHC00" : "CBVC00") +
           line.section(u' ', 1, 1).toLatin1();
}

// Runs action `ms` after condition first holds, from inside the handler that waits.
void pauseThen(Form1& form, std::function<bool()> condition, int ms, std::function<void()> action) {
    driver::when(&form, std::move(condition),
                 [&form, ms, action] { QTimer::singleShot(ms, &form, action); });
}

int lockedFrames(Form1& form) {
    int locked = 0;
    for (const char* frame : {"net_config", "con_interface", "sys_setting", "frame_control(2)"})
        locked += find<QGroupBox>(form, QLatin1String(frame))->isEnabled() ? 0 : 1;
    return locked;
}

} // namespace

// The full refresh and the reads and writes it is made of. Addresses in 127.12.0.0/16.
class TestReadBack : public QObject {
    Q_OBJECT
private slots:
    void refreshReadsInOrderWithPanelsLocked();
    void repliesAtWrongStepOrJoinedAreIgnored();
    void staticSetIpWritesFiveLinesThenGoesOffline();
    void dhcpModeSetIpAndRelink();
    void ioValues_data();
    void ioValues();
    void ioValueOutsideListKeepsReadWaiting();
    void osdResetAnswerChoosesTargets_data();
    void osdResetAnswerChoosesTargets();
    void bezelSendWaitsForEachAcknowledgement();
    void bezelRefreshReadsLongLayout();
    void bezelResetShowsDefaultsAtOnce();

private:
    // Connects the window to the fakes and clears what the refresh left.
    static void connectAll(Form1& form, const QList<FakeController*>& devices,
                           MessageBoxAnswerer& boxes) {
        QStringList addresses;
        for (FakeController* device : devices)
            addresses << device->address();
        driver::connectTo(form, addresses);
        QVERIFY(form.session().isConnected());
        boxes.clear();
        for (FakeController* device : devices)
            device->clear();
    }
};

void TestReadBack::refreshReadsInOrderWithPanelsLocked() {
    FakeController device(QStringLiteral("127.12.2.1"));
    device.answerLikeController();
    device.silence(QStringLiteral("RBEZ"));
    MessageBoxAnswerer boxes;
    boxes.hold(true);
    Form1 form;
    driver::listDevices(form, {device.address()});
    auto* progress = find<QProgressBar>(form, QStringLiteral("ProgressBar1"));
    QStringList sentWhileWaiting;
    int progressWhileWaiting = -1, lockedWhileWaiting = 0, progressAtBox = -1, lockedAtBox = 0;
    pauseThen(
        form, [&] { return device.lines().value(4) == QLatin1String("RBEZ"); }, 200,
        [&] {
            sentWhileWaiting = device.lines();
            progressWhileWaiting = progress->isHidden() ? -1 : progress->value();
            lockedWhileWaiting = lockedFrames(form);
            device.push("BEZE000\r\n");
        });
    driver::when(
        &form, [&] { return !boxes.seen().isEmpty(); },
        [&] {
            progressAtBox = progress->value();
            lockedAtBox = lockedFrames(form);
            boxes.pressNow();
        });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(sentWhileWaiting, (QStringList{"SOSDI", "RPOW", "RMDN", "RBY", "RBEZ"}));
    QCOMPARE(progressWhileWaiting, 0);
    QCOMPARE(lockedWhileWaiting, 4);
    QCOMPARE(progressAtBox, 100);
    QCOMPARE(lockedAtBox, 4); // until the completion box is closed
    QCOMPARE(lockedFrames(form), 0);
    QVERIFY(progress->isHidden());
    QCOMPARE(device.lines(), QStringList{"SOSDI"} + RefreshReads);
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::NoIcon);

    // What the window shows of the controller.
    QCOMPARE(form.windowTitle(), QStringLiteral("Panomat Set v1.10    FW: v1.02"));
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(1)"))->isHidden());
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_ch4_bypass(1)"))->isChecked());
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_bezel(0)"))->isChecked());
    QCOMPARE(form.ui.cbo_model->currentIndex(), 0);
    QCOMPARE(form.ui.cbo_ip_type->currentText(), QStringLiteral("STATIC"));
    QVERIFY(form.ui.txt_ip->isEnabled());
    // The address block's fields go in as they stand, leading zeros kept.
    QCOMPARE(form.ui.txt_ip->text(), QStringLiteral("127.000.000.002"));
    QCOMPARE(form.ui.txt_net->text(), QStringLiteral("255.255.255.000"));
    QCOMPARE(form.ui.txt_gate->text(), QStringLiteral("127.000.000.001"));

    // "Refresh" reads the same again; what the reads set sends nothing back.
    device.clear();
    boxes.hold(false);
    device.speak(QStringLiteral("RBEZ"));
    driver::click(find<QPushButton>(form, QStringLiteral("btn_sys_refresh")));
    QCOMPARE(device.lines(), RefreshReads);
}

void TestReadBack::repliesAtWrongStepOrJoinedAreIgnored() {
    FakeController device(QStringLiteral("127.12.3.1"));
    device.answerLikeController();
    device.silence(QStringLiteral("RPOW"));
    device.silence(QStringLiteral("RMDN"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {device.address(), QStringLiteral("127.12.3.2")});
    form.ui.cbo_model->setCurrentIndex(1);
    QList<int> seen; // wait_status and the model after the wrong-step and the joined replies
    driver::when(
        &form, [&] { return device.lines().value(1) == QLatin1String("RPOW"); },
        [&] {
            device.push("MODN000\r\n"); // the model reply while power is awaited
            pauseThen(
                form, [] { return true; }, 150,
                [&] {
                    seen << form.w.wait_status << form.ui.cbo_model->currentIndex();
                    device.push("POWE000\r\nMODN000\r\n"); // only the first of a chunk is seen
                });
        });
    pauseThen(
        form, [&] { return device.lines().value(2) == QLatin1String("RMDN"); }, 150,
        [&] {
            seen << form.w.wait_status << form.ui.cbo_model->currentIndex();
            device.push("MODN000\r\n");
        });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(seen, (QList<int>{1, 1, 2, 1}));
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    QCOMPARE(form.ui.cbo_model->currentIndex(), 0);
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(2)"))->isHidden());
}

void TestReadBack::staticSetIpWritesFiveLinesThenGoesOffline() {
    FakeController device(QStringLiteral("127.12.6.1"));
    device.answerLikeController();
    for (auto [keyword, answer] :
         {std::pair{"SIPM", "IPMD001"}, {"SIPA", "IPA0"}, {"SGAA", "GAA0"}, {"SREL", "RELI"}})
        device.reply(QLatin1String(keyword), QLatin1String(answer));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    form.ui.txt_ip->setText(QStringLiteral("127.012.006.009"));
    form.ui.txt_net->setText(QStringLiteral("255.0.0.0"));
    form.ui.txt_gate->clear();
    QList<int> seen; // lines sent while the mask is unacknowledged; the step after a wrong ack
    pauseThen(
        form, [&] { return device.lines().size() == 3; }, 200,
        [&] {
            seen << int(device.lines().size());
            device.push("GAA0\r\n");
            pauseThen(
                form, [] { return true; }, 100,
                [&] {
                    seen << form.w.wait_net_set;
                    device.push("MAA0\r\n");
                });
        });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_set")));
    QCOMPARE(seen, (QList<int>{3, 3}));
    QCOMPARE(device.lines(),
             (QStringList{"SIPM 1", "SIPA 127.012.006.009", "SMAA 255.0.0.0", "SGAA ", "SREL"}));
    QCOMPARE(boxes.texts(), QStringList{"Set STATIC IP completed, please re-link the ethernet !"});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Information);
    QVERIFY(!form.session().isConnected());
    QTRY_COMPARE(device.connectionCount(), 0);
}

void TestReadBack::dhcpModeSetIpAndRelink() {
    FakeController device(QStringLiteral("127.12.7.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RIPM"), QStringLiteral("IPMD000"));
    device.reply(QStringLiteral("SIPM"), QStringLiteral("IPMD000"));
    device.reply(QStringLiteral("SREL"), QStringLiteral("RELI"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    QCOMPARE(form.ui.cbo_ip_type->currentText(), QStringLiteral("DHCP"));
    QVERIFY(!form.ui.txt_ip->isEnabled());
    QCOMPARE(form.ui.txt_ip->text(), QStringLiteral("127.000.000.002")); // filled all the same
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_set")));
    QCOMPARE(device.lines(), (QStringList{"SIPM 0", "SREL"}));
    QCOMPARE(boxes.texts(), QStringList{"Set DHCP completed, please re-link the ethernet !"});
    QVERIFY(!form.session().isConnected());

    connectAll(form, {&device}, boxes);
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_relink")));
    QCOMPARE(device.lines(), QStringList{"SREL"});
    QVERIFY(boxes.texts().isEmpty());
    QVERIFY(!form.session().isConnected());
}

void TestReadBack::ioValues_data() {
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("list");
    QTest::addColumn<int>("index");
    QTest::newRow("native") << "RRES"
                            << "RESO016"
                            << "cbo_reso" << 16;
    QTest::newRow("timeout offset") << "ROSDT"
                                    << "OSDT010"
                                    << "cbo_osd_time" << 8;
    QTest::newRow("timeout below list clears") << "ROSDT"
                                               << "OSDT001"
                                               << "cbo_osd_time" << -1;
    QTest::newRow("gain") << "ROSDG"
                          << "OSDG010"
                          << "cbo_osd_gain" << 10;
}

void TestReadBack::ioValues() {
    QFETCH(QString, keyword);
    QFETCH(QString, answer);
    QFETCH(QString, list);
    QFETCH(int, index);
    FakeController device(QStringLiteral("127.12.8.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RMUTE"), QStringLiteral("MUTE001"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    device.reply(keyword, answer);
    driver::click(find<QPushButton>(form, QStringLiteral("btn_io_rst(0)")));
    QCOMPARE(device.lines(), RefreshReads.mid(15));
    QCOMPARE(find<QComboBox>(form, list)->currentIndex(), index);
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_mute(1)"))->isChecked());
    QVERIFY(find<QPushButton>(form, QStringLiteral("btn_io_rst(0)"))->isEnabled());
}

void TestReadBack::ioValueOutsideListKeepsReadWaiting() {
    FakeController device(QStringLiteral("127.12.9.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    device.reply(QStringLiteral("RRES"), QStringLiteral("RESO017"));
    QList<int> seen; // the step, the button, the list; then the step after a later reply
    pauseThen(
        form, [&] { return !device.lines().isEmpty(); }, 200,
        [&] {
            seen << form.w.wait_io
                 << find<QPushButton>(form, QStringLiteral("btn_io_rst(0)"))->isEnabled()
                 << form.ui.cbo_reso->currentIndex();
            device.push("OSDH003\r\n");
            pauseThen(
                form, [] { return true; }, 100,
                [&] {
                    seen << form.w.wait_io;
                    form.close();
                });
        });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_io_rst(0)")));
    QCOMPARE(device.lines(), QStringList{"RRES"});
    QCOMPARE(seen, (QList<int>{1, false, 6, 1}));
}

void TestReadBack::osdResetAnswerChoosesTargets_data() {
    QTest::addColumn<bool>("yes");
    QTest::newRow("Yes: every listed controller") << true;
    QTest::newRow("No: the selected one") << false;
}

void TestReadBack::osdResetAnswerChoosesTargets() {
    QFETCH(bool, yes);
    FakeController first(QStringLiteral("127.12.10.1"));
    FakeController second(QStringLiteral("127.12.10.2"));
    FakeController third(QStringLiteral("127.12.10.3"));
    first.answerLikeController();
    first.reply(QStringLiteral("RRES"), QStringLiteral("RESO000"));
    first.silence(QStringLiteral("SOSDR"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&first, &second, &third}, boxes);
    QTRY_COMPARE(third.connectionCount(), 1);
    boxes.answerWith(yes ? QMessageBox::Yes : QMessageBox::No);
    QList<int> shown; // the defaults, before the controller answers
    pauseThen(
        form, [&] { return !first.lines().isEmpty(); }, 100,
        [&] {
            shown << form.w.wait_osd_reset;
            for (QComboBox* list : {form.ui.cbo_reso, form.ui.cbo_info_play, form.ui.cbo_osd_time,
                                    form.ui.cbo_osd[0], form.ui.cbo_osd[1], form.ui.cbo_osd_gain})
                shown << list->currentIndex();
            shown << find<QRadioButton>(form, QStringLiteral("opt_mute(0)"))->isChecked();
            first.push("OSDR\r\n");
        });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_io_rst(1)")));
    QCOMPARE(shown, (QList<int>{1, 6, 0, 0, 5, 5, 2, true}));
    QCOMPARE(form.w.wait_osd_reset, quint8(0));
    QTest::qWait(100);
    const QStringList expected = yes ? QStringList{"SOSDR"} : QStringList{};
    QCOMPARE(second.lines(), expected);
    QCOMPARE(third.lines(), expected);
    QCOMPARE(first.lines(), QStringList{"SOSDR"}); // the defaults shown sent nothing
    QCOMPARE(boxes.seen().first().text, QStringLiteral("Reset All IP ?"));
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Question);
    QCOMPARE(boxes.seen().first().buttons, QMessageBox::Yes | QMessageBox::No);
}

void TestReadBack::bezelSendWaitsForEachAcknowledgement() {
    FakeController device(QStringLiteral("127.12.11.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("SCBH"), QStringLiteral("CBHC002")); // the wrong output first
    device.reply(QStringLiteral("SCBV"), acknowledgeBezel);
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    const int values[] = {0, 5, 255, 10, 20, 30, 40, 7};
    for (int n = 1; n <= 4; ++n) {
        form.ui.cbo_val_H[n]->setCurrentIndex(values[n - 1]);
        form.ui.cbo_val_V[n]->setCurrentIndex(values[n + 3]);
    }
    int stepWhileWaiting = -1;
    pauseThen(
        form, [&] { return !device.lines().isEmpty(); }, 200,
        [&] {
            stepWhileWaiting = form.w.wait_bezel_set;
            device.reply(QStringLiteral("SCBH"), acknowledgeBezel);
            device.push("CBHC001\r\n");
        });
    driver::click(form.ui.btn_H_Bezel_send);
    QCOMPARE(stepWhileWaiting, 1);
    QCOMPARE(device.lines(),
             (QStringList{"SCBH 1 0", "SCBH 2 5", "SCBH 3 255", "SCBH 4 10", "SCBV 1 20",
                          "SCBV 2 30", "SCBV 3 40", "SCBV 4 7", "RBEZ"}));
    QCOMPARE(form.w.wait_status, quint8(0));
    device.clear();
    driver::click(form.ui.btn_V_Bezel_send);
    QTest::qWait(100);
    QVERIFY(device.lines().isEmpty());
}

void TestReadBack::bezelRefreshReadsLongLayout() {
    FakeController device(QStringLiteral("127.12.12.1"));
    device.answerLikeController();
    auto value = [](const QString& line) {
        const bool h = line.startsWith(QLatin1String("RCBH"));
        const int n = line.section(u' ', 1, 1).toInt();
        return QStringLiteral("%1%2  %1%3")
            .arg(QLatin1String(h ? "CBHV" : "CBVV"))
            .arg(n)
            .arg(h ? n * 7 : 250 + n, 3, 10, QLatin1Char('0'))
            .toLatin1();
    };
    device.reply(QStringLiteral("RCBH"), value);
    device.reply(QStringLiteral("RCBV"), value);
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    driver::click(form.ui.btn_panomat_refresh);
    QCOMPARE(device.lines(), RefreshReads.mid(7, 8));
    for (int n = 1; n <= 4; ++n) {
        QCOMPARE(form.ui.cbo_val_H[n]->currentText(), QStringLiteral(" %1").arg(n * 7));
        QCOMPARE(form.ui.cbo_val_V[n]->currentText(), QStringLiteral(" %1").arg(250 + n));
    }
}

void TestReadBack::bezelResetShowsDefaultsAtOnce() {
    FakeController device(QStringLiteral("127.12.13.1"));
    device.answerLikeController();
    device.silence(QStringLiteral("SWDE"));
    device.reply(QStringLiteral("RBY"), QStringLiteral("BYPA001"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    for (int n = 1; n <= 4; ++n) {
        form.ui.cbo_val_H[n]->setCurrentIndex(n);
        form.ui.cbo_val_V[n]->setCurrentIndex(-1);
    }
    QStringList shown;
    driver::when(
        &form, [&] { return !device.lines().isEmpty(); },
        [&] {
            for (int n = 1; n <= 4; ++n)
                shown << form.ui.cbo_val_H[n]->currentText() << form.ui.cbo_val_V[n]->currentText();
            device.push("WDEF\r\n");
        });
    driver::click(form.ui.btn_panomat_reset);
    QCOMPARE(shown, QStringList(8, QStringLiteral(" 10")));
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_ch4_bypass(0)"))->isChecked());
    QCOMPARE(form.w.wait_status + form.w.wait_wall_default, 0);
    QTest::qWait(100);
    QCOMPARE(device.lines(),
             (QStringList{"SWDE", "RBY"})); // the option set by the read sends nothing
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestReadBack test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_readback.moc"
