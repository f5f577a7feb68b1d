#pragma once

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

} // namespace command

// Fields of a reply chunk by 1-based position.
namespace reply {

QString key(const QString& chunk);       // characters 1-4
QString value(const QString& chunk);     // characters 5-7
QString longKey(const QString& chunk);   // characters 8-11 (picture, bezel, trim reads)
QString longValue(const QString& chunk); // characters 12-14

} // namespace reply

// Shows bytes from the network safely on a terminal, in a log or a message: "\r", "\n",
// "\t", "\\" and "\xNN" for the other control and non-ASCII bytes.
QString visibleText(const QByteArray& bytes);
