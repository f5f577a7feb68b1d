// What waiting costs. The tool waits for replies without a time-out and for a connect
// for 3000 event-loop passes; neither may keep a CPU core busy. This connects to a
// virtual controller that never answers "RPOW", lets the refresh wait, then closes the
// window and reports the process's CPU time per second of waiting, and how long the
// close took to end the wait (from the close to the return of the click whose handler
// was waiting). It also times a connect to an address where nothing listens (the
// pass-limited wait).
//
//   bench/wait_cpu [seconds]      (needs root for port 23; uses 127.60.0.0/16)

#include "simulator.h"
#include "window/form1.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGroupBox>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>

namespace {

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void listDevice(Form1& form, const QString& address) {
    form.ui.cbo_ipaddr->addItem(QStringLiteral("02-00-7F-3C-00-01"));
    form.ui.cbo_ipaddr->setCurrentIndex(0);
    form.services().setAddresses(QStringList{address});
    form.ui.con_interface->setEnabled(true); // as after a search
}

// Seconds of CPU per second of wall time while a reply wait runs.
void measureReplyWait(int seconds) {
    sim::Simulator wall;
    if (!wall.start(QHostAddress(QStringLiteral("127.60.0.1")), 1)) {
        std::fprintf(stderr, "%s\n", qPrintable(wall.errorString()));
        std::exit(1);
    }
    sim::Faults silent;
    silent.silent.insert("RPOW");
    wall.setFaults(0, silent);

    Form1 form;
    listDevice(form, QStringLiteral("127.60.0.1"));
    double cpuAtStart = 0;
    QElapsedTimer sinceClose;
    QEventLoop loop;
    // The click returns only when its wait has ended, so the time from the close to the
    // click's return is how long the close took to end the wait.
    QTimer::singleShot(0, &form, [&] {
        form.ui.btn_con->click(); // waits at RPOW until the window closes
        if (!sinceClose.isValid()) {
            std::fprintf(stderr, "the wait ended before the window was closed\n");
            std::exit(1);
        }
        std::printf("close during the wait: the wait ended %.3f ms after the close\n",
                    double(sinceClose.nsecsElapsed()) / 1e6);
        loop.quit();
    });
    QTimer::singleShot(500, &form, [&] { cpuAtStart = cpuSeconds(); });
    QTimer::singleShot(500 + seconds * 1000, &form, [&] {
        const double used = cpuSeconds() - cpuAtStart;
        std::printf("reply wait: %.1f ms CPU in %d s of waiting (%.2f%% of one core)\n",
                    used * 1000, seconds, used * 100 / seconds);
        sinceClose.start();
        form.close();
    });
    QTimer::singleShot(5500 + seconds * 1000, &form, [] {
        std::fprintf(stderr, "the wait did not end within 5 s of the close\n");
        std::exit(1);
    });
    loop.exec();
}

void measureConnectWait() {
    Form1 form;
    listDevice(form, QStringLiteral("127.60.0.99")); // nothing listens there
    QElapsedTimer elapsed;
    const double cpuAtStart = cpuSeconds();
    elapsed.start();
    // "Connected error!" ends the wait; close its box at once.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [] {
        if (QWidget* box = QApplication::activeModalWidget())
            box->close();
    });
    closer.start(50);
    form.ui.btn_con->click();
    std::printf("connect wait (3000 passes): %lld ms, %.1f ms CPU\n",
                static_cast<long long>(elapsed.elapsed()), (cpuSeconds() - cpuAtStart) * 1000);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc > 1 && (!std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h"))) {
        std::fputs(
            "What waiting costs, measured in one process.\n"
            "\n"
            "Reply wait: the window connects to a virtual controller (127.60.0.1, in this\n"
            "process) that never answers RPOW, so the refresh waits. After 0.5 s the process's\n"
            "CPU time is sampled for the given seconds of waiting and printed as a share of\n"
            "one core; then the window is closed, and the time from the close until the\n"
            "waiting click handler has returned is printed.\n"
            "Connect wait: \"Connect\" to 127.60.0.99, where nothing listens; prints the wall\n"
            "and CPU time until \"Connected error!\" (3000 passes of about 1 ms).\n"
            "\n"
            "Usage: wait_cpu [seconds]   (default 5; root: port 23)\n",
            stdout);
        return 0;
    }
    QApplication app(argc, argv);
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    measureReplyWait(seconds);
    measureConnectWait();
    return 0;
}
