#include "commandhandler.h"

#include <QList>

namespace sim {

namespace {

QByteArray three(int value) {
    return QByteArray::number(qBound(0, value, 999)).rightJustified(3, '0');
}

QByteArray keyValue(const char* key, int value) {
    return QByteArray(key) + three(value) + "\r\n";
}

// The controller reads numbers like C's atoi: optional sign, digits, stop at the
// first other character. "050" is 50, "3.7" is 3, "-0.5" is 0.
bool parseInt(const QByteArray& text, int* out) {
    int i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    long value = 0;
    int digits = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9' && digits < 9) {
        value = value * 10 + (text[i++] - '0');
        ++digits;
    }
    if (digits == 0)
        return false;
    *out = int(negative ? -value : value);
    return true;
}

// Upper-case letters of each picture and trim group, in command order.
constexpr const char* PictureSet[4] = {"SBRI", "SCON", "SSAT", "SHUE"};
constexpr const char* PictureRead[4] = {"RBRI", "RCON", "RSAT", "RHUE"};
constexpr const char* PictureFirstKey[4] = {"BRIR", "CONR", "SATR", "HUER"};
constexpr const char* PictureValueKey[4] = {"BRIV", "CONV", "SATV", "HUEV"};

constexpr const char* TrimPlus[4] = {"SPCHS", "SPCHE", "SPCVS", "SPCVE"};
constexpr const char* TrimMinus[4] = {"SMCHS", "SMCHE", "SMCVS", "SMCVE"};
constexpr const char* TrimRead[4] = {"RCHS", "RCHE", "RCVS", "RCVE"};
constexpr const char* TrimGroupKey[4] = {"CHSC", "CHEC", "CVSC", "CVEC"};
constexpr const char* TrimPlusKey[4] = {"PHSV", "PHEV", "PVSV", "PVEV"};
constexpr const char* TrimMinusKey[4] = {"MHSV", "MHEV", "MVSV", "MVEV"};

// Preset wall shapes of the hot keys, in key order, read as rows x columns like
// the arguments of "SMNC".
constexpr int HotKeyShape[24][2] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}, {2, 3}, {3, 2},
                                    {3, 4}, {4, 2}, {4, 3}, {4, 5}, {1, 2}, {2, 1}, {1, 3}, {3, 1},
                                    {1, 4}, {4, 1}, {2, 4}, {3, 5}, {5, 4}, {5, 3}, {6, 2}, {6, 3}};

int indexOf(const char* const (&names)[4], const QByteArray& keyword) {
    for (int i = 0; i < 4; ++i)
        if (keyword == names[i])
            return i;
    return -1;
}

void applyHotKey(WallSettings& wall, int preset) {
    wall.rows = HotKeyShape[preset][0];
    wall.cols = HotKeyShape[preset][1];
    const int tiles = wall.rows * wall.cols;
    // Outputs beyond the last tile repeat from the first; a wall of fewer than four
    // tiles frees output 4, which then shows the input on its own.
    for (int out = 0; out < 4; ++out)
        wall.position[out] = out % tiles + 1;
    wall.bypass = tiles < 4;
}

class Handler {
public:
    Handler(ControllerState& s, const QByteArray& line) : s_(s) {
        const QList<QByteArray> words = line.trimmed().split(' ');
        for (const QByteArray& w : words)
            if (!w.isEmpty())
                args_.append(w);
        if (!args_.isEmpty())
            r_.keyword = args_.takeFirst().toUpper();
    }

