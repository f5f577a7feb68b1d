#include "protocol/controllerside.h"

#include "protocol/catalogue_p.h"

namespace protocol {

using namespace detail;

namespace {

// The controller reads numbers like C's atoi: optional sign, digits, stop at the first
// other character. "050" is 50, "3.7" is 3, "-0.5" is 0.
std::optional<Value> controllerNumber(QByteArrayView text) {
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    Value v = 0;
    int digits = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9' && digits < 9) {
        v = v * 10 + (text[i++] - '0');
        ++digits;
    }
    if (digits == 0)
        return std::nullopt;
    return negative ? -v : v;
}

QByteArray addressBlock(const QList<Value>& current) {
    QByteArray block;
    for (int part = 0; part < 3; ++part)
        for (int octet = 0; octet < 4; ++octet)
            block += AddressTags[part] + QByteArray("0") + char('0' + octet) +
                     three(octetOf(current[part], octet));
    return block;
}

bool refuse(ParsedCommand& q, const QString& note) {
    q.note = note;
    return false;
}

// What a written argument stands for: where the keyword carries the sign, a magnitude.
std::optional<Value> signedValue(const Setting& s, const Command& c, Value arg) {
    if (!s.writeMinus)
        return arg;
    if (arg < 0)
        return std::nullopt;
    return &c == s.writeMinus ? -arg : arg;
}

// A written value: a number or an address, refused when missing or unreadable, not
// applied when out of range. The setting is listed either way: its reply may echo it.
bool readValueArg(ParsedCommand& q, const Command& c, const QByteArrayList& words, int i, int output) {
    const Setting* s = written(c, i + 1, output);
    std::optional<Value> v;
    if (s && s->kind == Kind::Address) {
        if (i >= words.size())
            return refuse(q, QStringLiteral("missing address"));
        v = readAddress(words[i]);
    } else {
        const auto n = i < words.size() ? controllerNumber(words[i]) : std::nullopt;
        if (!n)
            return refuse(q, QStringLiteral("missing or bad argument %1").arg(i + 1));
        q.args[i] = *n;
        v = s ? signedValue(*s, c, *n) : std::nullopt;
    }
    if (!v || !rangeError(*s, *v).isEmpty())
        q.applies = false;
    if (s) {
        q.settings << s;
        q.values << v.value_or(0);
    }
    return true;
}

// Arguments left to right, as the controller checks them.
bool readArgs(ParsedCommand& q, const Command& c, const QByteArrayList& words) {
    int output = 0;
    for (int i = 0; i < c.argCount(); ++i) {
        const Arg& a = c.args[i];
        if (a.kind == ArgKind::Value) {
            if (!readValueArg(q, c, words, i, output))
                return false;
            continue;
        }
        const auto n = i < words.size() ? controllerNumber(words[i]) : std::nullopt;
        if (!n)
            return refuse(q, QStringLiteral("missing or bad argument %1").arg(i + 1));
        q.args[i] = *n;
        const bool fits = *n >= a.min && *n <= a.max;
        if (a.kind == ArgKind::Output && !fits)
            return refuse(q, QStringLiteral("no output %1").arg(*n));
        if (a.kind == ArgKind::Slot && !fits)
            return refuse(q, QStringLiteral("no such favourite slot"));
        if (a.kind == ArgKind::Output || a.kind == ArgKind::Channel)
            output = int(*n);
        q.applies = q.applies && fits;
    }
    return true;
}

void addRead(ParsedCommand& q, const Command& c) {
    const int output = c.args[0].kind == ArgKind::Output ? int(q.args[0]) : 0;
    for (const Setting* s : settingsOf(c))
        if (s->output == output)
            q.settings << s;
}

// The groups a reset takes; with an argument, the one it names.
void addReset(ParsedCommand& q, const Command& c) {
    if (!q.applies)
        return;
    const bool picked = c.args[0].kind != ArgKind::None;
    for (const Setting* s : settingsOf(c)) {
        if (!picked || c.resets[q.args[0] - 1] == s->group) {
            q.settings << s;
            q.values << s->factory;
        }
    }
}

} // namespace

ParsedCommand parseCommand(QByteArrayView line) {
    ParsedCommand q;
    QByteArrayList words;
    for (const QByteArray& w : line.toByteArray().trimmed().split(' '))
        if (!w.isEmpty())
            words << w;
    if (words.isEmpty())
        return q;
    q.keyword = words.takeFirst().toUpper();
    const Command* c = findCommand(q.keyword);
    if (!c) {
        q.note = QStringLiteral("unknown command");
        return q;
    }
    if (!readArgs(q, *c, words)) {
        q.settings.clear();
        q.values.clear();
        return q;
    }
    if (c->effect == Effect::Read)
        addRead(q, *c);
    if (c->effect == Effect::Reset)
        addReset(q, *c);
    if (!q.applies)
        q.note = QStringLiteral("value out of range, not applied");
    q.command = c;
    return q;
}

QByteArray replyText(const ParsedCommand& q, const QList<Value>& current) {
    const Reply& r = q.command->reply;
    const QByteArray key = r.key;
    switch (r.layout) {
    case Layout::Silent:
        return {};
    case Layout::Bare:
        return key + "\r\n";
    case Layout::Short:
        return key + three(r.echo ? q.args[r.echo - 1] : current[0]) + "\r\n";
    case Layout::Long:
        return key + three(q.settings[0]->output) + (current[0] < 0 ? r.minus : r.second) +
               three(qAbs(current[0])) + "\r\n";
    case Layout::AddressBlock:
        return addressBlock(current) + "\r\n";
    }
    return {};
}

} // namespace protocol
