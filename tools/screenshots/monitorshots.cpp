// Takes the monitor's screenshots in docs/screenshots, on the whole X screen: the
// traffic monitor during a refresh, the device list with one controller stopped, and
// the status bar during a wait that never ends. scripts/screenshots runs it.

#include "link/trafficlog.h"
#include "monitor/trafficmonitor.h"
#include "screenshot.h"
#include "support/bench.h"

#include <QTimer>
#include <cstdio>

namespace {

// Runs shot once the handler that click starts is waiting, then lets it end.
bool shootDuring(QPushButton* button, int afterMs, const std::function<bool()>& shot) {
    bool saved = false;
    QTimer::singleShot(afterMs, [&] { saved = shot(); });
    button->click();
    QTest::qWait(afterMs + 500);
    return saved;
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]) + u'/';
    Bench bench("127.24.0.1", 4);
    qputenv("ZEDA_HOSTS", "127.24.0.1-127.24.0.4");
    Form1& form = bench.form;
    form.move(0, 0);
    form.resize(1360, 700);
    form.show();
    if (!QTest::qWaitForWindowExposed(&form))
        return 1;
    form.findChild<QPushButton*>(QStringLiteral("btn_sys_search"))->click();
    form.ui.btn_con->click();
    // Each controller read back in turn, the last one slowly enough to be seen at work.
    form.monitor().show();
    for (int i = 1; i < 3; ++i)
        QTest::keyClick(form.ui.cbo_ipaddr, Qt::Key_Down);
    sim::Faults slow;
    slow.latencyMs = 60;
    bench.sim.controller(4)->setFaults(slow);
    form.ui.cbo_ipaddr->setFocus();
    bool ok = false;
    QTimer::singleShot(900, [&] { ok = shoot(folder + QStringLiteral("monitor-refresh.png")); });
    QTest::keyClick(form.ui.cbo_ipaddr, Qt::Key_Down);
    QTest::qWait(1000);

    // Controller 2 stops: its entry says so.
    bench.sim.controller(2)->stop();
    QTest::qWait(300);
    form.ui.cbo_ipaddr->showPopup();
    ok = shoot(folder + QStringLiteral("device-states.png")) && ok;
    form.ui.cbo_ipaddr->hidePopup();

    // A controller that never answers RBY: the status bar names the wait.
    sim::Faults silent;
    silent.silent = {"RBY"};
    bench.sim.controller(4)->setFaults(silent);
    ok = shootDuring(form.ui.btn_sys_refresh, 6500,
                     [&] {
                         const bool saved = shoot(folder + QStringLiteral("wait-status.png"));
                         form.StopWaiting();
                         return saved;
                     }) &&
         ok;
    return ok ? 0 : 1;
}