    Response run() {
        if (r_.keyword.isEmpty())
            return r_;
        r_.recognised = true;
        if (!dispatch()) {
            r_.recognised = false;
            r_.reply.clear();
            r_.action = Response::Action::None;
            if (r_.note.isEmpty())
                r_.note = QStringLiteral("unknown command");
        }
        return r_;
    }

private:
    bool dispatch() {
        const QByteArray& k = r_.keyword;

        // Status
        if (k == "RPOW")
            return reply(keyValue("POWE", s_.power));
        if (k == "RMDN")
            return reply(keyValue("MODN", s_.model));
        if (k == "RBY")
            return reply(keyValue("BYPA", s_.wall.bypass));
        if (k == "RBEZ")
            return reply(keyValue("BEZE", s_.wall.bezelOn));
        if (k == "RVER")
            return reply(keyValue("VERS", s_.firmware));
        if (k == "SPOW") {
            int v;
            if (!intArg(0, &v))
                return false;
            if (setIf(v == 0 || v == 1))
                s_.power = v;
            return reply(keyValue("POWE", s_.power));
        }
        if (k == "SMDN") {
            int v;
            if (!intArg(0, &v))
                return false;
            if (setIf(v >= 0 && v <= 255))
                s_.model = v;
            return true;
        }
        if (k == "SDEF") {
            s_ = ControllerState::factory(s_.number, s_.factoryAddress);
            r_.action = Response::Action::FactoryRestart;
            return reply("DEFA\r\n");
        }

        // I/O setup
        if (k == "SOSDI")
            return true; // shows the OSD information on the outputs
        if (k == "SOSDR") {
            const ControllerState d;
            s_.resolution = d.resolution;
            s_.osdAutoDisplay = d.osdAutoDisplay;
            s_.osdTimeout = d.osdTimeout;
            s_.osdH = d.osdH;
            s_.osdV = d.osdV;
            s_.osdGain = d.osdGain;
            s_.mute = d.mute;
            return reply("OSDR\r\n");
        }
        if (k == "RRES")
            return reply(keyValue("RESO", s_.resolution));
        if (k == "ROSDD")
            return reply(keyValue("OSDD", s_.osdAutoDisplay));
        if (k == "ROSDT")
            return reply(keyValue("OSDT", s_.osdTimeout));
        if (k == "ROSDH")
            return reply(keyValue("OSDH", s_.osdH));
        if (k == "ROSDV")
            return reply(keyValue("OSDV", s_.osdV));
        if (k == "ROSDG")
            return reply(keyValue("OSDG", s_.osdGain));
        if (k == "RMUTE")
            return reply(keyValue("MUTE", s_.mute));
        if (k == "SRES")
            return setValue(&s_.resolution, 0, 16);
        if (k == "SOSDD")
            return setValue(&s_.osdAutoDisplay, 0, 1);
        if (k == "SOSDT")
            return setValue(&s_.osdTimeout, 2, 50);
        if (k == "SOSDH")
            return setValue(&s_.osdH, 0, 20);
        if (k == "SOSDV")
            return setValue(&s_.osdV, 0, 20);
        if (k == "SOSDG")
            return setValue(&s_.osdGain, 0, 10);
        if (k == "SMUTE") {
            int v;
            if (!intArg(0, &v))
                return false;
            if (setIf(v == 0 || v == 1))
                s_.mute = v;
            return true;
        }

        // Picture
        if (int p = indexOf(PictureSet, k); p >= 0) {
            int out, v;
            if (!outputArg(0, &out) || !intArg(1, &v))
                return false;
            if (setIf(v >= 0 && v <= 100))
                s_.picture[p][out - 1] = v;
            return true;
        }
        if (int p = indexOf(PictureRead, k); p >= 0) {
            int out;
            if (!outputArg(0, &out))
                return false;
            return reply(
                longReply(PictureFirstKey[p], out, PictureValueKey[p], s_.picture[p][out - 1]));
        }
        if (k == "SIMRE") {
            int p;
            if (!intArg(0, &p))
                return false;
            if (setIf(p >= 1 && p <= 4))
                s_.picture[p - 1].fill(ControllerState::PictureDefault);
            return reply("IMRE\r\n");
        }
        if (k == "SPIRE") {
            for (auto& row : s_.picture)
                row.fill(ControllerState::PictureDefault);
            return reply("PIRE\r\n");
        }

        // Wall geometry, bezel, favourites, bypass, hot keys
        if (k == "SMNC") {
            int rows, cols, ch;
            if (!intArg(0, &rows) || !intArg(1, &cols) || !intArg(2, &ch))
                return false;
            if (setIf(rows >= 1 && rows <= 15 && cols >= 1 && cols <= 15 && ch >= 1 && ch <= 4)) {
                s_.wall.rows = rows;
                s_.wall.cols = cols;
                s_.wall.channel = ch;
            }
            return reply("MNCM\r\n");
        }
        if (k == "SCO") {
            int ch, pos;
            if (!intArg(0, &ch) || !intArg(1, &pos))
                return false;
            if (setIf(ch >= 1 && ch <= 4 && pos >= 1 && pos <= s_.wall.rows * s_.wall.cols))
                s_.wall.position[ch - 1] = pos;
            return reply("COCH\r\n");
        }
        if (k == "SCBH" || k == "SCBV") {
            int out, v;
            if (!outputArg(0, &out) || !intArg(1, &v))
                return false;
            auto& values = k == "SCBH" ? s_.wall.bezelH : s_.wall.bezelV;
            if (setIf(v >= 0 && v <= 255))
                values[out - 1] = v;
            return reply(keyValue(k == "SCBH" ? "CBHC" : "CBVC", out));
        }
        if (k == "RCBH")
            return readBezel("CBHR", "CBHV", s_.wall.bezelH);
        if (k == "RCBV")
            return readBezel("CBVR", "CBVV", s_.wall.bezelV);
        if (k == "SWDE") {
            s_.wall.bezelH.fill(ControllerState::BezelDefault);
            s_.wall.bezelV.fill(ControllerState::BezelDefault);
            return reply("WDEF\r\n");
        }
        if (k == "SBEZ")
            return setFlag(&s_.wall.bezelOn);
        if (k == "SBY")
            return setFlag(&s_.wall.bypass);
        if (k == "SFAVE" || k == "RFAVE") {
            int slot;
            if (!intArg(0, &slot))
                return false;
            if (slot < 1 || slot > ControllerState::FavouriteSlots) {
                r_.note = QStringLiteral("no such favourite slot");
                return false;
            }
            if (k == "SFAVE") {
                s_.favourites[slot - 1] = s_.wall;
                return true;
            }
            s_.wall = s_.favourites[slot - 1];
            return reply(keyValue("RFAV", slot));
        }
        if (k == "SHOT") {
            int preset;
            if (!intArg(0, &preset))
                return false;
            if (setIf(preset >= 0 && preset < 24))
                applyHotKey(s_.wall, preset);
            return reply("HOTK\r\n");
        }

        // Position trims: the sign is in the keyword, the amount is a magnitude.
        const int plus = indexOf(TrimPlus, k);
        const int minus = indexOf(TrimMinus, k);
        if (plus >= 0 || minus >= 0) {
            int out, m;
            if (!outputArg(0, &out) || !intArg(1, &m))
                return false;
            if (setIf(m >= 0 && m <= 255))
                s_.trim[plus >= 0 ? plus : minus][out - 1] = plus >= 0 ? m : -m;
            return true;
        }
        if (int g = indexOf(TrimRead, k); g >= 0) {
            int out;
            if (!outputArg(0, &out))
                return false;
            const int t = s_.trim[g][out - 1];
            return reply(
                longReply(TrimGroupKey[g], out, t < 0 ? TrimMinusKey[g] : TrimPlusKey[g], qAbs(t)));
        }

        // Network
        if (k == "RIPM")
            return reply(keyValue("IPMD", s_.staticMode));
        if (k == "RLINK")
            return reply(addressBlock());
        if (k == "SIPM") {
            int v;
            if (!intArg(0, &v))
                return false;
            if (setIf(v == 0 || v == 1))
                s_.staticMode = v;
            return reply(keyValue("IPMD", s_.staticMode));
        }
        if (k == "SIPA")
            return setAddress(&s_.address, "IPA0\r\n");
        if (k == "SMAA")
            return setAddress(&s_.mask, "MAA0\r\n");
        if (k == "SGAA")
            return setAddress(&s_.gateway, "GAA0\r\n");
        if (k == "SREL") {
            r_.action = Response::Action::Restart;
            return reply("RELI\r\n");
        }
        return false;
    }

