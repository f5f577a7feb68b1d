#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include "virtualcontroller.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QTest>

// Power, model number and factory reset. Each test uses its own address in 127.42.0.0/16.
class TestPower : public QObject {
    Q_OBJECT
private slots:
    void powerStatusOnlyInforms();
    void powerSwitch_data();
    void powerSwitch();
    void modelNumber();
    void factoryReset_data();
    void factoryReset();
    void factoryResetLinkDown();
    void withVirtualController();
};

namespace {

// Three controllers, the second selected, the refresh done; lines cleared.
struct Bench {
    Bench(const QString& net) {
        QStringList addresses;
        for (int i = 1; i <= 3; ++i) {
            devices.push_back(std::make_unique<FakeController>(net + QString::number(i)));
            devices.back()->answerLikeController();
            devices.back()->reply(QStringLiteral("SPOW"), [](const QString& line) {
                return line.endsWith(u'1') ? QByteArray("POWE001") : QByteArray("POWE000");
            });
            devices.back()->reply(QStringLiteral("SDEF"), QStringLiteral("DEFA"));
            addresses << devices.back()->address();
        }
        driver::listDevices(form, addresses);
        form.ui.cbo_ipaddr->setCurrentIndex(1);
        driver::click(form.ui.btn_con);
        form.show();
        for (auto& device : devices) {
            QTRY_COMPARE(device->connectionCount(), 1);
            device->clear();
        }
        boxes.clear();
    }
    // Lines each controller got before a marker sent to all after the action.
    QList<QStringList> linesUpToMarker() {
        form.sendAll("MARK\r\n");
        QList<QStringList> all;
        for (auto& device : devices) {
            if (!QTest::qWaitFor([&] { return device->lines().contains(QStringLiteral("MARK")); }))
                return {};
            all << device->lines();
            all.last().removeAll(QStringLiteral("MARK"));
        }
        return all;
    }
    QList<QStringList> sentTo(bool all, const QString& line) {
        const QStringList sent{line};
        return {all ? sent : QStringList(), sent, all ? sent : QStringList()};
    }

    std::vector<std::unique_ptr<FakeController>> devices;
    MessageBoxAnswerer boxes;
    Form1 form;
};

void whenReceived(FakeController& device, const QString& line, std::function<void()> check) {
    QObject::connect(&device, &FakeController::lineReceived, &device, [=](const QString& got) {
        if (got == line)
            check();
    });
}

} // namespace

void TestPower::powerStatusOnlyInforms() {
    Bench bench(QStringLiteral("127.42.1."));
    bench.form.ui.Check1[0]->setChecked(true);
    bench.form.ui.power_ctl[0]->click(); // hidden once the power state is known
    QCOMPARE(bench.boxes.texts(),
             QStringList{QStringLiteral("Click Refresh to Get Power Status !")});
    QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
    QCOMPARE(bench.linesUpToMarker(), (QList<QStringList>(3)));
}

void TestPower::powerSwitch_data() {
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("allIp");
    QTest::newRow("ON") << true << false;
    QTest::newRow("ON, ALL IP") << true << true;
    QTest::newRow("OFF") << false << false;
    QTest::newRow("OFF, ALL IP") << false << true;
}

// Only the selected controller's "POWE" ends the wait. Power on gives the link up
// afterwards, power off keeps it.
void TestPower::powerSwitch() {
    QFETCH(bool, on);
    QFETCH(bool, allIp);
    Bench bench(QStringLiteral("127.42.2."));
    Form1& form = bench.form;
    const QString command = on ? QStringLiteral("SPOW 1") : QStringLiteral("SPOW 0");
    bool waitingConnected = false;
    whenReceived(*bench.devices[1], command,
                 [&] { waitingConnected = form.w.wait_status == 1 && form.linkUp(); });
    form.ui.Check1[0]->setChecked(allIp);
    if (!on) { // the refresh showed "Power ON"; the button for off shows after a power-off read
        form.ui.power_ctl[2]->setVisible(true);
        form.ui.power_ctl[1]->setVisible(false);
    }

    driver::click(form.ui.power_ctl[on ? 1 : 2]);
    QVERIFY(waitingConnected);
    QCOMPARE(form.w.wait_status, quint8(0));
    QCOMPARE(form.linkUp(), !on);
    QCOMPARE(form.ui.frame_control[0]->isEnabled(), !on);
    QCOMPARE(form.ui.power_ctl[0]->isVisible(), on);
    QVERIFY(bench.boxes.texts().isEmpty());
    if (on) {
        QTRY_COMPARE(bench.devices[1]->connectionCount(), 0);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(bench.devices[i]->lines(), bench.sentTo(allIp, command)[i]);
    } else {
        QVERIFY(form.ui.power_ctl[2]->isVisible()); // the reply "POWE000" was shown
        QCOMPARE(bench.linesUpToMarker(), bench.sentTo(allIp, command));
    }
}

