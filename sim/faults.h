#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace sim {

// Misbehaviour a controller can be told to show, for training and tests.
// Every connection of the controller follows the same faults; counters are per
// connection.
struct Faults {
    int latencyMs = 0;         // every reply leaves this much later
    int splitAt = 0;           // > 0: a reply longer than this goes out in two chunks
    int splitGapMs = 50;       // pause between the two chunks of a split reply
    bool join = false;         // a reply waits for the next one and both leave in one chunk
    int joinHoldMs = 500;      // a reply with no successor in this time leaves alone
    QSet<QByteArray> silent{}; // command keywords that are carried out but never answered
    int dropAfter = 0;         // > 0: the connection closes after this many commands, counted
                               // from when the faults were set
    int dropAfterWrites = 0;   // > 0: the same, counting only commands that write a setting

    bool any() const {
        return latencyMs > 0 || splitAt > 0 || join || !silent.isEmpty() || dropAfter > 0 ||
               dropAfterWrites > 0;
    }
    QString describe() const;
    bool operator==(const Faults&) const = default;
};

} // namespace sim
