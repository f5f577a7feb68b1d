#pragma once

#include "client/run.h"
#include "client/settingsio.h"

#include <QJsonArray>
#include <QList>
#include <QString>
#include <deque>

namespace client {

// What became of one setting a procedure meant to write.
enum class Outcome {
    Equal,       // written, and the controller reads it back as written
    Different,   // written, and it reads back otherwise
    Written,     // acknowledged, not read back: the controller cannot report it, or
                 // restarts its network with it
    Unconfirmed, // sent, but the connection ended before anything confirmed it
    NotSent,     // never sent
};

struct SettingReport {
    QString name;
    QString wanted;
    QString readBack; // with Equal and Different
    Outcome outcome = Outcome::NotSent;
    QString why; // with Written, Unconfirmed and NotSent
};

struct ControllerReport {
    Target target;
    QString failure; // what ended its run early, without the address
    QString note;    // "nothing to change", "its network restarts with the new settings"
    QList<SettingReport> settings;

    bool done() const; // nothing failed, and every setting is as wanted
};

// A procedure's account of every controller and every setting it meant to write. It
// is made from what the controllers answered, never from what was meant.
struct Report {
    QString procedure; // "restore", "wall apply"
    QList<ControllerReport> controllers;

    bool done() const;
    qsizetype doneCount() const;
    // One block a controller: "address (MAC): summary", then a line a setting.
    QString text() const;
    QJsonArray json() const;
};

QString outcomeText(Outcome outcome); // "read back equal", "not sent", ...
QString outcomeKey(Outcome outcome);  // "equal", "not-sent", ... for JSON

// The writes meant for one controller, and what became of each. A write is sent when
// its turn comes and confirmed by its acknowledgement or by any later reply: the
// controller takes its lines in order.
class WriteTrack {
public:
    // settings: what the line writes, with the values, for the report.
    void add(const QList<Change>& settings, const protocol::Write& write);
    bool empty() const { return writes_.empty(); }
    QList<Change> changes() const;

    // Queues every write on client, in the order added.
    void queue(ControllerClient& client);

    // The readable settings of writes that went out and are not in readBack: what a
    // run cut short leaves unknown.
    QList<const protocol::Setting*> sentUnread(const Values& readBack) const;

    // readBack: what reads back after the writes, where the procedure read it;
    // failure: what ended the run early; unread: why a confirmed write was not read
    // back when the run did not fail.
    QList<SettingReport> report(const Values& readBack, const QString& failure,
                                const QString& unread) const;

private:
    struct Entry {
        QList<Change> settings;
        protocol::Write write;
        qsizetype sentAt = -1; // replies counted when the line went out; -1 not sent
    };
    std::deque<Entry> writes_; // stable addresses for the callbacks
    qsizetype replies_ = 0;
};

// The failure of a client without its "address: " prefix, for the lines of its report.
QString reason(const QString& failure, const QString& address);

} // namespace client
