#pragma once

#include "client/report.h"
#include "client/run.h"
#include "protocol/wallplan.h"

#include <QList>
#include <optional>

// Applying a wall plan: each controller gets its outputs' wall size and tiles, in plan
// order. panomat-ctl and the window's planner both run it here.
namespace client {

struct Placement {
    Target target;
    QList<int> outputs; // 1..4, in plan order
    WriteTrack writes;
};

// The lines of the plan by controller, in the order the plan names them. Every line is
// made before any is sent: a fault anywhere refuses the whole plan with *error set.
std::optional<QList<Placement>> placements(const wallplan::Plan& plan, QString* error);

// Sends each controller its lines and says what became of each setting.
Report applyPlan(const Runner& run, QList<Placement>& placements);

} // namespace client
