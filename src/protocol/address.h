#pragma once

#include <QString>

namespace protocol {

// The one rule for a controller's address wherever it is typed, read from a file or
// given on a command line: four plain decimal octets of 0-255 without leading zeros,
// and not 0.0.0.0, which Linux connects to this machine. Anything else would be looked
// up by name, or read by the system's parser as something else ("127.1" is 127.0.0.1,
// "010.0.0.1" is 8.0.0.1).
bool isControllerAddressText(const QString& text);

// Text from a file or the network as it may be shown in a message: control characters
// escaped, cut to `limit` characters.
QString shownText(const QString& text, qsizetype limit = 40);

} // namespace protocol
