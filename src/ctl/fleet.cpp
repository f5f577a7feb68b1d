#include "ctl/fleet.h"

#include <QTextStream>
#include <cstdio>
#include <unistd.h>

Progress::Progress(const QString& what, qsizetype total, bool enabled)
    : what_(what), total_(total), enabled_(enabled), terminal_(isatty(STDERR_FILENO) != 0) {}

void Progress::done(const QString& address, bool ok) {
    ++count_;
    if (!enabled_)
        return;
    QTextStream err(stderr);
    if (!terminal_) {
        err << what_ << ' ' << address << (ok ? " done" : " failed") << " (" << count_ << '/'
            << total_ << ")\n";
        return;
    }
    constexpr int Width = 30;
    const int filled = total_ > 0 ? static_cast<int>(Width * count_ / total_) : Width;
    err << '\r' << what_ << " [" << QString(filled, u'#') << QString(Width - filled, u' ') << "] "
        << count_ << '/' << total_;
    if (count_ == total_)
        err << '\n';
}

QStringList runAll(const QList<Target>& targets, int timeoutMs, const Sequence& prepare,
                   Progress* progress) {
    std::vector<std::unique_ptr<ControllerClient>> clients;
    for (const Target& t : targets)
        clients.push_back(std::make_unique<ControllerClient>(t.address, timeoutMs));
    QStringList failures(targets.size());
    return runClients(clients, failures, prepare, [&](qsizetype i) {
        if (progress)
            progress->done(targets[i].address, clients[static_cast<size_t>(i)]->succeeded());
    });
}
