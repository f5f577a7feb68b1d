// Memory of the traffic monitor: the window with its monitor shown, idle, and after a
// million monitored lines.

#include "link/devicelink.h"
#include "link/trafficlog.h"
#include "measure.h"
#include "monitor/trafficmonitor.h"
#include "window/form1.h"

#include <QApplication>
#include <QTest>
#include <cstdio>

namespace {

const char* const Method =
    "monitor_memory: Form1 with its traffic monitor shown, on the display. The figure is\n"
    "the resident memory (VmRSS, from /proc) after 1,000,000 monitored lines, half sent\n"
    "and half received on four controllers' sockets and handed to the view in the\n"
    "monitor's own batches; the floor is the same window idle before them. The goal is\n"
    "that the difference stays under 30 MiB: the monitor keeps its newest 20,000 rows.\n";

double residentMiB() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    char line[256];
    long kib = 0;
    while (status && std::fgets(line, sizeof line, status))
        if (std::sscanf(line, "VmRSS: %ld kB", &kib) == 1)
            break;
    if (status)
        std::fclose(status);
    return kib / 1024.0;
}

} // namespace

int main(int argc, char* argv[]) {
    bench::parseRuns(argc, argv, 1, Method);
    QApplication app(argc, argv);
    Form1 form;
    form.show();
    form.monitor().show();
    if (!QTest::qWaitForWindowExposed(&form))
        return 1;
    QTest::qWait(300);
    bench::Samples idle, after;
    idle.add(residentMiB());
    DeviceLink& link = form.services().link();
    constexpr int Lines = 1000000;
    for (int i = 0; i < Lines; ++i) {
        if (i % 2)
            emit link.received(i % 4, QByteArrayLiteral("BRIR001BRIV050\r\n"));
        else
            emit link.written(i % 4, QByteArrayLiteral("RBRI 1\r\n"));
        if (i % 2000 == 0)
            QCoreApplication::processEvents(); // the monitor's batches reach the view
    }
    QTest::qWait(300);
    after.add(residentMiB());
    std::printf("rows kept %d, dropped %lld\n", form.monitor().log().rowCount(),
                static_cast<long long>(form.monitor().log().dropped()));
    bench::report("monitor_memory", "resident after 1,000,000 monitored lines", after,
                  "resident, idle, monitor shown", idle, "MiB");
    std::printf("added   %.1f MiB (goal: under 30 MiB)\n", after.median() - idle.median());
    return 0;
}
