// The traffic monitor, the connection states of the device list and the wait named in
// the status bar, against virtual controllers.

#include "commandhandler.h"
#include "link/trafficlog.h"
#include "monitor/trafficmonitor.h"
#include "protocol/command.h"
#include "support/bench.h"
#include "support/files.h"

#include <QTableView>

namespace {

const QStringList Addresses = {"127.69.0.1", "127.69.0.2"};

QStringList column(const QAbstractItemModel& rows, int column, const QString& direction) {
    QStringList texts;
    for (int r = 0; r < rows.rowCount(); ++r)
        if (rows.index(r, TrafficLog::Direction).data().toString() == direction)
            texts << rows.index(r, column).data().toString();
    return texts;
}

} // namespace

class TestMonitor : public QObject {
    Q_OBJECT

private slots:
    void init() {
        bench_ = std::make_unique<Bench>(Addresses.first(), 2);
        bench_->form.show();
        driver::listDevices(bench_->form, Addresses);
        driver::click(bench_->ui.btn_con);
        bench_->form.monitor().log().flush();
    }

    void cleanup() { bench_.reset(); }

    // Sent rows are the lines the controller received; received rows are its answers to
    // them, as a controller in the same state gives them.
    void recordsTheWireInOrder() {
        TrafficLog& log = bench_->form.monitor().log();
        const QList<QByteArray> lines = bench_->sim.controller(1)->received();
        QVERIFY(lines.size() > 20);
        QStringList sent, answers;
        sim::ControllerState replay =
            sim::ControllerState::factory(1, QHostAddress(Addresses[0]).toIPv4Address());
        for (const QByteArray& line : lines) {
            sent << visibleText(line + "\r\n");
            const QByteArray reply = sim::handleCommand(replay, line).reply;
            if (!reply.isEmpty())
                answers << visibleText(reply);
        }
        QCOMPARE(column(log, TrafficLog::Text, "sent"), sent);
        QCOMPARE(column(log, TrafficLog::Text, "received"), answers);
        const QStringList replyTimes = column(log, TrafficLog::ReplyTime, "received");
        QVERIFY(std::all_of(replyTimes.begin(), replyTimes.end(),
                            [](const QString& t) { return t.endsWith(" ms"); }));
        QVERIFY(column(log, TrafficLog::ReplyTime, "sent").join(QString()).isEmpty());
        QVERIFY(column(log, TrafficLog::Controller, "sent").first().endsWith(Addresses[0]));
    }

    void filtersBoundsAndSaves() {
        TrafficMonitor& monitor = bench_->form.monitor();
        auto* rows = monitor.findChild<QTableView*>("monitor_rows")->model();
        WindowServices& s = bench_->form.services();
        {
            // Opened when the rows are there already, it shows the newest.
            TrafficMonitor late(s, monitor.log());
            late.show();
            const QScrollBar* bar =
                late.findChild<QTableView*>("monitor_rows")->verticalScrollBar();
            QTRY_VERIFY(bar->maximum() > 0);
            QTRY_COMPARE(bar->value(), bar->maximum());
        }

        // Paused, lines are not kept, and counted.
        QTest::mouseClick(monitor.findChild<QPushButton*>("monitor_pause"), Qt::LeftButton);
        for (int i = 0; i < 5; ++i)
            s.link().write(0, "NOP\r\n");
        QCOMPARE(monitor.log().skipped(), 5);
        QCOMPARE(monitor.findChild<QLabel*>("monitor_dropped")->text(),
                 "5 rows not kept while paused");
        QTest::mouseClick(monitor.findChild<QPushButton*>("monitor_pause"), Qt::LeftButton);
        s.link().write(1, "RVER\r\n"); // the other controller
        QTRY_COMPARE(bench_->sim.controller(2)->received().size(), 1);
        QTRY_VERIFY(monitor.log().rowCount() > 0 && rows->rowCount() == monitor.log().rowCount());
        QComboBox* controller = monitor.findChild<QComboBox*>("monitor_controller");
        controller->setCurrentIndex(2);
        QTRY_COMPARE(rows->rowCount(), 2);
        QCOMPARE(rows->index(1, TrafficLog::Text).data().toString(), "VERS103\\r\\n");
        controller->setCurrentIndex(0);
        monitor.findChild<QLineEdit*>("monitor_filter")->setText("rbez");
        QCOMPARE(rows->rowCount(), 1);

        // A link another user planted at the name is replaced, not written through.
        QTemporaryDir dir;
        const PlantedLink planted;
        QVERIFY(planted.plantAt(dir.filePath("t.csv")) && monitor.saveTo(dir.filePath("t.csv")));
        QVERIFY(planted.untouched() && PlantedLink::replaced(dir.filePath("t.csv")));
        QCOMPARE(readFile(dir.filePath("t.csv")),
                 QByteArray("Time,Controller,Direction,Text,Reply after\n") +
                     rows->index(0, 0).data().toString().toLatin1() + "," +
                     rows->index(0, 1).data().toString().toLatin1() + ",sent,RBEZ\\r\\n,\n");
        QVERIFY(!monitor.saveTo(dir.filePath("no/such/folder/t.txt")));
        QVERIFY(bench_->boxes.texts().last().startsWith("Cannot save the traffic to"));

        // Lines the controller ignores: only the newest rows stay, the others are counted.
        monitor.findChild<QLineEdit*>("monitor_filter")->clear();
        const int before = monitor.log().rowCount();
        for (int i = 0; i < TrafficLog::MaxRows; ++i)
            s.link().write(0, "NOP\r\n");
        monitor.log().flush();
        QCOMPARE(monitor.log().rowCount(), TrafficLog::MaxRows);
        QCOMPARE(monitor.log().dropped(), before);
        QCOMPARE(rows->index(TrafficLog::MaxRows - 1, TrafficLog::Text).data().toString(),
                 "NOP\\r\\n");
    }

