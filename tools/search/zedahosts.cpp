#include "zedahosts.h"

#include <QRegularExpression>
#include <algorithm>

namespace {

// Strict dotted quad, decimal octets: config files are written by hand and "010"
// must not turn into 8.
bool parseIpv4(const QString& text, quint32* out) {
    const QStringList parts = text.split('.');
    if (parts.size() != 4)
        return false;
    quint32 a = 0;
    for (const QString& p : parts) {
        bool ok = false;
        const uint v = p.toUInt(&ok, 10);
        if (!ok || p.isEmpty() || p.size() > 3 || v > 255)
            return false;
        a = (a << 8) | v;
    }
    *out = a;
    return true;
}

struct Range {
    quint32 lo, hi; // both included
};

// The range of one entry; false with *why set when it is refused.
bool parseEntry(const QString& entry, Range* out, QString* why) {
    quint32 lo = 0, hi = 0;
    if (const qsizetype slash = entry.indexOf('/'); slash >= 0) {
        bool ok = false;
        const int prefix = entry.mid(slash + 1).toInt(&ok);
        if (!parseIpv4(entry.left(slash), &lo) || !ok || prefix < 0 || prefix > 32) {
            *why = QStringLiteral("not a network in CIDR form");
            return false;
        }
        const quint32 mask = prefix == 0 ? 0 : ~quint32(0) << (32 - prefix);
        lo &= mask;
        hi = lo | ~mask;
        if (prefix <= 30) {
            ++lo;
            --hi;
        }
    } else if (const qsizetype dash = entry.indexOf('-'); dash >= 0) {
        const QString end = entry.mid(dash + 1);
        if (!parseIpv4(entry.left(dash), &lo)) {
            *why = QStringLiteral("not an address, range or network");
            return false;
        }
        bool ok = false;
        const uint octet = end.toUInt(&ok, 10);
        if (ok && !end.isEmpty() && end.size() <= 3 && octet <= 255)
            hi = (lo & 0xFFFFFF00u) | octet;
        else if (!parseIpv4(end, &hi)) {
            *why = QStringLiteral("not an address, range or network");
            return false;
        }
        if (hi < lo) {
            *why = QStringLiteral("range ends before it starts");
            return false;
        }
    } else {
        if (!parseIpv4(entry, &lo)) {
            *why = QStringLiteral("not an address, range or network");
            return false;
        }
        hi = lo;
    }
    if (quint64(hi) - lo + 1 > quint64(HostList::MaxHosts)) {
        *why = QStringLiteral("more than %1 hosts").arg(HostList::MaxHosts);
        return false;
    }
    *out = {lo, hi};
    return true;
}

// Sorted ranges, overlapping and adjacent ones merged.
QList<Range> merged(QList<Range> ranges) {
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& a, const Range& b) { return a.lo < b.lo; });
    QList<Range> out;
    for (const Range& r : ranges) {
        if (!out.isEmpty() && quint64(r.lo) <= quint64(out.last().hi) + 1)
            out.last().hi = qMax(out.last().hi, r.hi);
        else
            out.append(r);
    }
    return out;
}

} // namespace

// Entries are kept as ranges and counted before any is expanded: a list of many
// large entries, or the same one many times, must not take memory in proportion to
// what it names.
HostList parseHostList(const QString& text) {
    HostList result;
    QList<Range> ranges;
    static const QRegularExpression separators(QStringLiteral("[\\s,;]+"));
    const QStringList lines = text.split('\n');
    for (int n = 0; n < lines.size(); ++n) {
        QString line = lines[n];
        if (const qsizetype hash = line.indexOf('#'); hash >= 0)
            line.truncate(hash);
        for (const QString& entry : line.split(separators, Qt::SkipEmptyParts)) {
            Range range;
            QString why;
            if (parseEntry(entry, &range, &why))
                ranges.append(range);
            else
                result.errors << QStringLiteral("line %1: '%2': %3").arg(n + 1).arg(entry, why);
        }
    }
    const QList<Range> all = merged(ranges);
    quint64 total = 0;
    for (const Range& r : all)
        total += quint64(r.hi) - r.lo + 1;
    if (total > quint64(HostList::MaxHosts))
        result.errors << QStringLiteral("more than %1 hosts in all; only the first %1 are probed")
                             .arg(HostList::MaxHosts);
    result.hosts.reserve(qMin(total, quint64(HostList::MaxHosts)));
    for (const Range& r : all)
        for (quint64 a = r.lo; a <= r.hi && result.hosts.size() < HostList::MaxHosts; ++a)
            result.hosts.append(quint32(a));
    return result;
}

QString ipv4Text(quint32 a) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg(a >> 24)
        .arg((a >> 16) & 0xFF)
        .arg((a >> 8) & 0xFF)
        .arg(a & 0xFF);
}
