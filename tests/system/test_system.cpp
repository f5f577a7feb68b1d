#include "support/bench.h"

#include <QSignalSpy>

// Power, model number, factory reset and the controller's network settings. Each test uses its own
// addresses in 127.42.0.0/16.
class TestSystem : public QObject {
    Q_OBJECT
private slots:
    void buttons_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("allIp"); // the button's own "ALL IP" box ticked
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

    // Only the selected controller's reply ends the wait. Power on and factory reset give the link
    // up, the reset before its message; nothing asks first.
    void buttons() {
        QFETCH(QString, button);
        QFETCH(bool, allIp);
        QFETCH(QString, command);
        QFETCH(bool, online);
        QFETCH(QString, message);
        Bench bench("127.42.2.1", 3);
        bench.connect(1);
        bench.ui.Check1[button == "btn_sys_fac_rst" ? 1 : 0]->setChecked(allIp);
        bool onlineAtMessage = online;
        bench.boxes.hold(true);
        driver::when(
            &bench.form, [&] { return !bench.boxes.texts().isEmpty(); },
            [&] {
                onlineAtMessage = bench.form.services().linkUp();
                bench.boxes.pressNow();
            });
        driver::click(driver::find<QPushButton>(bench.form, button)); // hidden ones too
        QCOMPARE(bench.form.services().linkUp(), online);
        QCOMPARE(bench.boxes.texts(), message.isNull() ? QStringList() : QStringList{message});
        QCOMPARE(onlineAtMessage, online);
        if (!message.isNull())
            QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
        const QStringList sent = command.isNull() ? QStringList() : QStringList{command};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(bench.lines(i), i == 1 || allIp ? sent : QStringList());
    }

    // The model number goes to the selected controller whatever the boxes say, never while the
    // status read sets the list.
    void model() {
        Bench bench("127.42.3.1", 3);
        bench.connect(1);
        setSetting(bench.device(1), "model", 2);
        for (QCheckBox* box : bench.ui.Check1)
            box->setChecked(true);
        driver::click(bench.ui.btn_sys_refresh);
        QCOMPARE(bench.ui.cbo_model->currentIndex(), 2);
        QCOMPARE(bench.lines(1).filter("SMDN"), QStringList());
        driver::pick(bench.ui.cbo_model, 1);
        QCOMPARE(bench.lines(1), QStringList{"SMDN 1"});
        QCOMPARE(bench.lines(0), QStringList());
    }

    // Mode, address, mask, gateway, restart, each only after its own acknowledgement (a "GAA0" for
    // the mask leaves it waiting), the boxes as typed.
    void staticAddressWritesFiveLinesThenGoesOffline() {
        Bench bench("127.42.6.1", 1);
        bench.connect();
        bench.answer(0, "SMAA", {});
        bench.answer(0, "SGAA",
                     "GAA0\r\n"); // the controller leaves an empty one unanswered
        bench.ui.txt_ip->setText(QStringLiteral("127.042.006.009"));
        bench.ui.txt_net->setText(QStringLiteral("255.0.0.0"));
        bench.ui.txt_gate->clear();
        QList<int> counts;
        bench.onLine(0, "SMAA 255.0.0.0", [&] {
            bench.feed(0, {"GAA0\r\n", "MAA0\r\n"},
                       [&] { counts << int(bench.device().received().size()); });
        });
        driver::click(bench.ui.btn_ip_set);
        QCOMPARE(counts, (QList<int>{3, 3}));
        QCOMPARE(bench.device().received(), (QList<QByteArray>{"SIPM 1", "SIPA 127.042.006.009",
                                                               "SMAA 255.0.0.0", "SGAA ", "SREL"}));
        QCOMPARE(bench.boxes.texts(),
                 QStringList{"Set STATIC IP completed, please re-link the ethernet !"});
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Information);
        QVERIFY(!bench.form.services().isConnected());
    }

    // A DHCP controller's boxes are filled but not usable. Set sends the mode and the restart;
    // Re-link the restart alone, and goes offline without a word.
    void dhcpAndRelink() {
        Bench bench("127.42.7.1", 1);
        setSetting(bench.device(), "network.mode", 0);
        bench.connect();
        QCOMPARE(bench.ui.cbo_ip_type->currentText(), QStringLiteral("DHCP"));
        QVERIFY(!bench.ui.txt_ip->isEnabled());
        QCOMPARE(bench.ui.txt_ip->text(), QStringLiteral("127.042.007.001"));
        QSignalSpy restarted(&bench.device(), &sim::VirtualController::restarted);
        driver::click(bench.ui.btn_ip_set);
        QCOMPARE(bench.device().received(), (QList<QByteArray>{"SIPM 0", "SREL"}));
        QCOMPARE(bench.boxes.texts(),
                 QStringList{"Set DHCP completed, please re-link the ethernet !"});
        QVERIFY(!bench.form.services().isConnected());
        QTRY_COMPARE(restarted.count(), 1); // then it is back where it was
        bench.connect();
        driver::click(bench.ui.btn_ip_relink);
        QCOMPARE(bench.device().received(), QList<QByteArray>{"SREL"});
        QVERIFY(bench.boxes.texts().isEmpty() && !bench.form.services().isConnected());
    }
};

QTEST_MAIN(TestSystem)
#include "test_system.moc"
