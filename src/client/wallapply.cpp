#include "client/wallapply.h"

namespace client {

std::optional<QList<Placement>> placements(const wallplan::Plan& plan, QString* error) {
    QList<Placement> result;
    for (const wallplan::Assignment& a : plan.assignments) {
        const auto lines = protocol::placementLines(plan.rows, plan.cols, a.output, a.tile);
        if (!lines) {
            *error = QStringLiteral("%1 Out %2: %3")
                         .arg(a.address, wallplan::outputName(a.output), lines.error);
            return std::nullopt;
        }
        qsizetype i = 0;
        while (i < result.size() && result[i].target.address != a.address)
            ++i;
        if (i == result.size())
            result.append(Placement{{a.address, a.mac}, {}, {}});
        Placement& p = result[i];
        p.outputs << a.output;
        // The size line carries the rows and columns, the tile line the output's tile.
        const QString tile =
            QStringLiteral("wall.position.") + wallplan::outputName(a.output).toLower();
        p.writes.add(
            {{protocol::find("wall.rows"), plan.rows}, {protocol::find("wall.cols"), plan.cols}},
            (*lines)[0]);
        p.writes.add({{protocol::find(tile), a.tile}}, (*lines)[1]);
    }
    return result;
}

Report applyPlan(const Runner& run, QList<Placement>& placements) {
    const QStringList failures =
        run([&](ControllerClient& client, qsizetype i) { placements[i].writes.queue(client); });
    Report report{QStringLiteral("wall apply"), {}};
    for (qsizetype i = 0; i < placements.size(); ++i) {
        const Placement& p = placements[i];
        const QString failure = reason(failures[i], p.target.address);
        report.controllers << ControllerReport{
            p.target, failure, {}, p.writes.report({}, failure, {})};
    }
    return report;
}

} // namespace client
