#include "client/searchrun.h"
#include "protocol/legacytext.h"

#include <QTest>

// The old runtime's text rules, each against a table of cases.
class TestText : public QObject {
    Q_OBJECT
private slots:
    void mid() {
        const std::tuple<QString, int, int, QString> cases[] = {
            {"POWE001\r\n", 1, 4, "POWE"}, // key
            {"POWE001\r\n", 5, 3, "001"},  // value
            {"VERS1", 6, 2, ""},           // short value
            {"VERS10", 6, 2, "0"},         // cut at the end
            {"CBHV1  CBHV007", 8, 4, "CBHV"}};
        for (const auto& [text, start, length, expected] : cases)
            QCOMPARE(legacy::mid(text, start, length), expected);
    }

    // Blanks are skipped, the number stops at the first other character.
    void val() {
        const std::pair<QString, double> cases[] = {{"006", 6},     {"  7", 7},   {"1 2", 12},
                                                    {"12ab", 12},   {"abc", 0},   {"", 0},
                                                    {"10\r\n", 10}, {"1e2", 100}, {"3e", 3}};
        for (const auto& [text, expected] : cases)
            QCOMPARE(legacy::val(text), expected);
    }

    void isNumeric() {
        const std::pair<QString, bool> cases[] = {{"12", true},   {"  12 ", true},  {"-0.5", true},
                                                  {"20.9", true}, {"1.2.3", false}, {"abc", false},
                                                  {"", false},    {"1~15", false},  {"1 2", false}};
        for (const auto& [text, expected] : cases)
            QVERIFY2(legacy::isNumeric(text) == expected, qPrintable(text));
    }

    // Halves to even; -1 is refused. Too large for any integer, the conversion overflows, which
    // ends the handler.
    void toByte() {
        const std::pair<QString, int> cases[] = {{"7", 7},
                                                 {"2.5", 2},
                                                 {"3.5", 4},
                                                 {"255", 255},
                                                 {"255.5", -1},
                                                 {"-0.5", 0},
                                                 {"-1", -1},
                                                 {"abc", -1},
                                                 {"100000000000000000000", -1},
                                                 {"-100000000000000000000", -1},
                                                 {QString(u'9').repeated(400), -1}};
        for (const auto& [text, expected] : cases) {
            const std::optional<quint8> byte = legacy::toByte(text);
            QCOMPARE(byte ? int(*byte) : -1, expected);
        }
    }

    // Fifteen characters a device, octets at offsets 1, 5, 9 and 13, each by value.
    void addressLine() {
        const QString line = QStringLiteral("192.168.001.010192.168.001.011010.000.000.099");
        const std::tuple<QString, int, QString> cases[] = {{line, 0, "192.168.1.10"},
                                                           {line, 1, "192.168.1.11"},
                                                           {line, 2, "10.0.0.99"},
                                                           {"127.  0.  0.  7", 0, "127.0.0.7"},
                                                           {line, 3, "0.0.0.0"},
                                                           {"127.000.0", 0, "127.0.0.0"},
                                                           {"abc.def.ghi.jkl", 0, "0.0.0.0"}};
        for (const auto& [text, index, expected] : cases)
            QCOMPARE(addressFromLine(text, index), expected);
    }
};

QTEST_APPLESS_MAIN(TestText)
#include "test_text.moc"
