// panomat-ctl against its floors.
//
//   ctl_get      one setting read in-process the way "panomat-ctl get" reads it (a
//                framed connection, the catalogue's read line and reply check) against a
//                bare socket round trip: connect, write "RBRI 1\r\n", read to "\r\n".
//   ctl_backup   "panomat-ctl backup" of 64 controllers that answer 20 ms late, as a whole
//                process, against the same backup of one of them.

#include "bareclient.h"
#include "client/run.h"
#include "client/settingsio.h"
#include "measure.h"
#include "simprocess.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <unistd.h>

namespace {

#ifdef BENCH_CTL_BACKUP
const char* const Method =
    "ctl_backup: panomat-ctl backup of 64 virtual controllers (panomat-sim, 20 ms reply\n"
    "latency) as a whole process, against the backup of one of them; alternated pairs,\n"
    "medians. Goal: at most 1.5x, the controllers being read in parallel.\n";
constexpr int Devices = 64;
#else
const char* const Method =
    "ctl_get: one \"brightness.a\" read in-process through panomat-ctl's client (connect,\n"
    "RBRI 1, reply checked against the catalogue) against a bare POSIX socket doing the\n"
    "same round trip to the same virtual controller; alternated pairs, medians.\n"
    "Goal: at most 1.3x.\n";
constexpr int Devices = 1;
#endif
const QString First = QStringLiteral("127.66.0.2");

#ifndef BENCH_CTL_BACKUP
double bareRoundTrip() {
    const double start = bench::nowMs();
    const int fd = bench::connectToPort23("127.66.0.2");
    const char line[] = "RBRI 1\r\n";
    if (write(fd, line, sizeof line - 1) < 0)
        std::exit(1);
    std::string reply;
    char buffer[256];
    while (reply.find("\r\n") == std::string::npos) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n <= 0)
            std::exit(1);
        reply.append(buffer, static_cast<size_t>(n));
    }
    close(fd);
    return bench::nowMs() - start;
}

double clientRead() {
    const double start = bench::nowMs();
    Values values;
    const protocol::Setting* s = protocol::find(QStringLiteral("brightness.a"));
    const QStringList failures = client::runOwn(
        {{First, {}}}, 2000, [&](ControllerClient& c, qsizetype) { queueReads(c, {s}, &values); });
    if (!failures.first().isEmpty() || !values.contains(s->name))
        std::exit(1);
    return bench::nowMs() - start;
}

#else
double backup(int count) {
    QStringList hosts;
    for (int i = 0; i < count; ++i)
        hosts << QStringLiteral("127.66.0.%1").arg(2 + i);
    const QString file = QDir::temp().filePath(QStringLiteral("panomat-bench-backup.json"));
    const double start = bench::nowMs();
    QProcess ctl;
    ctl.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    ctl.start(QStringLiteral(BENCH_BIN_DIR "/panomat-ctl"),
              {QStringLiteral("backup"), QStringLiteral("-o"), file, QStringLiteral("--host"),
               hosts.join(u',')});
    if (!ctl.waitForFinished(60000) || ctl.exitCode() != 0)
        std::exit(1);
    return bench::nowMs() - start;
}
#endif

} // namespace

int main(int argc, char* argv[]) {
    const int runs = bench::parseRuns(argc, argv, 20, Method);
    QCoreApplication app(argc, argv);
#ifdef BENCH_CTL_BACKUP
    bench::SimProcess sim(First, Devices, {QStringLiteral("--latency"), QStringLiteral("20")});
    bench::Samples figure, floor;
    bench::alternate(
        runs, 1, [] { return backup(Devices); }, [] { return backup(1); }, figure, floor);
    bench::report("ctl_backup", "panomat-ctl backup, 64 controllers", figure,
                  "panomat-ctl backup, 1 controller", floor, "ms");
#else
    bench::SimProcess sim(First, Devices);
    bench::Samples figure, floor;
    bench::alternate(runs, 5, clientRead, bareRoundTrip, figure, floor);
    bench::report("ctl_get", "get brightness.a through the client", figure,
                  "bare socket round trip", floor, "ms");
#endif
    return 0;
}
