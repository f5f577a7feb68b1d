#include "faults.h"

#include <QStringList>

namespace sim {

QString Faults::describe() const {
    QStringList parts;
    if (latencyMs > 0)
        parts << QStringLiteral("latency %1 ms").arg(latencyMs);
    if (splitAt > 0)
        parts << QStringLiteral("split after %1 bytes").arg(splitAt);
    if (join)
        parts << QStringLiteral("join replies");
    if (!silent.isEmpty()) {
        QStringList keys;
        for (const QByteArray& k : silent)
            keys << QString::fromLatin1(k);
        keys.sort();
        parts << QStringLiteral("silent for %1").arg(keys.join(','));
    }
    if (dropAfter > 0)
        parts << QStringLiteral("drop after %1 commands").arg(dropAfter);
    if (dropAfterWrites > 0)
        parts << QStringLiteral("drop after %1 writes").arg(dropAfterWrites);
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QStringLiteral(", "));
}

} // namespace sim
