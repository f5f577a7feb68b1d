#pragma once

#include "client/controllerclient.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

class DeviceLink;

namespace client {

// A controller a procedure works on: its address, and its MAC where a search named it.
struct Target {
    QString address;
    QString mac;
};

// Queues the first exchanges of client i; their answers may queue more.
using Sequence = std::function<void(ControllerClient& client, qsizetype index)>;

// How a run waits for its clients: until done() holds, or false when the wait was
// stopped from outside (the window's "Stop waiting", closing the window).
using Wait = std::function<bool(const std::function<bool()>& done)>;

struct RunOptions {
    int deadlineMs = -1; // for the whole run; below zero, none
    Wait wait;           // by default an event loop of the run's own
    std::function<void(qsizetype index, bool ok)> ended = {}; // follows each client that ends
    // Sees each client before its sequence is queued, to watch its traffic.
    std::function<void(qsizetype index, ControllerClient& client)> watch = {};
};

// Runs a sequence on each target and returns each one's failure, empty where it ended
// well. Front ends hand procedures a runner over their own kind of connection.
using Runner = std::function<QStringList(const Sequence& prepare)>;

// One sequence per client, all in flight together; a null client has failed already
// with failures[i] set. Every sequence is queued before the first line goes out. A
// deadline that passes, or a stopped wait, ends the clients still running with that as
// their failure.
QStringList runClients(const std::vector<std::unique_ptr<ControllerClient>>& clients,
                       QStringList failures, const Sequence& prepare,
                       const RunOptions& options = {});

// On connections of the run's own, opened for it and closed after.
QStringList runOwn(const QList<Target>& targets, int timeoutMs, const Sequence& prepare,
                   const RunOptions& options = {});

// One listed controller of the window: its list entry and address.
struct LentTarget {
    int entry = -1;
    QString address;
};

// On the window's own connections: each socket is lent for the run and given back
// before it returns, so no second connection is opened and no reply handler sees the
// traffic, while every line still passes the link and so the traffic monitor. A
// target whose socket is not connected fails with "not connected" and gets nothing.
QStringList runLent(DeviceLink& link, const QList<LentTarget>& targets, int timeoutMs,
                    const Sequence& prepare, const RunOptions& options = {});

} // namespace client
