#include "protocol/command.h"

#include "protocol/legacytext.h"

namespace reply {

QString field(const QString& chunk, protocol::Field f) {
    return legacy::mid(chunk, f.start, f.length);
}
QString key(const QString& chunk) {
    return field(chunk, protocol::KeyField);
}
QString value(const QString& chunk) {
    return field(chunk, protocol::ValueField);
}
QString longKey(const QString& chunk) {
    return field(chunk, protocol::SecondKeyField);
}
QString longValue(const QString& chunk) {
    return field(chunk, protocol::LongValueField);
}

} // namespace reply

QString visibleText(const QByteArray& bytes) {
    QString text;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\r')
            text += QLatin1String("\\r");
        else if (c == '\n')
            text += QLatin1String("\\n");
        else if (c == '\t')
            text += QLatin1String("\\t");
        else if (c == '\\')
            text += QLatin1String("\\\\");
        else if (u < 0x20 || u >= 0x7f)
            text += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else
            text += QLatin1Char(c);
    }
    return text;
}
