#include "protocol/legacytext.h"
#include "link/searchprogram.h"

#include <QTest>

class TestText : public QObject {
    Q_OBJECT
private slots:
    void mid_data();
    void mid();
    void val_data();
    void val();
    void isNumeric_data();
    void isNumeric();
    void toByte_data();
    void toByte();
    void numberTexts();
    void addressLine_data();
    void addressLine();
};

void TestText::mid_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("expected");
    QTest::newRow("key") << "POWE001\r\n" << 1 << 4 << "POWE";
    QTest::newRow("value") << "POWE001\r\n" << 5 << 3 << "001";
    QTest::newRow("short value") << "VERS1" << 6 << 2 << "";
    QTest::newRow("cut at end") << "VERS10" << 6 << 2 << "0";
    QTest::newRow("long key") << "CBHV1  CBHV007" << 8 << 4 << "CBHV";
}

void TestText::mid() {
    QFETCH(QString, text);
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(QString, expected);
    QCOMPARE(legacy::mid(text, start, length), expected);
}

void TestText::val_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");
    QTest::newRow("zeros") << "006" << 6.0;
    QTest::newRow("blank padded") << "  7" << 7.0;
    QTest::newRow("blanks inside") << "1 2" << 12.0;
    QTest::newRow("stops at letter") << "12ab" << 12.0;
    QTest::newRow("not a number") << "abc" << 0.0;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("carriage return ends") << "10\r\n" << 10.0;
    QTest::newRow("exponent") << "1e2" << 100.0;
    QTest::newRow("dangling exponent") << "3e" << 3.0;
}

void TestText::val() {
    QFETCH(QString, text);
    QFETCH(double, expected);
    QCOMPARE(legacy::val(text), expected);
}

void TestText::isNumeric_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("digits") << "12" << true;
    QTest::newRow("blanks around") << "  12 " << true;
    QTest::newRow("sign") << "-0.5" << true;
    QTest::newRow("fraction") << "20.9" << true;
    QTest::newRow("two points") << "1.2.3" << false;
    QTest::newRow("letters") << "abc" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("hint") << "1~15" << false;
    QTest::newRow("blank inside") << "1 2" << false;
}

void TestText::isNumeric() {
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(legacy::isNumeric(text), expected);
}

void TestText::toByte_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected"); // -1: refused
    QTest::newRow("plain") << "7" << 7;
    QTest::newRow("half down to even") << "2.5" << 2;
    QTest::newRow("half up to even") << "3.5" << 4;
    QTest::newRow("top") << "255" << 255;
    QTest::newRow("rounds over top") << "255.5" << -1;
    QTest::newRow("negative half") << "-0.5" << 0;
    QTest::newRow("negative") << "-1" << -1;
    QTest::newRow("text") << "abc" << -1;
    // Too large for any integer: the conversion overflows, which ends the handler.
    QTest::newRow("twenty-one digits") << "100000000000000000000" << -1;
    QTest::newRow("negative, twenty-one digits") << "-100000000000000000000" << -1;
    QTest::newRow("beyond a double") << QString(u'9').repeated(400) << -1;
}

void TestText::toByte() {
    QFETCH(QString, text);
    QFETCH(int, expected);
    const std::optional<quint8> byte = legacy::toByte(text);
    QCOMPARE(byte ? int(*byte) : -1, expected);
}

void TestText::numberTexts() {
    QCOMPARE(legacy::signedText(0), QStringLiteral(" 0"));
    QCOMPARE(legacy::signedText(255), QStringLiteral(" 255"));
    QCOMPARE(legacy::signedText(-3), QStringLiteral("-3"));
    QCOMPARE(legacy::plainText(100), QStringLiteral("100"));
    QCOMPARE(legacy::plainText(-1), QStringLiteral("-1"));
}

void TestText::addressLine_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("expected");
    const QString parsedLine = QStringLiteral("192.168.001.010192.168.001.011010.000.000.099");
    QTest::newRow("parse first") << parsedLine << 0 << "192.168.1.10";
    QTest::newRow("parse second") << parsedLine << 1 << "192.168.1.11";
    QTest::newRow("parse third") << parsedLine << 2 << "10.0.0.99";
    QTest::newRow("blank padded octets") << "127.  0.  0.  7" << 0 << "127.0.0.7";
    QTest::newRow("missing device") << parsedLine << 3 << "0.0.0.0";
    QTest::newRow("cut short") << "127.000.0" << 0 << "127.0.0.0";
    QTest::newRow("not numbers") << "abc.def.ghi.jkl" << 0 << "0.0.0.0";
}

void TestText::addressLine() {
    QFETCH(QString, line);
    QFETCH(int, index);
    QFETCH(QString, expected);
    QCOMPARE(addressFromLine(line, index), expected);
}

QTEST_APPLESS_MAIN(TestText)
#include "test_text.moc"
