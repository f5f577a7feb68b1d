#include "client/settingsio.h"

#include "protocol/command.h"

#include <algorithm>

using protocol::Setting;

void queueReads(ControllerClient& client, const QList<const Setting*>& settings, Values* values) {
    QMap<QByteArray, QList<const Setting*>> byLine;
    QList<QByteArray> order;
    for (const Setting* s : settings) {
        const QByteArray line = protocol::readLine(*s);
        if (!byLine.contains(line))
            order << line;
        byLine[line] << s;
    }
    for (const QByteArray& line : order) {
        const QList<const Setting*> answered = byLine.value(line);
        const QByteArray key(answered.first()->read->reply.key);
        client.exchange(line, key, [&client, answered, values, line](const QByteArray& reply) {
            for (const Setting* s : answered) {
                const protocol::Result<protocol::Value> v = protocol::parseReply(*s, reply);
                if (!v) {
                    client.fail(
                        QStringLiteral("%1 answered %2: %3")
                            .arg(QString::fromLatin1(line).trimmed(), visibleText(reply), v.error));
                    return;
                }
                values->insert(s->name, *v);
            }
        });
    }
}

void queueWrites(ControllerClient& client, const QList<Change>& changes) {
    for (const auto& [s, v] : changes) {
        const protocol::Result<protocol::Write> write = protocol::writeLine(*s, v);
        if (!write) {
            client.fail(QStringLiteral("%1: %2").arg(s->name, write.error));
            return;
        }
        client.exchange(write->line, write->ack);
    }
}

namespace {

// Edit distance, for suggesting a setting to a mistyped name.
int distance(const QString& a, const QString& b) {
    QList<int> row(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

QStringList closeNames(const QString& name) {
    QStringList close;
    for (const Setting& s : protocol::settings())
        if (distance(name, s.name) <= 2 || s.name.startsWith(name + u'.'))
            close << s.name;
    return close;
}

} // namespace

std::optional<QList<const Setting*>> settingsNamed(const QStringList& names, QString* error) {
    if (names.isEmpty())
        return readableSettings(true);
    QList<const Setting*> chosen;
    for (const QString& name : names) {
        const Setting* s = protocol::find(name);
        if (!s) {
            const QStringList close = closeNames(name);
            *error =
                QStringLiteral("unknown setting \"%1\"").arg(name) +
                (close.isEmpty()
                     ? QStringLiteral("; \"panomat-ctl settings\" lists them")
                     : QStringLiteral("; did you mean %1?").arg(close.join(QLatin1String(", "))));
            return std::nullopt;
        }
        chosen << s;
    }
    return chosen;
}

QList<const Setting*> readableSettings(bool withNetwork) {
    QList<const Setting*> readable;
    for (const Setting& s : protocol::settings())
        if (s.readable() && (withNetwork || s.group != protocol::Group::Network))
            readable << &s;
    return readable;
}

QStringList differences(const QList<Change>& wanted, const Values& readBack) {
    QStringList different;
    for (const auto& [s, v] : wanted)
        if (s->readable() && readBack.value(s->name, v) != v)
            different << QStringLiteral("%1: wrote %2, reads back %3")
                             .arg(s->name, protocol::valueText(*s, v),
                                  protocol::valueText(*s, readBack.value(s->name)));
    return different;
}

QList<Change> restoreChanges(const Values& wanted, const Values& now, bool withNetwork) {
    QList<Change> changes;
    for (const Setting* s : readableSettings(withNetwork))
        if (s->writable() && wanted.contains(s->name) &&
            wanted.value(s->name) != now.value(s->name))
            changes.append({s, wanted.value(s->name)});
    return changes;
}

QString describeChange(const Change& change, const Values& now) {
    const auto& [s, v] = change;
    return QStringLiteral("%1: %2 -> %3")
        .arg(s->name, protocol::valueText(*s, now.value(s->name)), protocol::valueText(*s, v));
}
