#include "client/restore.h"

using protocol::Setting;

namespace client {

QList<Values> readSettings(const Runner& run, qsizetype count,
                           const QList<const Setting*>& settings, QStringList* failures) {
    QList<Values> values(count);
    *failures = run(
        [&](ControllerClient& client, qsizetype i) { queueReads(client, settings, &values[i]); });
    return values;
}

namespace {

bool track(WriteTrack* track, const QList<Change>& changes, QString* error) {
    for (const Change& change : changes) {
        const protocol::Result<protocol::Write> write =
            protocol::writeLine(*change.first, change.second);
        if (!write) {
            *error = QStringLiteral("%1: %2").arg(change.first->name, write.error);
            return false;
        }
        track->add({change}, *write);
    }
    return true;
}

QList<Change> networkOnly(QList<Change> changes) {
    changes.removeIf([](const Change& c) { return c.first->group != protocol::Group::Network; });
    return changes;
}

QList<const Setting*> settingsOf(const QList<Change>& changes) {
    QList<const Setting*> settings;
    for (const Change& c : changes)
        if (c.first->readable())
            settings << c.first;
    return settings;
}

// The line that restarts the controller's network with the settings it holds.
protocol::Write restartLine() {
    const protocol::Command& restart = protocol::command(protocol::Action::RestartNetwork);
    return {QByteArray(restart.keyword) + "\r\n", QByteArray(restart.reply.key)};
}

// A run cut short leaves writes whose fate only the controller knows: they are read
// again where it can still be reached.
void readAgain(const Runner& verify, const QList<RestorePlan>& plans, const QStringList& failures,
               QList<Values>* after) {
    QList<QList<const Setting*>> unknown(plans.size());
    bool any = false;
    for (qsizetype i = 0; i < plans.size(); ++i)
        if (!failures[i].isEmpty()) {
            unknown[i] = plans[i].writes.sentUnread((*after)[i]);
            any = any || !unknown[i].isEmpty();
        }
    if (!verify || !any)
        return;
    verify([&](ControllerClient& client, qsizetype i) {
        queueReads(client, unknown[i], &(*after)[i]);
    });
}

} // namespace

std::optional<QList<RestorePlan>> planRestore(const QList<RestoreTarget>& targets, bool withNetwork,
                                              QString* error) {
    QList<RestorePlan> plans;
    for (const RestoreTarget& t : targets) {
        RestorePlan plan{t.target, t.readFailure, {}, {}};
        if (t.readFailure.isEmpty()) {
            const QList<Change> network =
                withNetwork ? networkOnly(restoreChanges(t.wanted, t.now, true)) : QList<Change>{};
            if (!track(&plan.writes, restoreChanges(t.wanted, t.now, false), error) ||
                !track(&plan.network, network, error)) {
                *error = QStringLiteral("%1: %2").arg(t.target.address, *error);
                return std::nullopt;
            }
        }
        plans << plan;
    }
    return plans;
}

Report restore(const Runner& run, QList<RestorePlan>& plans, const Runner& verify) {
    QList<Values> after(plans.size());
    const QStringList failures = run([&](ControllerClient& client, qsizetype i) {
        RestorePlan& plan = plans[i];
        if (!plan.readFailure.isEmpty())
            return;
        plan.writes.queue(client);
        queueReads(client, settingsOf(plan.writes.changes()), &after[i]);
        // Last, as they restart the controller's network and end the connection.
        if (!plan.network.empty()) {
            plan.network.queue(client);
            const protocol::Write restart = restartLine();
            client.exchange(restart.line, restart.ack);
        }
    });
    readAgain(verify, plans, failures, &after);
    Report report{QStringLiteral("restore"), {}};
    for (qsizetype i = 0; i < plans.size(); ++i) {
        const RestorePlan& plan = plans[i];
        ControllerReport c{plan.target, {}, {}, {}};
        if (!plan.readFailure.isEmpty()) {
            c.failure = QStringLiteral("not read, so nothing was written: ") +
                        reason(plan.readFailure, plan.target.address);
            report.controllers << c;
            continue;
        }
        c.failure = reason(failures[i], plan.target.address);
        c.settings = plan.writes.report(after[i], c.failure, {});
        c.settings += plan.network.report(
            {}, c.failure, QStringLiteral("the controller restarts its network with it"));
        if (c.settings.isEmpty())
            c.note = QStringLiteral("nothing to change");
        else if (!plan.network.empty() && c.failure.isEmpty())
            c.note = QStringLiteral("its network restarts with the new settings");
        report.controllers << c;
    }
    return report;
}

} // namespace client