    bool reply(const QByteArray& text) {
        r_.reply = text;
        return true;
    }

    bool intArg(int i, int* v) {
        if (i < args_.size() && parseInt(args_[i], v))
            return true;
        r_.note = QStringLiteral("missing or bad argument %1").arg(i + 1);
        return false;
    }

    bool outputArg(int i, int* out) {
        if (!intArg(i, out))
            return false;
        if (*out >= 1 && *out <= 4)
            return true;
        r_.note = QStringLiteral("no output %1").arg(*out);
        return false;
    }

    // A value outside the setting's range is acknowledged where the tool waits for
    // an acknowledgement, but not applied.
    bool setIf(bool inRange) {
        if (!inRange)
            r_.note = QStringLiteral("value out of range, not applied");
        return inRange;
    }

    bool setValue(int* target, int lo, int hi) {
        int v;
        if (!intArg(0, &v))
            return false;
        if (setIf(v >= lo && v <= hi))
            *target = v;
        return true;
    }

    bool setFlag(bool* target) {
        int v;
        if (!intArg(0, &v))
            return false;
        if (setIf(v == 0 || v == 1))
            *target = v;
        return true;
    }

    bool readBezel(const char* first, const char* second, const std::array<int, 4>& values) {
        int out;
        if (!outputArg(0, &out))
            return false;
        return reply(longReply(first, out, second, values[out - 1]));
    }

