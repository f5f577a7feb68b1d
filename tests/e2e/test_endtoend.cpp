#include "support/bench.h"

#include <QRegularExpression>

namespace {

QString firmwareTitle(const sim::VirtualController& controller) {
    const qint64 firmware = setting(controller, "firmware");
    return QStringLiteral("Panomat Set v1.10    FW: v%1.%2")
        .arg(firmware / 100)
        .arg(firmware % 100, 2, 10, QLatin1Char('0'));
}

} // namespace

// The tool, the real search program beside it and virtual controllers, all in 127.22.0.0/16.
class TestEndToEnd : public QObject {
    Q_OBJECT
private slots:
    void searchListsConnectsAndReadsBack() {
        Bench bench("127.22.0.1", 3);
        qputenv("ZEDA_HOSTS",
                "127.22.0.1-127.22.0.6"); // three controllers, three absent hosts
        driver::click(bench.ui.btn_sys_search, 60);
        QCOMPARE(bench.form.services().addresses(), bench.addresses());
        QCOMPARE(bench.ui.cbo_ipaddr->count(), 3);
        const QRegularExpression mac(QStringLiteral("^([0-9A-F]{2}-){5}[0-9A-F]{2}$"));
        for (int i = 0; i < 3; ++i)
            QVERIFY2(mac.match(bench.ui.cbo_ipaddr->itemText(i)).hasMatch(),
                     qPrintable(bench.ui.cbo_ipaddr->itemText(i)));
        QCOMPARE(bench.boxes.texts(),
                 (QStringList{"Search MAC completed !", "Refresh completed !"}));
        // The search probed with "RVER"; then the tool's first line on the wire.
        QCOMPARE(bench.lines(0).mid(0, 3), (QStringList{"RVER", "SOSDI", "RPOW"}));
        QCOMPARE(bench.form.windowTitle(), firmwareTitle(bench.device(0)));

        bench.boxes.clear();
        driver::click(bench.ui.btn_con);
        QVERIFY(bench.form.services().isConnected());
        QCOMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        for (int i = 0; i < 3; ++i)
            QTRY_VERIFY(bench.device(i).connectionCount() >= 1);
        driver::pick(bench.ui.cbo_ipaddr, 2);
        QCOMPARE(bench.form.windowTitle(), firmwareTitle(bench.device(2)));
        QCOMPARE(bench.ui.cbo_model->currentIndex(), setting(bench.device(2), "model"));
        QCOMPARE(bench.ui.txt_ip->text(), QStringLiteral("127.022.000.003"));
    }
};

QTEST_MAIN(TestEndToEnd)

#include "test_endtoend.moc"
