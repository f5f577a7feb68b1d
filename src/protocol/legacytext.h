#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

// Text rules of the controller protocol and of the tool's lists. Replies are cut by
// 1-based character positions and converted the forgiving way the original tool did:
// a numeric prefix is taken, anything after it is ignored.
namespace legacy {

// Characters start..start+length-1 of text, 1-based; shorter or empty past the end.
QString mid(const QString& text, int start, int length);

// Value of the number at the start of text. Blanks, tabs and line feeds are skipped
// anywhere; reading stops at the first character that cannot continue the number.
// Text without a number gives 0.
double val(const QString& text);

// True for a decimal number with optional blanks around it, an optional sign and at
// most one decimal point.
bool isNumeric(const QString& text);

// The check of a typed value: numeric, and its value strictly between above and below,
// real-valued ("20.9" is below 21).
bool typedWithin(const QString& text, double above, double below);

// Number text converted to a byte, rounding halves to even ("2.5" gives 2, "3.5" 4).
// Empty when the text is not numeric or the rounded value is outside 0..255, however
// large: the old runtime's overflow error, on which the handler ends.
std::optional<quint8> toByte(const QString& text);

// Rounds halves to even, as the byte and list-index conversions do.
long roundHalfEven(double value);

// Number with a reserved sign position: " 7", " 255", "-3".
QString signedText(long number);

// Number in plain decimal: "7", "-3".
QString plainText(long number);

} // namespace legacy
