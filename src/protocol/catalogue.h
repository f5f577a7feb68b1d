#pragma once

#include <QAnyStringView>
#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <array>
#include <optional>
#include <span>

// The controller's protocol as data: every value it keeps, every command it takes and
// every reply it gives, with the fields of each reply by 1-based character position.
// The controller, the tool and the command-line client all read it from here.
namespace protocol {

// A number, or an IPv4 address as its 32-bit value.
using Value = qint64;

// Characters start .. start + length - 1 of a reply.
struct Field {
    int start;
    int length;
};

// "POWE001": a key and a three-digit value.
inline constexpr Field KeyField{1, 4};
inline constexpr Field ValueField{5, 3};
// "BRIR001BRIV050", "CHSC001MHSV055": a first key, the output, a second key and the value.
inline constexpr Field OutputField{5, 3};
inline constexpr Field SecondKeyField{8, 4};
inline constexpr Field LongValueField{12, 3};
// "IP00127IP01000IP02000IP03002MA00255...GA03001": twelve fields of a four-character tag
// and three digits, four octets each of the address (part 0), mask (1) and gateway (2).
inline constexpr const char* AddressTags[3] = {"IP", "MA", "GA"}; // then "0" and the octet
constexpr Field octetField(int part, int octet) {
    return {5 + 28 * part + 7 * octet, 3};
}

enum class Layout : quint8 {
    Silent,       // the controller does not answer
    Bare,         // the key alone: "MNCM"
    Short,        // key and value: "POWE001"
    Long,         // "BRIR001BRIV050"; a signed value picks its second key: "CHSC001MHSV055"
    AddressBlock, // address, mask and gateway in one line
};

struct Reply {
    Layout layout = Layout::Silent;
    const char* key = "";    // characters 1-4
    const char* second = ""; // long layout: characters 8-11, for a signed value zero and above
    const char* minus = "";  // long layout: characters 8-11 below zero; empty when unsigned
    int echo = 0;            // short layout: 0 the setting's value, n the n-th argument
};

enum class ArgKind : quint8 {
    None,
    Output,  // 1..4, whose setting is read or written; another number refuses the command
    Channel, // 1..4, the output placed on the wall; another number is not applied
    Value,   // the value written, in the setting's range; a magnitude where the keyword
             // carries the sign
    Number,  // min..max; another number is acknowledged but not applied
    Slot,    // min..max; another number refuses the command
};

struct Arg {
    ArgKind kind = ArgKind::None;
    int min = 0;
    int max = 0;
};

// Families of settings, as the resets and the favourite slots take them.
enum class Group : quint8 {
    None,
    Status,
    Bypass,
    BezelMode,
    Bezel,
    Io,
    Brightness,
    Contrast,
    Saturation,
    Hue,
    Trim,
    Network,
    Wall,
};

enum class Effect : quint8 {
    Read,         // answers with the values of its settings
    Write,        // sets its settings from its arguments
    Reset,        // puts groups back to their factory values
    ShowInfo,     // the outputs show the OSD information
    Store,        // keeps the wall settings in a favourite slot
    Recall,       // brings a favourite slot back
    HotKey,       // applies a preset wall shape
    Restart,      // restarts the network with the stored settings
    FactoryReset, // factory settings, then a restart
};

struct Command {
    const char* keyword;
    Effect effect;
    std::array<Arg, 3> args{};
    Reply reply{};
    // Effect::Reset: these groups; with an argument, the argument's one (1-based).
    std::array<Group, 4> resets{};
    bool doubledBlank = false; // two blanks after the keyword, as the tool sends trims

    int argCount() const;
};

enum class Kind : quint8 { Number, Address };

struct Setting {
    QString name; // "brightness.b": outputs 1..4 are a..d
    Kind kind;
    Value min;
    Value max;
    const char* unit; // "%", "s", "step" or ""
    Value factory;
    Group group;
    const Command* read;       // nullptr: write only
    const Command* write;      // nullptr: read only; for a signed value zero and above
    const Command* writeMinus; // a value below zero as its magnitude; nullptr when unsigned
    int valueArg;              // the argument of `write` that carries the value, 1-based
    int output;                // 1..4 for a setting of each output, else 0
    int part;                  // address block: 0 address, 1 mask, 2 gateway
    int index;                 // position in settings()
    QStringList labels;        // the words a list shows for values min..max; empty: numbers

    bool readable() const { return read != nullptr; }
    bool writable() const { return write != nullptr; }
};

// A value, or why there is none in words for the operator.
template <typename T> struct Result {
    std::optional<T> value;
    QString error;

    explicit operator bool() const { return value.has_value(); }
    const T& operator*() const { return *value; }
    const T* operator->() const { return &*value; }
};

std::span<const Setting> settings(); // catalogue order
const Setting* find(QAnyStringView name);
// A setting the program names itself: a name missing from the catalogue is a fault of
// the program and stops it at once.
const Setting& setting(QAnyStringView name);
// The setting of one output, 1..OutputCount, of a family kept per output: "brightness".
const Setting& setting(const char* family, int output);

// The outputs of a controller, 1..OutputCount, shown as "Out A".."Out D".
inline constexpr int OutputCount = 4;
QString outputName(int output);

// Commands that act on the controller rather than carry one setting's value.
enum class Action : quint8 {
    ShowOsdInfo,
    ResetIo,
    ResetPicture,  // one parameter of every output, by its number 1..4
    ResetPictures, // all four parameters
    ResetBezel,
    StoreFavourite,
    RecallFavourite,
    HotKey,
    RestartNetwork,
    FactoryReset,
};
const Command& command(Action action);

// The preset wall shapes of the hot keys, in key order.
struct WallShape {
    int rows;
    int cols;
};
inline constexpr int HotKeyCount = 24;
std::span<const WallShape> hotKeyShapes();
std::span<const Command> commands();
const Command* findCommand(QByteArrayView keyword); // upper case
// Every setting the command reads, writes or resets, for any output or argument.
QList<const Setting*> settingsOf(const Command& c);
const QList<Value>& factoryValues(); // by setting index

// Values as the operator writes them: "5", "-12", "192.168.1.10".
QString valueText(const Setting& s, Value v);
Result<Value> parseValue(const Setting& s, QStringView text); // range-checked
QString rangeText(const Setting& s);                          // "0..100 %"
QString rangeError(const Setting& s, Value v);                // empty when in range

// The client's side: lines to send and the replies to them.
struct Write {
    QByteArray line; // with "\r\n"
    QByteArray ack;  // reply key the controller answers with; empty when it stays silent
};
QByteArray readLine(const Setting& s); // "RBRI 2\r\n"; empty when write only
// The value of a read reply, taken as the tool takes it: by the key the tool matches on
// (the second key of picture and bezel replies), from its three-digit field, and in range.
Result<Value> parseReply(const Setting& s, QByteArrayView chunk);
Result<Write> writeLine(const Setting& s, Value v);
// The wall placement writes rows, columns and one output's tile together.
Result<QList<Write>> placementLines(int rows, int cols, int output, int position);

} // namespace protocol
