#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using driver::find;

namespace {

const QStringList RefreshReads = {"RPOW",   "RMDN",   "RBY",    "RBEZ",   "RVER",  "RIPM",
                                  "RLINK",  "RCBH 1", "RCBH 2", "RCBH 3", "RCBH 4", "RCBV 1",
                                  "RCBV 2", "RCBV 3", "RCBV 4", "RRES",   "ROSDD", "ROSDT",
                                  "ROSDH",  "ROSDV",  "ROSDG",  "RMUTE"};

// Answers "SCBH n v" with "CBHC00n", and likewise for the V column.
QByteArray acknowledgeBezel(const QString& line)
{
    const QString output = line.section(u' ', 1, 1);
    return (line.startsWith(QLatin1String("SCBH")) ? "CBHC00" : "CBVC00") + output.toLatin1();
}

} // namespace

// The full refresh and the reads and writes it is made of. Addresses in 127.12.0.0/16.
class TestReadBack : public QObject {
    Q_OBJECT
private slots:
    void refreshReadsEverythingInOrder();
    void refreshWaitsForEachReplyWithPanelsLocked();
    void repliesAtWrongStepOrJoinedAreIgnored();
    void statusValues_data();
    void statusValues();
    void modelOutsideListStopsStatusRead();
    void dhcpModeDisablesAddressBoxes();
    void staticSetIpWritesFiveLinesThenGoesOffline();
    void dhcpSetIpAndRelink();
    void ioValues_data();
    void ioValues();
    void ioValueOutsideListKeepsReadWaiting();
    void osdResetAnswerChoosesTargets_data();
    void osdResetAnswerChoosesTargets();
    void bezelSendWaitsForEachAcknowledgement();
    void bezelRefreshReadsLongLayout();
    void bezelResetShowsDefaultsAtOnce();
    void bezelSendRefusedWhileRefreshRuns();
    void bezelOnOffSwitch();

private:
    // Connects the window to one or more fakes and clears what the refresh left.
    static void connectAll(Form1& form, const QList<FakeController*>& devices, MessageBoxAnswerer& boxes)
    {
        QStringList addresses;
        for (FakeController* device : devices)
            addresses << device->address();
        driver::connectTo(form, addresses);
        QVERIFY(form.is_connected);
        boxes.clear();
        for (FakeController* device : devices)
            device->clear();
    }
};

