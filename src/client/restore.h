#pragma once

#include "client/report.h"
#include "client/run.h"
#include "client/settingsio.h"

#include <QList>
#include <optional>

// Restoring a settings file: read what each controller holds, write what differs, read
// it back, and report every setting. panomat-ctl and the window both run it here, on
// their own kinds of connection.
namespace client {

// Reads settings of each of count targets; values[i] is complete only where
// (*failures)[i] is empty.
QList<Values> readSettings(const Runner& run, qsizetype count,
                           const QList<const protocol::Setting*>& settings, QStringList* failures);

// One controller's part of a restore.
struct RestoreTarget {
    Target target;
    Values wanted;       // from the file
    Values now;          // as read before
    QString readFailure; // the controller could not be read: nothing is written to it
};

// The writes of each target: every setting it can write whose value differs from what
// it holds now; network settings only withNetwork, last, and then the network restarts.
struct RestorePlan {
    Target target;
    QString readFailure;
    WriteTrack writes;
    WriteTrack network;
};
// Every line is made before any is sent: a value that makes no line refuses the whole
// restore with *error set.
std::optional<QList<RestorePlan>> planRestore(const QList<RestoreTarget>& targets, bool withNetwork,
                                              QString* error);

// Writes each plan, reads back what it wrote, and says what became of each setting. A
// controller whose run ended early is read again through verify, on connections of
// its own, for what its writes left; without verify they stay unknown.
Report restore(const Runner& run, QList<RestorePlan>& plans, const Runner& verify = {});

} // namespace client
