#pragma once

#include "client/run.h"

#include <QList>
#include <QString>

class Cli;
using client::Sequence;
using client::Target;

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

// One sequence per controller on connections of its own, all in flight together, each
// reply within the command line's --timeout and the whole run within its --deadline.
// Returns each target's failure message, empty for those that succeeded.
QStringList runAll(const QList<Target>& targets, const Cli& cli, const Sequence& prepare,
                   Progress* progress = nullptr);
// The same as a runner for the procedures of the client library.
client::Runner runner(const QList<Target>& targets, const Cli& cli, Progress* progress = nullptr);
