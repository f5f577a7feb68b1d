#include "client/report.h"

#include <QJsonObject>

namespace client {

QString outcomeText(Outcome outcome) {
    switch (outcome) {
    case Outcome::Equal:
        return QStringLiteral("read back equal");
    case Outcome::Different:
        return QStringLiteral("read back different");
    case Outcome::Written:
        return QStringLiteral("written");
    case Outcome::Unconfirmed:
        return QStringLiteral("sent, not confirmed");
    case Outcome::NotSent:
        break;
    }
    return QStringLiteral("not sent");
}

QString outcomeKey(Outcome outcome) {
    static const char* const keys[] = {"equal", "different", "written", "unconfirmed", "not-sent"};
    return QString::fromLatin1(keys[int(outcome)]);
}

bool ControllerReport::done() const {
    if (!failure.isEmpty())
        return false;
    for (const SettingReport& s : settings)
        if (s.outcome != Outcome::Equal && s.outcome != Outcome::Written)
            return false;
    return true;
}

bool Report::done() const {
    return doneCount() == controllers.size();
}

qsizetype Report::doneCount() const {
    qsizetype n = 0;
    for (const ControllerReport& c : controllers)
        n += c.done();
    return n;
}

namespace {

QString who(const Target& t) {
    return t.mac.isEmpty() ? t.address : QStringLiteral("%1 (%2)").arg(t.address, t.mac);
}

QString summary(const ControllerReport& c) {
    QStringList parts;
    if (!c.failure.isEmpty())
        parts << QStringLiteral("failed: ") + c.failure;
    if (!c.settings.isEmpty()) {
        QMap<int, int> counts;
        for (const SettingReport& s : c.settings)
            ++counts[int(s.outcome)];
        QStringList tally;
        for (auto it = counts.cbegin(); it != counts.cend(); ++it)
            tally << QStringLiteral("%1 %2").arg(it.value()).arg(outcomeText(Outcome(it.key())));
        parts << QStringLiteral("%1 settings: %2")
                     .arg(c.settings.size())
                     .arg(tally.join(QLatin1String(", ")));
    }
    if (!c.note.isEmpty())
        parts << c.note;
    return parts.join(QLatin1String("; "));
}

QString line(const SettingReport& s, const QString& failure) {
    QString text = QStringLiteral("  %1 = %2: ").arg(s.name, s.wanted);
    if (s.outcome == Outcome::Different)
        text += QStringLiteral("reads back %1").arg(s.readBack);
    else
        text += outcomeText(s.outcome);
    if (!s.why.isEmpty() && s.why != failure)
        text += QStringLiteral(" (%1)").arg(s.why);
    return text;
}

} // namespace

QString Report::text() const {
    QStringList lines;
    for (const ControllerReport& c : controllers) {
        lines << QStringLiteral("%1: %2").arg(who(c.target), summary(c));
        for (const SettingReport& s : c.settings)
            lines << line(s, c.failure);
    }
    return lines.join(u'\n');
}

QJsonArray Report::json() const {
    QJsonArray list;
    for (const ControllerReport& c : controllers) {
        QJsonArray settings;
        for (const SettingReport& s : c.settings) {
            QJsonObject o{{QLatin1String("name"), s.name},
                          {QLatin1String("wanted"), s.wanted},
                          {QLatin1String("outcome"), outcomeKey(s.outcome)}};
            if (s.outcome == Outcome::Equal || s.outcome == Outcome::Different)
                o.insert(QLatin1String("readBack"), s.readBack);
            if (!s.why.isEmpty())
                o.insert(QLatin1String("why"), s.why);
            settings.append(o);
        }
        QJsonObject o{{QLatin1String("address"), c.target.address},
                      {QLatin1String("done"), c.done()},
                      {QLatin1String("settings"), settings}};
        if (!c.target.mac.isEmpty())
            o.insert(QLatin1String("mac"), c.target.mac);
        if (!c.failure.isEmpty())
            o.insert(QLatin1String("failure"), c.failure);
        if (!c.note.isEmpty())
            o.insert(QLatin1String("note"), c.note);
        list.append(o);
    }
    return list;
}

void WriteTrack::add(const QList<Change>& settings, const protocol::Write& write) {
    writes_.push_back({settings, write});
}

QList<Change> WriteTrack::changes() const {
    QList<Change> all;
    for (const Entry& e : writes_)
        all += e.settings;
    return all;
}

void WriteTrack::queue(ControllerClient& client) {
    replies_ = 0;
    QObject::connect(&client, &ControllerClient::replied, &client, [this] { ++replies_; });
    for (Entry& e : writes_) {
        e.sentAt = -1;
        client.then([this, &e] { e.sentAt = replies_; });
        client.exchange(e.write.line, e.write.ack);
    }
}

QList<const protocol::Setting*> WriteTrack::sentUnread(const Values& readBack) const {
    QList<const protocol::Setting*> unknown;
    for (const Entry& e : writes_)
        for (const auto& [s, v] : e.settings)
            if (e.sentAt >= 0 && s->readable() && !readBack.contains(s->name))
                unknown << s;
    return unknown;
}

QList<SettingReport> WriteTrack::report(const Values& readBack, const QString& failure,
                                        const QString& unread) const {
    QList<SettingReport> reports;
    for (const Entry& e : writes_)
        for (const auto& [s, v] : e.settings) {
            SettingReport r;
            r.name = s->name;
            r.wanted = protocol::valueText(*s, v);
            if (e.sentAt < 0) {
                r.outcome = Outcome::NotSent;
                r.why = failure.isEmpty() ? QStringLiteral("an earlier step failed") : failure;
            } else if (readBack.contains(s->name)) {
                const protocol::Value back = readBack.value(s->name);
                r.outcome = back == v ? Outcome::Equal : Outcome::Different;
                r.readBack = protocol::valueText(*s, back);
            } else if (replies_ <= e.sentAt) {
                r.outcome = Outcome::Unconfirmed;
                r.why = failure;
            } else {
                r.outcome = Outcome::Written;
                r.why = !s->readable()       ? QStringLiteral("the controller cannot report it")
                        : !failure.isEmpty() ? QStringLiteral("not read back: ") + failure
                                             : unread;
            }
            reports << r;
        }
    return reports;
}

QString reason(const QString& failure, const QString& address) {
    const QString prefix = address + QLatin1String(": ");
    return failure.startsWith(prefix) ? failure.mid(prefix.size()) : failure;
}

} // namespace client
