#include "protocol/catalogue.h"

#include "protocol/catalogue_p.h"

#include <algorithm>
#include <vector>

namespace protocol {

using namespace detail;

namespace {

// Arguments.
constexpr Arg OutputArg{ArgKind::Output, 1, OutputCount};
constexpr Arg ChannelArg{ArgKind::Channel, 1, OutputCount};
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

// Preset wall shapes of the hot keys, in key order.
constexpr WallShape HotKeyShapes[] = {
    {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}, {2, 3}, {3, 2}, {3, 4}, {4, 2}, {4, 3}, {4, 5},
    {1, 2}, {2, 1}, {1, 3}, {3, 1}, {1, 4}, {4, 1}, {2, 4}, {3, 5}, {5, 4}, {5, 3}, {6, 2}, {6, 3}};
static_assert(std::size(HotKeyShapes) == HotKeyCount);

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
    action("SHOT", Effect::HotKey, bare("HOTK"), number(0, HotKeyCount - 1)),
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

constexpr std::pair<Action, const char*> Actions[] = {
    {Action::ShowOsdInfo, "SOSDI"},     {Action::ResetIo, "SOSDR"},
    {Action::ResetPicture, "SIMRE"},    {Action::ResetPictures, "SPIRE"},
    {Action::ResetBezel, "SWDE"},       {Action::StoreFavourite, "SFAVE"},
    {Action::RecallFavourite, "RFAVE"}, {Action::HotKey, "SHOT"},
    {Action::RestartNetwork, "SREL"},   {Action::FactoryReset, "SDEF"},
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

// Settings whose lists show words, one for each value from min to max.
constexpr const char* Resolutions[] = {
    "720p50",      "720p60",      "1080p24",     "1080p25",      "1080p30",     "1080p50",
    "1080p60",     "1024x768 60", "1280x800 60", "1280x1024 60", "1366x768 60", "1440x900 60",
    "1600x900 60", "1600x1200 60", "1680x1050 60", "1920x1200 60", "Native"};
constexpr const char* OffOn[] = {"OFF", "ON"};
constexpr const char* NetworkModes[] = {"DHCP", "STATIC"};
constexpr std::pair<const char*, std::span<const char* const>> Labelled[] = {
    {"resolution", Resolutions},
    {"osd.display", OffOn},
    {"network.mode", NetworkModes},
};

QStringList labelsOf(const Family& f) {
    QStringList words;
    for (const auto& [name, list] : Labelled)
        if (qstrcmp(name, f.name) == 0)
            for (const char* w : list)
                words << QLatin1String(w);
    if (!words.isEmpty() && words.size() != f.max - f.min + 1)
        qFatal("catalogue: %s has %d words for %d values", f.name, int(words.size()),
               int(f.max - f.min + 1));
    return words;
}

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
        for (int o = f.perOutput ? 1 : 0; o <= (f.perOutput ? OutputCount : 0); ++o) {
            QString name = QLatin1String(f.name);
            if (o > 0)
                name += u'.' + QChar(u'a' + o - 1);
            out.push_back({name, f.kind, f.min, f.max, f.unit, f.factoryIsOutput ? o : f.factory,
                           f.group, commandNamed(f.read), commandNamed(f.write),
                           commandNamed(f.writeMinus), f.valueArg, o, f.part, int(out.size()),
                           labelsOf(f)});
        }
    }
    return out;
}

const std::vector<Setting>& table() {
    static const std::vector<Setting> t = expand();
    return t;
}

// Text fields


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


// "127.0.0.2", or zero-padded "127.000.000.002" as the controller and the tool write it.
QByteArray addressText(Value address, bool padded) {
    QByteArray text;
    for (int octet = 0; octet < 4; ++octet)
        text += (octet ? "." : "") + (padded ? three(octetOf(address, octet))
                                             : QByteArray::number(octetOf(address, octet)));
    return text;
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

// Commands read by the controller


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

} // namespace

namespace detail {

QByteArray three(Value v) {
    return QByteArray::number(std::clamp<Value>(v, 0, 999)).rightJustified(3, '0');
}

int octetOf(Value address, int octet) {
    return int(address >> (24 - 8 * octet)) & 0xFF;
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

// The setting a command writes with its argument `arg` for `output`.
const Setting* written(const Command& c, int arg, int output) {
    for (const Setting& s : table())
        if ((s.write == &c || s.writeMinus == &c) && s.valueArg == arg &&
            (s.output == 0 || s.output == output))
            return &s;
    return nullptr;
}

} // namespace detail

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

const Setting& setting(QAnyStringView name) {
    const Setting* s = find(name);
    if (!s)
        qFatal("catalogue: no setting %s", qPrintable(name.toString()));
    return *s;
}

const Setting& setting(const char* family, int output) {
    return setting(QLatin1String(family) + u'.' + QChar(u'a' + output - 1));
}

QString outputName(int output) {
    return QStringLiteral("Out ") + QChar(u'A' + output - 1);
}

const Command& command(Action action) {
    for (const auto& [a, keyword] : Actions)
        if (a == action)
            return *commandNamed(keyword);
    qFatal("catalogue: no command for action %d", int(action));
}

std::span<const WallShape> hotKeyShapes() {
    return HotKeyShapes;
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
    if (output < 1 || output > OutputCount)
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

} // namespace protocol
