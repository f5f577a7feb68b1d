#pragma once

#include "link/lentrun.h"

#include <QList>
#include <QString>
#include <functional>

// A controller to work on: its address, and its MAC where a search has named it.
struct Target {
    QString address;
    QString mac;
};

// Progress of many controllers on stderr: a bar on a terminal, plain lines otherwise.
class Progress {
public:
    Progress(const QString& what, qsizetype total, bool enabled);
    void done(const QString& address, bool ok);

private:
    QString what_;
    qsizetype total_;
    qsizetype count_ = 0;
    bool enabled_;
    bool terminal_;
};

// One sequence per controller, all in flight together on one event loop. prepare
// queues the first exchanges of target i on its client; their answers may queue more.
// Returns each target's failure message, empty for those that succeeded.
QStringList runAll(const QList<Target>& targets, int timeoutMs, const Sequence& prepare,
                   Progress* progress = nullptr);
