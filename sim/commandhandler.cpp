#include "commandhandler.h"

#include "protocol/controllerside.h"

namespace sim {

namespace {

using protocol::Effect;
using protocol::ParsedCommand;


QString positionOf(int output) {
    return QStringLiteral("wall.position.%1").arg(QChar(u'a' + output - 1));
}

void applyHotKey(ControllerState& s, int preset) {
    const int rows = protocol::hotKeyShapes()[preset].rows;
    const int cols = protocol::hotKeyShapes()[preset].cols;
    s.set("wall.rows", rows);
    s.set("wall.cols", cols);
    // Outputs beyond the last tile repeat from the first; a wall of fewer than four
    // tiles frees output 4, which then shows the input on its own.
    const int tiles = rows * cols;
    for (int out = 1; out <= 4; ++out)
        s.set(positionOf(out), (out - 1) % tiles + 1);
    s.set("bypass", tiles < 4);
}

// A tile placed by "SCO" must lie on the wall as it is now.
bool onWall(const ControllerState& s, const ParsedCommand& q) {
    for (int i = 0; i < q.settings.size(); ++i)
        if (q.settings[i]->group == protocol::Group::Wall && q.settings[i]->output > 0 &&
            q.values[i] > s.value("wall.rows") * s.value("wall.cols"))
            return false;
    return true;
}

// Writes and resets apply all their values or, with one out of range, none.
void apply(ControllerState& s, const ParsedCommand& q, Response& r) {
    if (!q.applies)
        return;
    if (!onWall(s, q)) {
        r.note = QStringLiteral("value out of range, not applied");
        return;
    }
    for (int i = 0; i < q.settings.size(); ++i)
        s.values[q.settings[i]->index] = q.values[i];
}

void carryOut(ControllerState& s, const ParsedCommand& q, Response& r) {
    switch (q.command->effect) {
    case Effect::Read:
    case Effect::ShowInfo:
        break;
    case Effect::Write:
    case Effect::Reset:
        apply(s, q, r);
        break;
    case Effect::Store:
        s.store(int(q.args[0]));
        break;
    case Effect::Recall:
        s.recall(int(q.args[0]));
        break;
    case Effect::HotKey:
        if (q.applies)
            applyHotKey(s, int(q.args[0]));
        break;
    case Effect::Restart:
        r.action = Response::Action::Restart;
        break;
    case Effect::FactoryReset:
        s = ControllerState::factory(s.number, s.factoryAddress);
        r.action = Response::Action::FactoryRestart;
        break;
    }
}

} // namespace

Response handleCommand(ControllerState& state, const QByteArray& line) {
    const ParsedCommand q = protocol::parseCommand(line);
    Response r;
    r.keyword = q.keyword;
    r.note = q.note;
    if (!q.command)
        return r;
    r.recognised = true;
    carryOut(state, q, r);
    r.reply = protocol::replyText(q, state.valuesOf(q.settings));
    return r;
}

} // namespace sim