    void iconsFollowTheConnection() {
        QComboBox* devices = bench_->form.ui.cbo_ipaddr;
        auto tip = [devices](int i) { return devices->itemData(i, Qt::ToolTipRole).toString(); };
        auto icon = [devices](int i) { return devices->itemIcon(i).pixmap(16).toImage(); };
        QCOMPARE(tip(0), "127.69.0.1: connected");
        QCOMPARE(tip(1), "127.69.0.2: connected");
        QCOMPARE(devices->itemText(0), "02-00-00-00-00-00"); // the MAC, as listed
        const QImage connected = icon(1);

        bench_->sim.controller(2)->stop();
        QTRY_COMPARE(tip(1), "127.69.0.2: connection lost");
        QVERIFY(icon(1) != connected);
        QVERIFY(bench_->sim.controller(2)->listen(QHostAddress(Addresses[1])));
        driver::key(devices, Qt::Key_Down); // selecting it reconnects it
        QTRY_COMPARE(tip(1), "127.69.0.2: connected");
        QCOMPARE(icon(1), connected);

        driver::click(bench_->form.ui.btn_discon);
        QCOMPARE(tip(0), "127.69.0.1: not connected"); // closed by the tool: not lost
        QCOMPARE(tip(1), "127.69.0.2: not connected");
        QVERIFY(icon(0) != connected);
    }

    void statusBarNamesThePendingReply() {
        auto* label = bench_->form.findChild<QLabel*>("wait_status");
        bench_->sim.controller(1)->setFaults({.silent = {"RBY"}});
        QStringList seen;
        driver::when(
            &bench_->form, [&] { return label->text().contains("BYPA"); },
            [&] {
                seen << label->text();
                QTimer::singleShot(5500, &bench_->form, [&] {
                    seen << label->text();
                    bench_->form.StopWaiting();
                });
            });
        driver::click(bench_->form.ui.btn_sys_refresh);
        QCOMPARE(seen.size(), 2);
        QCOMPARE(seen[0], "Status read: waiting for BYPA from 127.69.0.1 for 0 s");
        QVERIFY2(seen[1].startsWith(
                     "Status read: waiting for BYPA from 127.69.0.1 for 5 s - no reply yet;") &&
                     seen[1].contains("Stop waiting"),
                 qPrintable(seen[1]));
        QCOMPARE(label->text(), QString());
    }

private:
    std::unique_ptr<Bench> bench_;
};

QTEST_MAIN(TestMonitor)
#include "test_monitor.moc"
