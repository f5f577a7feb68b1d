#include "ctl/fleet.h"

#include "ctl/cli.h"

#include <QDeadlineTimer>
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

QStringList runAll(const QList<Target>& targets, const Cli& cli, const Sequence& prepare,
                   Progress* progress) {
    return runner(targets, cli, progress)(prepare);
}

client::Runner runner(const QList<Target>& targets, const Cli& cli, Progress* progress) {
    // The deadline is the whole command's: a procedure of several runs shares it.
    const QDeadlineTimer deadline = cli.deadlineMs() < 0
                                        ? QDeadlineTimer(QDeadlineTimer::Forever)
                                        : QDeadlineTimer(cli.deadlineMs(), Qt::PreciseTimer);
    return [&targets, timeoutMs = cli.timeoutMs(), deadline, progress](const Sequence& prepare) {
        client::RunOptions options;
        options.deadlineMs = deadline.isForever() ? -1 : int(deadline.remainingTime());
        options.ended = [&targets, progress](qsizetype i, bool ok) {
            if (progress)
                progress->done(targets[i].address, ok);
        };
        return client::runOwn(targets, timeoutMs, prepare, options);
    };
}
