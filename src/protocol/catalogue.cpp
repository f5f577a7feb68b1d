#include "protocol/catalogue.h"

#include <algorithm>
#include <vector>

namespace protocol {

namespace {

// Arguments.
constexpr Arg OutputArg{ArgKind::Output, 1, 4};
constexpr Arg ChannelArg{ArgKind::Channel, 1, 4};
constexpr Arg ValueArg{ArgKind::Value};
constexpr Arg number(int min, int max) {
    return {ArgKind::Number, min, max};
}
constexpr Arg slot(int min, int max) {
    return {ArgKind::Slot, min, max};
}

// Replies.
constexpr Reply bare(const char* key) {
    return {Layout::Bare, key};
}
constexpr Reply value(const char* key) {
    return {Layout::Short, key};
}
constexpr Reply echo(const char* key, int arg) {
    return {Layout::Short, key, "", "", arg};
}
constexpr Reply pair(const char* key, const char* second) {
    return {Layout::Long, key, second};
}
constexpr Reply signedPair(const char* key, const char* plus, const char* minus) {
    return {Layout::Long, key, plus, minus};
}

// Commands by shape.
constexpr Command reads(const char* keyword, Reply reply) {
    return {keyword, Effect::Read, {}, reply};
}
constexpr Command readsOutput(const char* keyword, Reply reply) {
    return {keyword, Effect::Read, {OutputArg}, reply};
}
constexpr Command sets(const char* keyword, Reply reply = {}) {
    return {keyword, Effect::Write, {ValueArg}, reply};
}
constexpr Command setsOutput(const char* keyword, Reply reply = {}) {
    return {keyword, Effect::Write, {OutputArg, ValueArg}, reply};
}
constexpr Command setsTrim(const char* keyword) {
    return {keyword, Effect::Write, {OutputArg, ValueArg}, {}, {}, true};
}
constexpr Command resets(const char* keyword, Reply reply, std::array<Group, 4> groups,
                         Arg arg = {}) {
    return {keyword, Effect::Reset, {arg}, reply, groups};
}
constexpr Command action(const char* keyword, Effect effect, Reply reply = {}, Arg arg = {}) {
    return {keyword, effect, {arg}, reply};
}

constexpr std::array<Group, 4> PictureGroups{Group::Brightness, Group::Contrast, Group::Saturation,
                                             Group::Hue};

constexpr Command Commands[] = {
    // Status, power, model, factory reset
    reads("RPOW", value("POWE")),
    reads("RMDN", value("MODN")),
    reads("RBY", value("BYPA")),
    reads("RBEZ", value("BEZE")),
    reads("RVER", value("VERS")), // "VERS102" is v1.02
    sets("SPOW", value("POWE")),
    sets("SMDN"),
    sets("SBY"),
    sets("SBEZ"),
    action("SDEF", Effect::FactoryReset, bare("DEFA")),
    // I/O setup
    reads("RRES", value("RESO")),
    reads("ROSDD", value("OSDD")),
    reads("ROSDT", value("OSDT")),
    reads("ROSDH", value("OSDH")),
    reads("ROSDV", value("OSDV")),
    reads("ROSDG", value("OSDG")),
    reads("RMUTE", value("MUTE")),
    sets("SRES"),
    sets("SOSDD"),
    sets("SOSDT"),
    sets("SOSDH"),
    sets("SOSDV"),
    sets("SOSDG"),
    sets("SMUTE"),
    action("SOSDI", Effect::ShowInfo),
    resets("SOSDR", bare("OSDR"), {Group::Io}),
    // Picture; "SIMRE" takes the parameter: 1 brightness .. 4 hue
    readsOutput("RBRI", pair("BRIR", "BRIV")),
    readsOutput("RCON", pair("CONR", "CONV")),
    readsOutput("RSAT", pair("SATR", "SATV")),
    readsOutput("RHUE", pair("HUER", "HUEV")),
    setsOutput("SBRI"),
    setsOutput("SCON"),
    setsOutput("SSAT"),
    setsOutput("SHUE"),
    resets("SIMRE", bare("IMRE"), PictureGroups, number(1, 4)),
    resets("SPIRE", bare("PIRE"), PictureGroups),
    // Wall placement, bezel, favourites, bypass and hot keys
    {"SMNC", Effect::Write, {ValueArg, ValueArg, ChannelArg}, bare("MNCM")}, // rows cols channel
    {"SCO", Effect::Write, {ChannelArg, ValueArg}, bare("COCH")},            // channel tile
    readsOutput("RCBH", pair("CBHR", "CBHV")),
    readsOutput("RCBV", pair("CBVR", "CBVV")),
    setsOutput("SCBH", echo("CBHC", 1)),
    setsOutput("SCBV", echo("CBVC", 1)),
    resets("SWDE", bare("WDEF"), {Group::Bezel}),
    action("SFAVE", Effect::Store, {}, slot(1, 5)),
    action("RFAVE", Effect::Recall, echo("RFAV", 1), slot(1, 5)),
    action("SHOT", Effect::HotKey, bare("HOTK"), number(0, 23)),
    // Position trims: the keyword carries the sign (P plus, M minus), the value is a magnitude
    readsOutput("RCHS", signedPair("CHSC", "PHSV", "MHSV")),
    readsOutput("RCHE", signedPair("CHEC", "PHEV", "MHEV")),
    readsOutput("RCVS", signedPair("CVSC", "PVSV", "MVSV")),
    readsOutput("RCVE", signedPair("CVEC", "PVEV", "MVEV")),
    setsTrim("SPCHS"),
    setsTrim("SMCHS"),
    setsTrim("SPCHE"),
    setsTrim("SMCHE"),
    setsTrim("SPCVS"),
    setsTrim("SMCVS"),
    setsTrim("SPCVE"),
    setsTrim("SMCVE"),
    // Network; addresses travel as dotted text
    reads("RIPM", value("IPMD")),
    reads("RLINK", {Layout::AddressBlock, "IP00"}),
    sets("SIPM", value("IPMD")),
    sets("SIPA", bare("IPA0")),
    sets("SMAA", bare("MAA0")),
    sets("SGAA", bare("GAA0")),
    action("SREL", Effect::Restart, bare("RELI")),
};

// A setting, or one per output named name.a .. name.d.
struct Family {
    const char* name;
    bool perOutput;
    Kind kind;
    Value min;
    Value max;
    const char* unit;
    Value factory;
    Group group;
    const char* read;
    const char* write;
    int valueArg = 1;
    const char* writeMinus = nullptr;
    int part = 0;
    bool factoryIsOutput = false; // each output shows its own tile
};

constexpr Kind Num = Kind::Number;
constexpr Kind Addr = Kind::Address;
constexpr Value Max32 = 0xFFFFFFFF;

// The controller's own address is set per unit; mask and gateway are those a controller
// on loopback leaves the factory with.
using enum Group;

// clang-format off
constexpr Family Families[] = {
    // name             each   kind  min   max    unit    factory     group       read     write    arg minus  part own tile
    {"power",           false, Num,  0,    1,     "",     1,          Status,     "RPOW",  "SPOW"},
    {"model",           false, Num,  0,    255,   "",     0,          Status,     "RMDN",  "SMDN"},
    {"firmware",        false, Num,  0,    999,   "",     102,        Status,     "RVER",  nullptr},
    {"bypass",          false, Num,  0,    1,     "",     0,          Bypass,     "RBY",   "SBY"},
    {"bezel.mode",      false, Num,  0,    1,     "",     0,          BezelMode,  "RBEZ",  "SBEZ"},
    {"bezel.h",         true,  Num,  0,    255,   "step", 10,         Bezel,      "RCBH",  "SCBH",  2},
    {"bezel.v",         true,  Num,  0,    255,   "step", 10,         Bezel,      "RCBV",  "SCBV",  2},
    {"resolution",      false, Num,  0,    16,    "",     6,          Io,         "RRES",  "SRES"},
    {"osd.display",     false, Num,  0,    1,     "",     0,          Io,         "ROSDD", "SOSDD"},
    {"osd.timeout",     false, Num,  2,    50,    "s",    2,          Io,         "ROSDT", "SOSDT"},
    {"osd.h_offset",    false, Num,  0,    20,    "step", 5,          Io,         "ROSDH", "SOSDH"},
    {"osd.v_offset",    false, Num,  0,    20,    "step", 5,          Io,         "ROSDV", "SOSDV"},
    {"osd.gain",        false, Num,  0,    10,    "step", 2,          Io,         "ROSDG", "SOSDG"},
    {"mute",            false, Num,  0,    1,     "",     0,          Io,         "RMUTE", "SMUTE"},
    {"brightness",      true,  Num,  0,    100,   "%",    50,         Brightness, "RBRI",  "SBRI",  2},
    {"contrast",        true,  Num,  0,    100,   "%",    50,         Contrast,   "RCON",  "SCON",  2},
    {"saturation",      true,  Num,  0,    100,   "%",    50,         Saturation, "RSAT",  "SSAT",  2},
    {"hue",             true,  Num,  0,    100,   "%",    50,         Hue,        "RHUE",  "SHUE",  2},
    {"trim.h_start",    true,  Num,  -255, 255,   "step", 0,          Trim,       "RCHS",  "SPCHS", 2, "SMCHS"},
    {"trim.h_end",      true,  Num,  -255, 255,   "step", 0,          Trim,       "RCHE",  "SPCHE", 2, "SMCHE"},
    {"trim.v_start",    true,  Num,  -255, 255,   "step", 0,          Trim,       "RCVS",  "SPCVS", 2, "SMCVS"},
    {"trim.v_end",      true,  Num,  -255, 255,   "step", 0,          Trim,       "RCVE",  "SPCVE", 2, "SMCVE"},
    {"network.mode",    false, Num,  0,    1,     "",     1,          Network,    "RIPM",  "SIPM"},
    {"network.address", false, Addr, 0,    Max32, "",     0,          Network,    "RLINK", "SIPA",  1, nullptr, 0},
    {"network.mask",    false, Addr, 0,    Max32, "",     0xFF000000, Network,    "RLINK", "SMAA",  1, nullptr, 1},
    {"network.gateway", false, Addr, 0,    Max32, "",     0x7F000001, Network,    "RLINK", "SGAA",  1, nullptr, 2},
    {"wall.rows",       false, Num,  1,    15,    "",     2,          Wall,       nullptr, "SMNC",  1},
    {"wall.cols",       false, Num,  1,    15,    "",     2,          Wall,       nullptr, "SMNC",  2},
    {"wall.position",   true,  Num,  1,    225,   "",     1,          Wall,       nullptr, "SCO",   2, nullptr, 0, true},
};
// clang-format on

const Command* commandNamed(const char* keyword) {
    if (!keyword)
        return nullptr;
    const Command* c = findCommand(keyword);
    if (!c)
        qFatal("catalogue: no command %s", keyword);
    return c;
}

std::vector<Setting> expand() {
    std::vector<Setting> out;
    for (const Family& f : Families) {
        for (int o = f.perOutput ? 1 : 0; o <= (f.perOutput ? 4 : 0); ++o) {
            QString name = QLatin1String(f.name);
            if (o > 0)
                name += u'.' + QChar(u'a' + o - 1);
            out.push_back({name, f.kind, f.min, f.max, f.unit, f.factoryIsOutput ? o : f.factory,
                           f.group, commandNamed(f.read), commandNamed(f.write),
                           commandNamed(f.writeMinus), f.valueArg, o, f.part, int(out.size())});
        }
    }
    return out;
}

const std::vector<Setting>& table() {
    static const std::vector<Setting> t = expand();
    return t;
}

// Text fields

QByteArray three(Value v) {
    return QByteArray::number(std::clamp<Value>(v, 0, 999)).rightJustified(3, '0');
}

QByteArrayView field(QByteArrayView text, Field f) {
    const qsizetype from = f.start - 1;
    if (from >= text.size())
        return {};
    return text.sliced(from, qMin<qsizetype>(f.length, text.size() - from));
}

std::optional<Value> threeDigits(QByteArrayView text) {
    if (text.size() != 3)
        return std::nullopt;
    for (char c : text)
        if (c < '0' || c > '9')
            return std::nullopt;
    return text.toInt();
}

int octetOf(Value address, int octet) {
    return int(address >> (24 - 8 * octet)) & 0xFF;
}

// "127.0.0.2", or zero-padded "127.000.000.002" as the controller and the tool write it.
QByteArray addressText(Value address, bool padded) {
    QByteArray text;
    for (int octet = 0; octet < 4; ++octet)
        text += (octet ? "." : "") + (padded ? three(octetOf(address, octet))
                                             : QByteArray::number(octetOf(address, octet)));
    return text;
}

// Four dotted octets of one to three digits each, padded or not: general parsers
// may take the padded ones for octal.
std::optional<Value> readAddress(QByteArrayView text) {
    const QList<QByteArray> parts = text.toByteArray().split('.');
    if (parts.size() != 4)
        return std::nullopt;
    Value a = 0;
    for (const QByteArray& p : parts) {
        if (p.isEmpty() || p.size() > 3)
            return std::nullopt;
        for (char c : p)
            if (c < '0' || c > '9')
                return std::nullopt;
        if (p.toInt() > 255)
            return std::nullopt;
        a = (a << 8) | p.toInt();
    }
    return a;
}

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

template <typename T> Result<T> failure(const QString& error) {
    return {std::nullopt, error};
}

QString printable(QByteArrayView chunk) {
    return QString::fromLatin1(chunk).trimmed();
}

// Lines

QByteArray lineOf(const Command& c, const QList<QByteArray>& args) {
    QByteArray line = c.keyword;
    if (c.doubledBlank)
        line += ' ';
    for (const QByteArray& a : args)
        line += ' ' + a;
    return line + "\r\n";
}

QByteArray ackOf(const Command& c) {
    return c.reply.layout == Layout::Silent ? QByteArray() : QByteArray(c.reply.key);
}

// True when the write command carries more than this setting's value and output.
bool writtenWithOthers(const Setting& s) {
    for (int i = 0; i < s.write->argCount(); ++i)
        if (i + 1 != s.valueArg && s.write->args[i].kind != ArgKind::Output)
            return true;
    return false;
}

// Replies

Result<Value> inRange(const Setting& s, Value v) {
    const QString error = rangeError(s, v);
    return error.isEmpty() ? Result<Value>{v, {}} : failure<Value>(error);
}

Result<Value> keyAndValue(const Setting& s, QByteArrayView chunk) {
    const Reply& r = s.read->reply;
    if (field(chunk, KeyField) != r.key)
        return failure<Value>(QStringLiteral("expected %1, got '%2'").arg(r.key, printable(chunk)));
    const auto v = threeDigits(field(chunk, ValueField));
    if (!v)
        return failure<Value>(QStringLiteral("no three-digit value in '%1'").arg(printable(chunk)));
    return inRange(s, *v);
}

// Picture and bezel replies are known by their second key alone, trims by their first;
// what else stands in characters 1-7 is the controller's business.
Result<Value> keysAndValue(const Setting& s, QByteArrayView chunk) {
    const Reply& r = s.read->reply;
    const bool isSigned = *r.minus;
    const bool known =
        isSigned ? field(chunk, KeyField) == r.key : field(chunk, SecondKeyField) == r.second;
    if (!known)
        return failure<Value>(QStringLiteral("expected %1, got '%2'")
                                  .arg(isSigned ? r.key : r.second, printable(chunk)));
    const auto v = threeDigits(field(chunk, LongValueField));
    if (!v)
        return failure<Value>(QStringLiteral("no three-digit value in '%1'").arg(printable(chunk)));
    // Any second key but the plus one means minus.
    const bool minus = isSigned && field(chunk, SecondKeyField) != r.second;
    return inRange(s, minus ? -*v : *v);
}

// Only the digits are read; the tags between them are the controller's business.
Result<Value> addressOf(const Setting& s, QByteArrayView chunk) {
    const Reply& r = s.read->reply;
    if (field(chunk, KeyField) != r.key)
        return failure<Value>(QStringLiteral("expected %1, got '%2'").arg(r.key, printable(chunk)));
    Value a = 0;
    for (int octet = 0; octet < 4; ++octet) {
        const auto v = threeDigits(field(chunk, octetField(s.part, octet)));
        if (!v || *v > 255)
            return failure<Value>(QStringLiteral("no octet %1 of %2 in '%3'")
                                      .arg(octet + 1)
                                      .arg(s.name, printable(chunk)));
        a = (a << 8) | *v;
    }
    return {a, {}};
}

QByteArray addressBlock(const QList<Value>& current) {
    QByteArray block;
    for (int part = 0; part < 3; ++part)
        for (int octet = 0; octet < 4; ++octet)
            block += AddressTags[part] + QByteArray("0") + char('0' + octet) +
                     three(octetOf(current[part], octet));
    return block;
}

// Commands read by the controller

// The setting a command writes with its argument `arg` for `output`.
const Setting* written(const Command& c, int arg, int output) {
    for (const Setting& s : table())
        if ((s.write == &c || s.writeMinus == &c) && s.valueArg == arg &&
            (s.output == 0 || s.output == output))
            return &s;
    return nullptr;
}

// The line of a write command for `output`, each value taken from valueOf(setting).
template <typename ValueOf>
QByteArray lineFor(const Command& c, int output, const ValueOf& valueOf) {
    QList<QByteArray> args;
    for (int i = 0; i < c.argCount(); ++i) {
        if (c.args[i].kind != ArgKind::Value) {
            args << QByteArray::number(output);
            continue;
        }
        const Setting& s = *written(c, i + 1, output);
        const Value v = valueOf(s);
        args << (s.kind == Kind::Address ? addressText(v, true) : QByteArray::number(qAbs(v)));
    }
    return lineOf(c, args);
}

bool refuse(Request& q, const QString& note) {
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
bool readValueArg(Request& q, const Command& c, const QByteArrayList& words, int i, int output) {
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
bool readArgs(Request& q, const Command& c, const QByteArrayList& words) {
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

void addRead(Request& q, const Command& c) {
    const int output = c.args[0].kind == ArgKind::Output ? int(q.args[0]) : 0;
    for (const Setting* s : settingsOf(c))
        if (s->output == output)
            q.settings << s;
}

// The groups a reset takes; with an argument, the one it names.
void addReset(Request& q, const Command& c) {
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

int Command::argCount() const {
    int n = 0;
    while (n < int(args.size()) && args[n].kind != ArgKind::None)
        ++n;
    return n;
}

std::span<const Setting> settings() {
    return table();
}

const Setting* find(QAnyStringView name) {
    for (const Setting& s : table())
        if (QAnyStringView::compare(name, s.name) == 0)
            return &s;
    return nullptr;
}

QList<const Setting*> settingsOf(const Command& c) {
    QList<const Setting*> out;
    for (const Setting& s : table())
        if (s.read == &c || s.write == &c || s.writeMinus == &c ||
            (c.effect == Effect::Reset && std::ranges::count(c.resets, s.group) > 0))
            out << &s;
    return out;
}

std::span<const Command> commands() {
    return Commands;
}

const Command* findCommand(QByteArrayView keyword) {
    for (const Command& c : Commands)
        if (keyword == c.keyword)
            return &c;
    return nullptr;
}

const QList<Value>& factoryValues() {
    static const QList<Value> values = [] {
        QList<Value> v;
        for (const Setting& s : table())
            v << s.factory;
        return v;
    }();
    return values;
}

QString valueText(const Setting& s, Value v) {
    return s.kind == Kind::Address ? QString::fromLatin1(addressText(v, false))
                                   : QString::number(v);
}

Result<Value> parseValue(const Setting& s, QStringView text) {
    const QByteArray t = text.trimmed().toLatin1();
    if (s.kind == Kind::Address) {
        if (const auto a = readAddress(t))
            return {a, {}};
        return failure<Value>(
            QStringLiteral("%1 takes a dotted IPv4 address, not '%2'").arg(s.name, text.trimmed()));
    }
    bool ok = false;
    const Value v = t.toLongLong(&ok);
    if (!ok)
        return failure<Value>(QStringLiteral("%1 takes a whole number %2, not '%3'")
                                  .arg(s.name, rangeText(s), text.trimmed()));
    return inRange(s, v);
}

QString rangeText(const Setting& s) {
    if (s.kind == Kind::Address)
        return QStringLiteral("a dotted IPv4 address");
    QString text = QStringLiteral("%1..%2").arg(s.min).arg(s.max);
    if (*s.unit)
        text += u' ' + QLatin1String(s.unit);
    return text;
}

QString rangeError(const Setting& s, Value v) {
    if (v >= s.min && v <= s.max)
        return {};
    return QStringLiteral("%1 takes %2, not %3").arg(s.name, rangeText(s), valueText(s, v));
}

QByteArray readLine(const Setting& s) {
    if (!s.read)
        return {};
    return lineOf(*s.read,
                  s.output ? QList<QByteArray>{QByteArray::number(s.output)} : QList<QByteArray>{});
}

Result<Value> parseReply(const Setting& s, QByteArrayView chunk) {
    if (!s.read)
        return failure<Value>(QStringLiteral("%1 cannot be read").arg(s.name));
    switch (s.read->reply.layout) {
    case Layout::Short:
        return keyAndValue(s, chunk);
    case Layout::Long:
        return keysAndValue(s, chunk);
    case Layout::AddressBlock:
        return addressOf(s, chunk);
    default:
        return failure<Value>(QStringLiteral("%1 has no value reply").arg(s.name));
    }
}

Result<Write> writeLine(const Setting& s, Value v) {
    if (!s.write)
        return failure<Write>(QStringLiteral("%1 cannot be written").arg(s.name));
    if (writtenWithOthers(s))
        return failure<Write>(
            QStringLiteral("%1 is written with the wall placement: rows, columns and the tile "
                           "of one output together")
                .arg(s.name));
    if (const QString error = rangeError(s, v); !error.isEmpty())
        return failure<Write>(error);
    const Command& c = v < 0 && s.writeMinus ? *s.writeMinus : *s.write;
    return {Write{lineFor(c, s.output, [v](const Setting&) { return v; }), ackOf(c)}, {}};
}

Result<QList<Write>> placementLines(int rows, int cols, int output, int position) {
    if (output < 1 || output > 4)
        return failure<QList<Write>>(QStringLiteral("no output %1").arg(output));
    const Command& size = *findCommand("SMNC");
    const Command& tile = *findCommand("SCO");
    const Setting* rowsSetting = written(size, 1, output);
    const std::pair<const Setting*, Value> checks[] = {{rowsSetting, rows},
                                                       {written(size, 2, output), cols},
                                                       {written(tile, 2, output), position}};
    for (const auto& [s, v] : checks)
        if (const QString error = rangeError(*s, v); !error.isEmpty())
            return failure<QList<Write>>(error);
    if (position > rows * cols)
        return failure<QList<Write>>(QStringLiteral("a wall of %1 x %2 has tiles 1..%3, not %4")
                                         .arg(rows)
                                         .arg(cols)
                                         .arg(rows * cols)
                                         .arg(position));
    const auto sizeOf = [&](const Setting& s) { return &s == rowsSetting ? rows : cols; };
    const auto tileOf = [&](const Setting&) { return position; };
    return {QList<Write>{{lineFor(size, output, sizeOf), ackOf(size)},
                         {lineFor(tile, output, tileOf), ackOf(tile)}},
            {}};
}

Request parseCommand(QByteArrayView line) {
    Request q;
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

QByteArray replyText(const Request& q, const QList<Value>& current) {
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
