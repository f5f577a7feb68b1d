#pragma once

#include "protocol/catalogue.h"

#include <optional>

// What the client's and the controller's sides of the catalogue share.
namespace protocol::detail {

QByteArray three(Value v); // "007"; clamped to 0..999
int octetOf(Value address, int octet);
// Four dotted octets of one to three digits each, padded or not.
std::optional<Value> readAddress(QByteArrayView text);
// The setting a command writes with its argument `arg` (1-based) for `output`.
const Setting* written(const Command& c, int arg, int output);

} // namespace protocol::detail