void TestReadBack::refreshReadsEverythingInOrder()
{
    FakeController device(QStringLiteral("127.12.1.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {device.address()});
    QCOMPARE(device.lines(), QStringList{"SOSDI"} + RefreshReads);
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::NoIcon);
    QCOMPARE(form.windowTitle(), QStringLiteral("Panomat Set v1.10    FW: v1.02"));
    QVERIFY(find<QProgressBar>(form, QStringLiteral("ProgressBar1"))->isHidden());
    QVERIFY(find<QGroupBox>(form, QStringLiteral("sys_setting"))->isEnabled());
    QVERIFY(find<QGroupBox>(form, QStringLiteral("frame_control(3)"))->isEnabled());
    const WaitBytes& w = form.w;
    QCOMPARE(w.wait_status + w.wait_net_read + w.wait_bezel + w.wait_io, 0);

    // What the window shows of the controller.
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(1)"))->isHidden());
    QVERIFY(find<QPushButton>(form, QStringLiteral("power_ctl(0)"))->isHidden());
    QCOMPARE(form.ui.cbo_model->currentIndex(), 0);
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_ch4_bypass(1)"))->isChecked());
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_bezel(1)"))->isChecked());
    QCOMPARE(form.ui.cbo_ip_type->currentText(), QStringLiteral("STATIC"));
    QCOMPARE(form.ui.txt_ip->text(), QStringLiteral("127.000.000.002"));
    QCOMPARE(form.ui.txt_net->text(), QStringLiteral("255.255.255.000"));
    QCOMPARE(form.ui.txt_gate->text(), QStringLiteral("127.000.000.001"));
    QVERIFY(form.ui.txt_ip->isEnabled());
    QCOMPARE(form.ui.cbo_val_V[4]->currentText(), QStringLiteral(" 10"));
    QCOMPARE(form.ui.cbo_reso->currentText(), QStringLiteral("1080p60"));
    QCOMPARE(form.ui.cbo_osd_time->currentText(), QStringLiteral("10"));
    QCOMPARE(form.ui.cbo_osd_gain->currentText(), QStringLiteral("2"));
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_mute(0)"))->isChecked());

    // "Refresh" reads the same again; the options and lists set by it send nothing.
    device.clear();
    driver::click(find<QPushButton>(form, QStringLiteral("btn_sys_refresh")));
    QCOMPARE(device.lines(), RefreshReads);
}

void TestReadBack::refreshWaitsForEachReplyWithPanelsLocked()
{
    FakeController device(QStringLiteral("127.12.2.1"));
    device.answerLikeController();
    device.silence(QStringLiteral("RBEZ"));
    MessageBoxAnswerer boxes;
    boxes.hold(true);
    Form1 form;
    driver::listDevices(form, {device.address()});
    auto* progress = find<QProgressBar>(form, QStringLiteral("ProgressBar1"));
    auto lockedFrames = [&form] {
        int locked = 0;
        for (const char* frame : {"net_config", "con_interface", "sys_setting", "frame_control(2)"})
            locked += find<QGroupBox>(form, QLatin1String(frame))->isEnabled() ? 0 : 1;
        return locked;
    };
    QStringList sentWhileWaiting;
    int statusWhileWaiting = -1, progressWhileWaiting = -1, lockedWhileWaiting = 0;
    driver::when(&form, [&] { return device.lines().value(4) == QLatin1String("RBEZ"); }, [&] {
        QTimer::singleShot(200, &form, [&] {
            sentWhileWaiting = device.lines();
            statusWhileWaiting = form.w.wait_status;
            progressWhileWaiting = progress->isHidden() ? -1 : progress->value();
            lockedWhileWaiting = lockedFrames();
            device.push("BEZE000\r\n");
        });
    });
    int progressAtBox = -1, lockedAtBox = 0;
    driver::when(&form, [&] { return !boxes.seen().isEmpty(); }, [&] {
        progressAtBox = progress->value();
        lockedAtBox = lockedFrames();
        boxes.pressNow();
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));

    // Nothing goes out before the awaited reply has come.
    QCOMPARE(sentWhileWaiting, (QStringList{"SOSDI", "RPOW", "RMDN", "RBY", "RBEZ"}));
    QCOMPARE(statusWhileWaiting, 4);
    QCOMPARE(progressWhileWaiting, 0);
    QCOMPARE(lockedWhileWaiting, 4);
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    QCOMPARE(progressAtBox, 100);
    QCOMPARE(lockedAtBox, 4); // until the box is closed
    QCOMPARE(lockedFrames(), 0);
    QVERIFY(progress->isHidden());
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_bezel(0)"))->isChecked());
    QCOMPARE(device.lines().size(), 1 + RefreshReads.size());
}

void TestReadBack::repliesAtWrongStepOrJoinedAreIgnored()
{
    FakeController device(QStringLiteral("127.12.3.1"));
    device.answerLikeController();
    device.silence(QStringLiteral("RPOW"));
    device.silence(QStringLiteral("RMDN"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {device.address(), QStringLiteral("127.12.3.2")});
    form.ui.cbo_model->setCurrentIndex(1);
    int stepAfterWrongReplies = -1, modelAfterWrongReplies = -1;
    driver::when(&form, [&] { return device.lines().value(1) == QLatin1String("RPOW"); }, [&] {
        device.push("MODN000\r\n"); // the model reply while power is awaited
        QTimer::singleShot(100, &form, [&] {
            device.push("XXXX001\r\n");
            QTimer::singleShot(100, &form, [&] {
                stepAfterWrongReplies = form.w.wait_status;
                modelAfterWrongReplies = form.ui.cbo_model->currentIndex();
                // Two replies in one chunk: only the first is seen, the second is lost.
                device.push("POWE000\r\nMODN000\r\n");
            });
        });
    });
    int stepAfterJoined = -1, modelAfterJoined = -1;
    driver::when(&form, [&] { return device.lines().value(2) == QLatin1String("RMDN"); }, [&] {
        QTimer::singleShot(200, &form, [&] {
            stepAfterJoined = form.w.wait_status;
            modelAfterJoined = form.ui.cbo_model->currentIndex();
            device.push("MODN000\r\n");
        });
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(stepAfterWrongReplies, 1);
    QCOMPARE(modelAfterWrongReplies, 1);
    QCOMPARE(stepAfterJoined, 2);
    QCOMPARE(modelAfterJoined, 1);
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    QCOMPARE(form.ui.cbo_model->currentIndex(), 0);
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(2)"))->isHidden());
}

void TestReadBack::statusValues_data()
{
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("title");
    QTest::newRow("power value 2 is on") << "RPOW" << "POWE002\r\n" << "Panomat Set v1.10    FW: v1.02";
    QTest::newRow("five characters only") << "RVER" << "VERS1" << "Panomat Set v1.10    FW: v1.";
}

void TestReadBack::statusValues()
{
    QFETCH(QString, keyword);
    QFETCH(QString, answer);
    QFETCH(QString, title);
    FakeController device(QStringLiteral("127.12.4.1"));
    device.answerLikeController();
    device.silence(keyword);
    QObject::connect(&device, &FakeController::lineReceived, &device, [&](const QString& line) {
        if (line == keyword)
            device.push(answer.toLatin1()); // exactly these bytes, nothing added
    });
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {device.address()});
    QCOMPARE(form.windowTitle(), title);
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(1)"))->isHidden());
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
}

void TestReadBack::modelOutsideListStopsStatusRead()
{
    FakeController device(QStringLiteral("127.12.4.2"));
    device.answerLikeController();
    device.reply(QStringLiteral("RMDN"), QStringLiteral("MODN009"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {device.address()});
    QStringList sent;
    int step = -1;
    driver::when(&form, [&] { return device.lines().contains(QLatin1String("RMDN")); }, [&] {
        QTimer::singleShot(200, &form, [&] {
            sent = device.lines();
            step = form.w.wait_status;
            form.close(); // the read would wait for ever
        });
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(sent, (QStringList{"SOSDI", "RPOW", "RMDN"}));
    QCOMPARE(step, 2); // the list's range error ended the handler before the step
    QCOMPARE(form.ui.cbo_model->currentIndex(), -1);
    QVERIFY(boxes.texts().isEmpty());
}

void TestReadBack::dhcpModeDisablesAddressBoxes()
{
    FakeController device(QStringLiteral("127.12.5.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RIPM"), QStringLiteral("IPMD000"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    QCOMPARE(form.ui.cbo_ip_type->currentText(), QStringLiteral("DHCP"));
    QVERIFY(!form.ui.txt_ip->isEnabled());
    QVERIFY(!form.ui.txt_gate->isEnabled());
    QCOMPARE(form.ui.txt_ip->text(), QStringLiteral("127.000.000.002")); // filled all the same
}

void TestReadBack::staticSetIpWritesFiveLinesThenGoesOffline()
{
    FakeController device(QStringLiteral("127.12.6.1"));
    device.answerLikeController();
    const std::pair<const char*, const char*> acks[] = {
        {"SIPM", "IPMD001"}, {"SIPA", "IPA0"}, {"SMAA", "MAA0"}, {"SGAA", "GAA0"}, {"SREL", "RELI"}};
    for (auto [keyword, answer] : acks)
        device.reply(QLatin1String(keyword), QLatin1String(answer));
    device.silence(QStringLiteral("SMAA"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    form.ui.txt_ip->setText(QStringLiteral("127.012.006.009"));
    form.ui.txt_net->setText(QStringLiteral("255.0.0.0"));
    form.ui.txt_gate->clear();
    int sentWhileWaiting = -1, stepAfterWrongAck = -1;
    driver::when(&form, [&] { return device.lines().size() == 3; }, [&] {
        QTimer::singleShot(200, &form, [&] {
            sentWhileWaiting = int(device.lines().size());
            device.push("GAA0\r\n"); // the wrong acknowledgement changes nothing
            QTimer::singleShot(100, &form, [&] {
                stepAfterWrongAck = form.w.wait_net_set;
                device.push("MAA0\r\n");
            });
        });
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_set")));
    QCOMPARE(sentWhileWaiting, 3); // the gateway waits for the mask's acknowledgement
    QCOMPARE(stepAfterWrongAck, 3);
    QCOMPARE(device.lines(), (QStringList{"SIPM 1", "SIPA 127.012.006.009", "SMAA 255.0.0.0", "SGAA ", "SREL"}));
    QCOMPARE(boxes.texts(), QStringList{"Set STATIC IP completed, please re-link the ethernet !"});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Information);
    QVERIFY(!form.is_connected);
    QCOMPARE(form.w.wait_net_set, quint8(0));
    QTRY_COMPARE(device.connectionCount(), 0);
}

void TestReadBack::dhcpSetIpAndRelink()
{
    FakeController device(QStringLiteral("127.12.7.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RIPM"), QStringLiteral("IPMD000"));
    device.reply(QStringLiteral("SIPM"), QStringLiteral("IPMD000"));
    device.reply(QStringLiteral("SREL"), QStringLiteral("RELI"));
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_set")));
    QCOMPARE(device.lines(), (QStringList{"SIPM 0", "SREL"}));
    QCOMPARE(boxes.texts(), QStringList{"Set DHCP completed, please re-link the ethernet !"});
    QVERIFY(!form.is_connected);

    connectAll(form, {&device}, boxes);
    driver::click(find<QPushButton>(form, QStringLiteral("btn_ip_relink")));
    QCOMPARE(device.lines(), QStringList{"SREL"});
    QVERIFY(boxes.texts().isEmpty());
    QVERIFY(!form.is_connected);
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("net_config"))->isEnabled());
}

void TestReadBack::ioValues_data()
{
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("list");
    QTest::addColumn<int>("index");
    QTest::newRow("native") << "RRES" << "RESO016" << "cbo_reso" << 16;
    QTest::newRow("timeout offset") << "ROSDT" << "OSDT010" << "cbo_osd_time" << 8;
    QTest::newRow("timeout below list clears") << "ROSDT" << "OSDT001" << "cbo_osd_time" << -1;
    QTest::newRow("display on") << "ROSDD" << "OSDD001" << "cbo_info_play" << 1;
    QTest::newRow("h offset") << "ROSDH" << "OSDH020" << "cbo_osd(0)" << 20;
    QTest::newRow("v offset") << "ROSDV" << "OSDV000" << "cbo_osd(1)" << 0;
    QTest::newRow("gain") << "ROSDG" << "OSDG010" << "cbo_osd_gain" << 10;
}

void TestReadBack::ioValues()
{
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
    QCOMPARE(form.w.wait_io, quint8(0));
    QVERIFY(find<QPushButton>(form, QStringLiteral("btn_io_rst(0)"))->isEnabled());
}

void TestReadBack::ioValueOutsideListKeepsReadWaiting()
{
    FakeController device(QStringLiteral("127.12.9.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    device.reply(QStringLiteral("RRES"), QStringLiteral("RESO017"));
    QStringList sent;
    int step = -1, stepAfterLaterReply = -1, resolution = -1;
    bool refreshEnabled = true;
    driver::when(&form, [&] { return !device.lines().isEmpty(); }, [&] {
        QTimer::singleShot(200, &form, [&] {
            sent = device.lines();
            step = form.w.wait_io;
            refreshEnabled = find<QPushButton>(form, QStringLiteral("btn_io_rst(0)"))->isEnabled();
            resolution = form.ui.cbo_reso->currentIndex();
            device.push("OSDH003\r\n"); // a later step's reply does not help either
            QTimer::singleShot(100, &form, [&] {
                stepAfterLaterReply = form.w.wait_io;
                form.close();
            });
        });
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_io_rst(0)")));
    QCOMPARE(sent, QStringList{"RRES"});
    QCOMPARE(step, 1);
    QVERIFY(!refreshEnabled);
    QCOMPARE(resolution, 6); // unchanged since the refresh
    QCOMPARE(stepAfterLaterReply, 1);
}

void TestReadBack::osdResetAnswerChoosesTargets_data()
{
    QTest::addColumn<bool>("yes");
    QTest::newRow("Yes: every listed controller") << true;
    QTest::newRow("No: the selected one") << false;
}

void TestReadBack::osdResetAnswerChoosesTargets()
{
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
    // The defaults show before the controller answers.
    QList<int> shownWhileWaiting;
    bool muteOff = false;
    int step = -1;
    driver::when(&form, [&] { return first.lines() == QStringList{"SOSDR"}; }, [&] {
        step = form.w.wait_osd_reset;
        for (QComboBox* list : {form.ui.cbo_reso, form.ui.cbo_info_play, form.ui.cbo_osd_time,
                                form.ui.cbo_osd[0], form.ui.cbo_osd[1], form.ui.cbo_osd_gain})
            shownWhileWaiting << list->currentIndex();
        muteOff = find<QRadioButton>(form, QStringLiteral("opt_mute(0)"))->isChecked();
        QTimer::singleShot(100, &form, [&] { first.push("OSDR\r\n"); });
    });
    driver::click(find<QPushButton>(form, QStringLiteral("btn_io_rst(1)")));
    QCOMPARE(step, 1);
    QCOMPARE(shownWhileWaiting, (QList<int>{6, 0, 0, 5, 5, 2}));
    QVERIFY(muteOff);
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

void TestReadBack::bezelSendWaitsForEachAcknowledgement()
{
    FakeController device(QStringLiteral("127.12.11.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("SCBH"), acknowledgeBezel);
    device.reply(QStringLiteral("SCBV"), acknowledgeBezel);
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    const int values[] = {0, 5, 255, 10, 20, 30, 40, 7};
    for (int n = 1; n <= 4; ++n) {
        form.ui.cbo_val_H[n]->setCurrentIndex(values[n - 1]);
        form.ui.cbo_val_V[n]->setCurrentIndex(values[n + 3]);
    }
    // The first acknowledgement names the wrong output: the sequence stays at step 1.
    device.reply(QStringLiteral("SCBH"), QStringLiteral("CBHC002"));
    QStringList sentWhileWaiting;
    int stepWhileWaiting = -1;
    driver::when(&form, [&] { return !device.lines().isEmpty(); }, [&] {
        QTimer::singleShot(200, &form, [&] {
            sentWhileWaiting = device.lines();
            stepWhileWaiting = form.w.wait_bezel_set;
            device.reply(QStringLiteral("SCBH"), acknowledgeBezel);
            device.push("CBHC001\r\n");
        });
    });
    driver::click(form.ui.btn_H_Bezel_send);
    QCOMPARE(sentWhileWaiting, QStringList{"SCBH 1 0"});
    QCOMPARE(stepWhileWaiting, 1);
    QCOMPARE(device.lines(), (QStringList{"SCBH 1 0", "SCBH 2 5", "SCBH 3 255", "SCBH 4 10", "SCBV 1 20",
                                          "SCBV 2 30", "SCBV 3 40", "SCBV 4 7", "RBEZ"}));
    QCOMPARE(form.w.wait_status, quint8(0));
    QCOMPARE(form.w.wait_bezel_set, quint8(0));

    device.clear();
    driver::click(form.ui.btn_V_Bezel_send);
    QTest::qWait(100);
    QVERIFY(device.lines().isEmpty());
}

void TestReadBack::bezelRefreshReadsLongLayout()
{
    FakeController device(QStringLiteral("127.12.12.1"));
    device.answerLikeController();
    auto value = [](const QString& line) {
        const int n = line.section(u' ', 1, 1).toInt();
        const char* key = line.startsWith(QLatin1String("RCBH")) ? "CBHV" : "CBVV";
        const int v = line.startsWith(QLatin1String("RCBH")) ? n * 7 : 250 + n;
        return QStringLiteral("%1%2  %1%3").arg(QLatin1String(key)).arg(n).arg(v, 3, 10, QLatin1Char('0')).toLatin1();
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
    // A value beyond the list stops the read at that step.
    device.reply(QStringLiteral("RCBH"), QStringLiteral("CBHV1  CBHV256"));
    device.clear();
    int step = -1;
    driver::when(&form, [&] { return !device.lines().isEmpty(); }, [&] {
        QTimer::singleShot(150, &form, [&] {
            step = form.w.wait_bezel;
            form.close();
        });
    });
    driver::click(form.ui.btn_panomat_refresh);
    QCOMPARE(device.lines(), QStringList{"RCBH 1"});
    QCOMPARE(step, 1);
}

void TestReadBack::bezelResetShowsDefaultsAtOnce()
{
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
    QStringList shownWhileWaiting;
    int step = -1;
    driver::when(&form, [&] { return !device.lines().isEmpty(); }, [&] {
        for (int n = 1; n <= 4; ++n)
            shownWhileWaiting << form.ui.cbo_val_H[n]->currentText() << form.ui.cbo_val_V[n]->currentText();
        step = form.w.wait_wall_default;
        device.push("WDEF\r\n");
    });
    driver::click(form.ui.btn_panomat_reset);
    QCOMPARE(shownWhileWaiting, QStringList(8, QStringLiteral(" 10")));
    QCOMPARE(step, 1);
    QVERIFY(find<QRadioButton>(form, QStringLiteral("opt_ch4_bypass(0)"))->isChecked());
    QCOMPARE(form.w.wait_status, quint8(0));
    QCOMPARE(form.w.wait_wall_default, quint8(0));
    QTest::qWait(100);
    QCOMPARE(device.lines(), (QStringList{"SWDE", "RBY"})); // the option set by the read sends nothing
}

void TestReadBack::bezelSendRefusedWhileRefreshRuns()
{
    FakeController device(QStringLiteral("127.12.14.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&device}, boxes);
    device.silence(QStringLiteral("RCBH"));
    QStringList sentAfterSend;
    int sendStep = -1;
    driver::when(&form, [&] { return !device.lines().isEmpty(); }, [&] {
        form.ui.btn_H_Bezel_send->click();
        QTimer::singleShot(200, &form, [&] {
            sentAfterSend = device.lines();
            sendStep = form.w.wait_bezel_set;
            device.speak(QStringLiteral("RCBH"));
            device.push("CBHV1  CBHV005\r\n");
        });
    });
    driver::click(form.ui.btn_panomat_refresh);
    QCOMPARE(sentAfterSend, QStringList{"RCBH 1"});
    QCOMPARE(sendStep, 0);
    QVERIFY(boxes.texts().isEmpty());
    QCOMPARE(form.ui.cbo_val_H[1]->currentText(), QStringLiteral(" 5"));
    QCOMPARE(device.lines().size(), 8);
}

void TestReadBack::bezelOnOffSwitch()
{
    FakeController first(QStringLiteral("127.12.15.1"));
    FakeController second(QStringLiteral("127.12.15.2"));
    first.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAll(form, {&first, &second}, boxes);
    QTRY_COMPARE(second.connectionCount(), 1);
    driver::click(find<QRadioButton>(form, QStringLiteral("opt_bezel(0)")));
    QTRY_COMPARE(first.lines(), QStringList{"SBEZ 0"});
    find<QCheckBox>(form, QStringLiteral("Check1(2)"))->setChecked(true);
    driver::click(find<QRadioButton>(form, QStringLiteral("opt_bezel(1)")));
    QTRY_COMPARE(second.lines(), QStringList{"SBEZ 1"});
    QTRY_COMPARE(first.lines(), (QStringList{"SBEZ 0", "SBEZ 1"}));
    form.w.wait_status = 3; // a status read is setting the options
    driver::click(find<QRadioButton>(form, QStringLiteral("opt_bezel(0)")));
    QTest::qWait(100);
    QCOMPARE(first.lines().size(), 2);
    form.w.wait_status = 0;
    first.stopListening();
    QTRY_VERIFY(!form.linkUp());
    driver::click(find<QRadioButton>(form, QStringLiteral("opt_bezel(1)")));
    QCOMPARE(boxes.texts(), QStringList{"Ethernet is disconnected !"});
    QVERIFY(!form.is_connected);
}

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestReadBack test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_readback.moc"
