#pragma once

#include "protocol/catalogue.h"

#include <QByteArray>
#include <QString>

// Command lines: keyword, one blank before each argument, "\r\n". Numbers go out in
// plain decimal; text arguments (typed values, dotted addresses) exactly as given.
namespace command {

inline QString argText(int value) {
    return QString::number(value);
}
inline QString argText(const QString& text) {
    return text;
}

template <typename... Args> QByteArray line(const QString& keyword, const Args&... args) {
    QString text = keyword;
    ((text += u' ' + argText(args)), ...);
    text += QLatin1String("\r\n");
    return text.toLatin1();
}

// The catalogue's command, with one blank more after the keyword where it takes two.
template <typename... Args> QByteArray line(const protocol::Command& c, const Args&... args) {
    return line(QLatin1String(c.keyword) + QLatin1String(c.doubledBlank ? " " : ""), args...);
}

// The command that writes a setting; a negative value takes the minus command of a
// setting whose keyword carries the sign.
inline const protocol::Command& writer(const protocol::Setting& s, bool minus = false) {
    return minus && s.writeMinus ? *s.writeMinus : *s.write;
}

} // namespace command

// Fields of a reply chunk by 1-based position, as the catalogue places them.
namespace reply {

QString key(const QString& chunk);       // characters 1-4
QString value(const QString& chunk);     // characters 5-7
QString longKey(const QString& chunk);   // characters 8-11 (picture, bezel, trim reads)
QString longValue(const QString& chunk); // characters 12-14
QString field(const QString& chunk, protocol::Field f);

// The keys of the catalogue's reply to c: the first, and the second of a long reply (of
// a signed one, the key meaning plus).
inline QLatin1String keyOf(const protocol::Command& c) {
    return QLatin1String(c.reply.key);
}
inline QLatin1String secondKeyOf(const protocol::Command& c) {
    return QLatin1String(c.reply.second);
}

} // namespace reply

// Shows bytes from the network safely on a terminal, in a log or a message: "\r", "\n",
// "\t", "\\" and "\xNN" for the other control and non-ASCII bytes.
QString visibleText(const QByteArray& bytes);