// The model number goes to the selected controller whatever Check1 says, never while
// the status read fills the list, and a dropped link clears the list's selection.
void TestPower::modelNumber() {
    Bench bench(QStringLiteral("127.42.3."));
    Form1& form = bench.form;
    bench.devices[1]->reply(QStringLiteral("RMDN"), QStringLiteral("MODN002"));
    form.ui.Check1[0]->setChecked(true);
    form.ui.Check1[1]->setChecked(true);
    driver::click(form.ui.btn_sys_refresh); // sets the model list from "MODN002"
    QCOMPARE(form.ui.cbo_model->currentIndex(), 2);
    driver::pick(form.ui.cbo_model, 2);
    form.w.wait_status = 4;
    driver::pick(form.ui.cbo_model, 1);
    form.w.wait_status = 0;
    const QList<QStringList> lines = bench.linesUpToMarker();
    QCOMPARE(lines.value(0), QStringList());
    QCOMPARE(lines.value(1).filter(QStringLiteral("SMDN")), QStringList{QStringLiteral("SMDN 2")});
    QCOMPARE(lines.value(2), QStringList());

    bench.boxes.clear();
    bench.devices[1]->dropConnections();
    QTRY_VERIFY(!form.linkUp());
    driver::pick(form.ui.cbo_model, 1);
    QCOMPARE(bench.boxes.texts(), QStringList{QStringLiteral("Ethernet is disconnected !")});
    QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Critical);
    QCOMPARE(form.ui.cbo_model->currentIndex(), -1);
    QVERIFY(!form.ui.net_config->isEnabled());
}

void TestPower::factoryReset_data() {
    QTest::addColumn<bool>("allIp");
    QTest::newRow("selected") << false;
    QTest::newRow("ALL IP") << true;
}

// No question first; the message comes only after "DEFA" and after going offline.
void TestPower::factoryReset() {
    QFETCH(bool, allIp);
    Bench bench(QStringLiteral("127.42.4."));
    Form1& form = bench.form;
    form.ui.Check1[1]->setChecked(allIp);
    bool waiting = false;
    whenReceived(*bench.devices[1], QStringLiteral("SDEF"), [&] {
        waiting = form.w.wait_default == 1 && form.linkUp() && bench.boxes.texts().isEmpty();
    });
    bool offlineAtMessage = false;
    bench.boxes.hold(true);
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &form, [&] {
        if (!bench.boxes.texts().isEmpty()) {
            offlineAtMessage = !form.linkUp() && !form.ui.btn_sys_fac_rst->isEnabled();
            bench.boxes.pressNow();
        }
    });
    watch.start(5);

    driver::click(form.ui.btn_sys_fac_rst);
    QVERIFY(waiting);
    QCOMPARE(bench.boxes.texts(),
             QStringList{QStringLiteral("Reset completed ! Please reconnect the ethernet !")});
    QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
    QVERIFY(offlineAtMessage);
    QCOMPARE(form.w.wait_default, quint8(0));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(bench.devices[i]->lines(), bench.sentTo(allIp, QStringLiteral("SDEF"))[i]);
}

// The wait byte is armed before the link test and stays armed when it fails.
void TestPower::factoryResetLinkDown() {
    Bench bench(QStringLiteral("127.42.5."));
    bench.devices[1]->dropConnections();
    QTRY_VERIFY(!bench.form.linkUp());
    driver::click(bench.form.ui.btn_sys_fac_rst);
    QCOMPARE(bench.boxes.texts(), QStringList{QStringLiteral("Ethernet is disconnected !")});
    QCOMPARE(bench.form.w.wait_default, quint8(1));
    QVERIFY(!bench.form.ui.btn_sys_fac_rst->isEnabled());
}

void TestPower::withVirtualController() {
    sim::VirtualController controller(1);
    QVERIFY(controller.listen(QHostAddress(QStringLiteral("127.42.6.1"))));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {QStringLiteral("127.42.6.1"), QStringLiteral("127.42.6.2"),
                               QStringLiteral("127.42.6.3")});
    driver::click(form.ui.btn_con);
    form.show();
    driver::pick(form.ui.cbo_model, 2);
    QTRY_COMPARE(controller.state().model, 2);
    driver::click(form.ui.power_ctl[1]); // shown "Power ON": the click sends power on
    QVERIFY(!form.linkUp());
    driver::click(form.ui.btn_con);
    QVERIFY(form.ui.power_ctl[1]->isVisible());
    QCOMPARE(form.ui.cbo_model->currentIndex(), 2);

    form.ui.power_ctl[1]->setVisible(false);
    form.ui.power_ctl[2]->setVisible(true);
    driver::click(form.ui.power_ctl[2]);
    QVERIFY(!controller.state().power);
    QVERIFY(form.linkUp());
    boxes.clear();
    driver::click(form.ui.btn_sys_fac_rst);
    QCOMPARE(boxes.texts(),
             QStringList{QStringLiteral("Reset completed ! Please reconnect the ethernet !")});
    QTRY_VERIFY(controller.state().power);
    QVERIFY(controller.state().model != 2);
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestPower test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_power.moc"
