#pragma once

#include "link/controllerclient.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

class DeviceLink;

// One sequence per client, all in flight together on one event loop; a null client has
// failed already with failures[i] set. prepare queues the first exchanges of client i;
// their answers may queue more. ended(i) follows each client that ends. Returns each
// client's failure, empty for those that succeeded.
using Sequence = std::function<void(ControllerClient& client, qsizetype index)>;
QStringList runClients(const std::vector<std::unique_ptr<ControllerClient>>& clients,
                       QStringList failures, const Sequence& prepare,
                       const std::function<void(qsizetype index)>& ended = {});

// One listed controller for a procedure of the window: its list entry and address.
struct LentTarget {
    int entry = -1;
    QString address;
};

// Runs one framed sequence per target, all at once, on the window's own connections:
// each socket is lent for the run and given back before it returns, so no second
// connection is opened and no reply handler sees the traffic. prepare queues the first
// exchanges of target i; their answers may queue more. progress(done) follows each
// target that ends. Returns each target's failure, empty for those that succeeded; a
// target whose socket is not connected fails with "not connected" and gets nothing.
QStringList runLent(DeviceLink& link, const QList<LentTarget>& targets, int timeoutMs,
                    const Sequence& prepare,
                    const std::function<void(qsizetype done)>& progress = {});
