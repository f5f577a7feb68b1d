#include "ctl/fleet.h"

#include <QEventLoop>
#include <QTextStream>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

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

QStringList runAll(const QList<Target>& targets, int timeoutMs,
                   const std::function<void(ControllerClient& client, qsizetype index)>& prepare,
                   Progress* progress) {
    QStringList failures(targets.size());
    qsizetype open = targets.size();
    QEventLoop loop;
    std::vector<std::unique_ptr<ControllerClient>> clients;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        auto client = std::make_unique<ControllerClient>(targets[i].address, timeoutMs);
        const auto end = [&, i](const QString& failure) {
            failures[i] = failure;
            if (progress)
                progress->done(targets[i].address, failure.isEmpty());
            if (--open == 0)
                loop.quit();
        };
        QObject::connect(client.get(), &ControllerClient::finished, [end] { end({}); });
        QObject::connect(client.get(), &ControllerClient::failed, end);
        clients.push_back(std::move(client));
    }
    for (qsizetype i = 0; i < targets.size(); ++i) {
        ControllerClient& client = *clients[static_cast<size_t>(i)];
        prepare(client, i);
        if (client.idle())
            emit client.finished(); // nothing to do for this one
    }
    if (open > 0)
        loop.exec();
    return failures;
}
