#include "protocol/command.h"

#include "protocol/legacytext.h"

namespace reply {

QString key(const QString& chunk) {
    return legacy::mid(chunk, 1, 4);
}
QString value(const QString& chunk) {
    return legacy::mid(chunk, 5, 3);
}
QString longKey(const QString& chunk) {
    return legacy::mid(chunk, 8, 4);
}
QString longValue(const QString& chunk) {
    return legacy::mid(chunk, 12, 3);
}

} // namespace reply
