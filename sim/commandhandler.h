#pragma once

#include "controllerstate.h"

#include <QByteArray>
#include <QString>

namespace sim {

// The outcome of one command line.
struct Response {
    enum class Action {
        None,
        Restart,        // "SREL": close every connection, come back on the stored address
        FactoryRestart, // "SDEF": settings are factory ones again, then restart
    };

    QByteArray keyword; // upper-cased first word; empty for a blank line
    QByteArray reply;   // with "\r\n"; empty when the controller stays silent
    Action action = Action::None;
    bool recognised = false; // keyword known and arguments usable
    QString note;            // why a command was refused or only partly applied
};

// Applies one command line (without its line end) to `state` and builds the reply, both
// as the protocol catalogue describes the command. Set commands the tool does not wait
// for are applied silently: an unasked reply would share a chunk with the next awaited
// reply, and the tool reads only the first reply of a chunk.
Response handleCommand(ControllerState& state, const QByteArray& line);

} // namespace sim
