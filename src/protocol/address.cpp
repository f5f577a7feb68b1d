#include "protocol/address.h"

namespace protocol {

bool isControllerAddressText(const QString& text) {
    int octets = 0;
    bool anything = false;
    for (qsizetype i = 0; i <= text.size(); ++octets) {
        const qsizetype start = i;
        int value = 0;
        while (i < text.size() && text[i] >= u'0' && text[i] <= u'9' && i - start < 3)
            value = value * 10 + (text[i++].unicode() - u'0');
        const qsizetype digits = i - start;
        if (digits == 0 || value > 255 || (digits > 1 && text[start] == u'0'))
            return false;
        anything = anything || value != 0;
        if (i == text.size())
            return octets == 3 && anything;
        if (text[i] != u'.' || octets == 3)
            return false;
        ++i;
    }
    return false;
}

QString shownText(const QString& text, qsizetype limit) {
    QString shown;
    for (const QChar c : text.left(limit)) {
        if (c == u'\\')
            shown += QLatin1String("\\\\");
        else if (c == u'\r')
            shown += QLatin1String("\\r");
        else if (c == u'\n')
            shown += QLatin1String("\\n");
        else if (c == u'\t')
            shown += QLatin1String("\\t");
        else if (c.unicode() < 0x20 || (c.unicode() >= 0x7f && c.unicode() < 0xa0))
            shown += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            shown += c;
    }
    if (text.size() > limit)
        shown += QLatin1String("...");
    return shown;
}

} // namespace protocol
