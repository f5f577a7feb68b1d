#pragma once

#include "protocol/catalogue.h"

namespace protocol {

// The controller's side: one command line as it reads it, and its answer.
struct ParsedCommand {
    QByteArray keyword;               // first word, upper-cased; empty for a blank line
    const Command* command = nullptr; // nullptr: unknown keyword or arguments refused
    std::array<Value, 3> args{};      // numbers as read; a written address is in `values`
    QList<const Setting*> settings;   // what the command reads, writes or resets
    QList<Value> values;              // Write, Reset: the new value of each setting, if it applies
    bool applies = true;              // false: out of range, acknowledged but not applied
    QString note;                     // why refused or not applied
};
ParsedCommand parseCommand(QByteArrayView line);
// With the values its settings hold after the command; empty when the controller is silent.
QByteArray replyText(const ParsedCommand& command, const QList<Value>& current);

} // namespace protocol
