#include "protocol/legacytext.h"

#include <cmath>

namespace legacy {

QString mid(const QString& text, int start, int length) {
    if (start < 1 || length <= 0 || start > text.size())
        return {};
    return text.mid(start - 1, length);
}

namespace {

bool isSkipped(QChar c) {
    return c == u' ' || c == u'\t' || c == u'\n';
}

} // namespace

double val(const QString& text) {
    QString number;
    bool digits = false, point = false, exponent = false, exponentSign = false;
    for (QChar c : text) {
        if (isSkipped(c))
            continue;
        if (number.isEmpty() && (c == u'+' || c == u'-')) {
            number += c;
        } else if (c.isDigit() && c.unicode() < 128) {
            number += c;
            digits = true;
            if (exponent)
                exponentSign = true;
        } else if (c == u'.' && !point && !exponent) {
            number += c;
            point = true;
        } else if ((c == u'e' || c == u'E' || c == u'd' || c == u'D') && digits && !exponent) {
            number += u'e';
            exponent = true;
        } else if ((c == u'+' || c == u'-') && exponent && !exponentSign && number.endsWith(u'e')) {
            number += c;
            exponentSign = true;
        } else {
            break;
        }
    }
    if (!digits)
        return 0;
    while (number.endsWith(u'e') || number.endsWith(u'+') || number.endsWith(u'-'))
        number.chop(1);
    return number.toDouble();
}

bool isNumeric(const QString& text) {
    const QString t = text.trimmed();
    int i = 0;
    if (i < t.size() && (t[i] == u'+' || t[i] == u'-'))
        ++i;
    bool digits = false, point = false;
    for (; i < t.size(); ++i) {
        if (t[i].isDigit() && t[i].unicode() < 128)
            digits = true;
        else if (t[i] == u'.' && !point)
            point = true;
        else
            return false;
    }
    return digits;
}

bool typedWithin(const QString& text, double above, double below) {
    if (!isNumeric(text))
        return false;
    const double value = val(text);
    return value > above && value < below;
}

long roundHalfEven(double value) {
    return static_cast<long>(std::nearbyint(value)); // default rounding mode: to even
}

std::optional<quint8> toByte(const QString& text) {
    if (!isNumeric(text))
        return std::nullopt;
    // Range-checked as a double: a typed 1e20 fits no integer, and converting it to one
    // first is undefined.
    const double rounded = std::nearbyint(text.trimmed().toDouble());
    if (!(rounded >= 0 && rounded <= 255))
        return std::nullopt;
    return static_cast<quint8>(rounded);
}

QString signedText(long number) {
    return number < 0 ? QString::number(number) : u' ' + QString::number(number);
}

QString plainText(long number) {
    return QString::number(number);
}

} // namespace legacy
