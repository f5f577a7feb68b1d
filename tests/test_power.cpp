#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QPushButton>

// Power, model number and factory reset. Each test uses its own addresses in 127.42.0.0/16.
class TestPower : public QObject {
    Q_OBJECT
public:
    static void initMain() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
private slots:
    void buttons_data();
    void buttons();
    void modelAndLinkDown();
};

namespace {

// Three controllers, the second selected and answering, the refresh done.
struct Bench {
    explicit Bench(const QString& net)
        : devices{FakeController(net + '1'), FakeController(net + '2'), FakeController(net + '3')} {
        devices[1].answerLikeController();
        devices[1].reply("SPOW", [](auto line) { return "POWE00" + line.toLatin1().right(1); });
        devices[1].reply("SDEF", "DEFA");
        driver::listDevices(form, {net + '1', net + '2', net + '3'});
        form.ui.cbo_ipaddr->setCurrentIndex(1);
        driver::click(form.ui.btn_con);
        devices[1].clear();
        boxes.clear();
    }
    // Compares what each controller got since the last call, up to a marker sent to all
    // while the link is up.
    void expect(const QStringList& toSelected, bool toAll) {
        const QStringList mark = form.session().linkUp() ? QStringList{"MARK"} : QStringList();
        form.session().sendAll("MARK\r\n"); // sends nothing when offline
        for (int i = 0; i < 3; ++i) {
            QTRY_COMPARE(devices[i].lines(), (i == 1 || toAll ? toSelected : QStringList()) + mark);
            devices[i].clear();
        }
    }

    std::array<FakeController, 3> devices;
    MessageBoxAnswerer boxes;
    Form1 form;
};

} // namespace

void TestPower::buttons_data() {
    // allIp: the button's own "ALL IP" box ticked.
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("allIp");
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("online"); // afterwards
    QTest::addColumn<QString>("message");
    const QString none, state = "Click Refresh to Get Power Status !",
                        done = "Reset completed ! Please reconnect the ethernet !";
    QTest::newRow("power state") << "power_ctl(0)" << true << none << true << state;
    QTest::newRow("power ON") << "power_ctl(1)" << false << "SPOW 1" << false << none;
    QTest::newRow("power ON, ALL IP") << "power_ctl(1)" << true << "SPOW 1" << false << none;
    QTest::newRow("power OFF") << "power_ctl(2)" << false << "SPOW 0" << true << none;
    QTest::newRow("reset") << "btn_sys_fac_rst" << false << "SDEF" << false << done;
    QTest::newRow("reset, ALL IP") << "btn_sys_fac_rst" << true << "SDEF" << false << done;
}

// Only the selected controller's reply ends the wait. Power on and factory reset give the
// link up, the reset before its message; nothing asks first.
void TestPower::buttons() {
    QFETCH(QString, button);
    QFETCH(bool, allIp);
    QFETCH(QString, command);
    QFETCH(bool, online);
    QFETCH(QString, message);
    Bench bench("127.42.2.");
    const bool reset = button == "btn_sys_fac_rst";
    const quint8& wait = reset ? bench.form.w.wait_default : bench.form.w.wait_status;
    bench.form.ui.Check1[reset ? 1 : 0]->setChecked(allIp);
    bool onlineAtMessage = online;
    bench.boxes.hold(true);
    const auto shown = [&] { return !bench.boxes.texts().isEmpty(); };
    driver::when(&bench.form, shown, [&] {
        onlineAtMessage = bench.form.session().linkUp();
        bench.boxes.pressNow();
    });

    driver::click(driver::find<QPushButton>(bench.form, button)); // hidden ones too
    QCOMPARE(wait, quint8(0));
    QCOMPARE(bench.form.session().linkUp(), online);
    QCOMPARE(bench.boxes.texts(), message.isNull() ? QStringList() : QStringList{message});
    QCOMPARE(onlineAtMessage, online);
    if (!message.isNull())
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
    bench.expect(command.isNull() ? QStringList() : QStringList{command}, allIp);
}

// The model number goes to the selected controller whatever the boxes say, never while
// the status read sets the list. With the link down the factory reset's wait stays armed.
void TestPower::modelAndLinkDown() {
    Bench bench("127.42.3.");
    bench.devices[1].reply("RMDN", "MODN002");
    for (QCheckBox* box : bench.form.ui.Check1)
        box->setChecked(true);
    driver::click(bench.form.ui.btn_sys_refresh);
    QCOMPARE(bench.form.ui.cbo_model->currentIndex(), 2);
    QVERIFY(bench.devices[1].lines().filter("SMDN").isEmpty());
    bench.devices[1].clear();
    driver::pick(bench.form.ui.cbo_model, 2);
    bench.expect({"SMDN 2"}, false);

    bench.boxes.clear();
    bench.devices[1].dropConnections();
    QTRY_VERIFY(!bench.form.session().linkUp());
    driver::click(bench.form.ui.btn_sys_fac_rst);
    QCOMPARE(bench.form.w.wait_default, quint8(1));
    driver::pick(bench.form.ui.cbo_model, 1);
    QCOMPARE(bench.boxes.texts(), QStringList(2, "Ethernet is disconnected !"));
    QCOMPARE(bench.form.ui.cbo_model->currentIndex(), -1);
}

QTEST_MAIN(TestPower)
#include "test_power.moc"