    bool setAddress(quint32* target, const char* ack) {
        quint32 a;
        if (args_.isEmpty()) {
            r_.note = QStringLiteral("missing address");
            return false;
        }
        if (setIf(parseAddress(args_[0], &a)))
            *target = a;
        return reply(ack);
    }

    // Twelve fields of a four-character tag and three digits: address, mask, gateway.
    QByteArray addressBlock() const {
        static const char* tags[3] = {"IP", "MA", "GA"};
        const quint32 values[3] = {s_.address, s_.mask, s_.gateway};
        QByteArray block;
        for (int v = 0; v < 3; ++v)
            for (int octet = 0; octet < 4; ++octet)
                block += tags[v] + QByteArray("0") + char('0' + octet) +
                         three(int(values[v] >> (24 - 8 * octet)) & 0xFF);
        return block + "\r\n";
    }

    ControllerState& s_;
    QList<QByteArray> args_;
    Response r_;
};

} // namespace

QByteArray longReply(const char* firstKey, int output, const char* secondKey, int value) {
    return QByteArray(firstKey) + three(output) + secondKey + three(value) + "\r\n";
}

Response handleCommand(ControllerState& state, const QByteArray& line) {
    return Handler(state, line).run();
}

QString addressText(quint32 a) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg(a >> 24)
        .arg((a >> 16) & 0xFF)
        .arg((a >> 8) & 0xFF)
        .arg(a & 0xFF);
}

bool parseAddress(const QByteArray& text, quint32* out) {
    // Own parser: the tool sends zero-padded octets, which general parsers may
    // read as octal.
    const QList<QByteArray> parts = text.split('.');
    if (parts.size() != 4)
        return false;
    quint32 a = 0;
    for (const QByteArray& p : parts) {
        if (p.isEmpty() || p.size() > 3)
            return false;
        for (char c : p)
            if (c < '0' || c > '9')
                return false;
        const int v = p.toInt();
        if (v > 255)
            return false;
        a = (a << 8) | quint32(v);
    }
    *out = a;
    return true;
}

} // namespace sim
