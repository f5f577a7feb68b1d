#pragma once

// Virtual controllers in a process of their own, so that the side measured and its
// floor talk to the same program over real sockets and neither shares its event loop.

#include <QHostAddress>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>

namespace bench {

class SimProcess {
public:
    // Starts count controllers from first; exits the benchmark if they do not come up.
    SimProcess(const QString& first, int count, const QStringList& extra = {}) {
        process_.setProgram(QStringLiteral(BENCH_BIN_DIR "/panomat-sim"));
        process_.setArguments(QStringList{QStringLiteral("-q"), QStringLiteral("--devices"),
                                          QString::number(count), QStringLiteral("--first"),
                                          first} +
                              extra);
        process_.setReadChannel(QProcess::StandardError);
        // It ends with the benchmark, however that ends.
        process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        process_.start();
        // It names its addresses on stderr once every controller listens.
        QByteArray said;
        while (!said.contains("Ctrl+C") && process_.waitForReadyRead(5000))
            said += process_.readAllStandardError();
        if (!said.contains("Ctrl+C")) {
            std::fprintf(stderr, "panomat-sim did not start: %s%s\n", said.constData(),
                         qPrintable(process_.errorString()));
            std::exit(1);
        }
    }
    ~SimProcess() {
        process_.kill();
        process_.waitForFinished();
    }

private:
    QProcess process_;
};

} // namespace bench
