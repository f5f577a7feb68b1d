#pragma once

#include "client/controllerclient.h"
#include "protocol/catalogue.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

using Values = QMap<QString, protocol::Value>; // by setting name
using Change = std::pair<const protocol::Setting*, protocol::Value>;

// Queues the reads of settings on client; each value lands in *values. Settings that
// one reply answers together (the address block) are read once.
void queueReads(ControllerClient& client, const QList<const protocol::Setting*>& settings,
                Values* values);
// Queues the writes, each waiting for its acknowledgement where the controller gives one.
void queueWrites(ControllerClient& client, const QList<Change>& changes);

// The settings named, or all readable ones when none are; the message lists the close
// names of an unknown one.
std::optional<QList<const protocol::Setting*>> settingsNamed(const QStringList& names,
                                                             QString* error);
QList<const protocol::Setting*> readableSettings(bool withNetwork);

// What a restore writes to one controller: every setting of wanted that it can write and
// that differs from what the controller holds now; network settings only when asked.
QList<Change> restoreChanges(const Values& wanted, const Values& now, bool withNetwork);
// "name: now -> wanted"
QString describeChange(const Change& change, const Values& now);

// "name: wrote X, reads back Y" for each setting whose read-back differs.
QStringList differences(const QList<Change>& wanted, const Values& readBack);
