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

// Applies one command line (without its line end) to `state` and builds the reply.
// Set commands the tool does not wait for are applied silently: an unasked reply
// would share a chunk with the next awaited reply, and the tool reads only the
// first reply of a chunk.
Response handleCommand(ControllerState& state, const QByteArray& line);

// Long reply layout used by the picture, bezel and trim reads: a first key and the
// output number (characters 1-7), a second key (8-11) and a three-digit value (12-14).
QByteArray longReply(const char* firstKey, int output, const char* secondKey, int value);

QString addressText(quint32 address);                    // "127.0.0.2"
bool parseAddress(const QByteArray& text, quint32* out); // accepts "127.000.000.002"

} // namespace sim
