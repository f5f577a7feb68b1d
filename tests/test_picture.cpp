#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

// Picture read, resets and setters. Each test uses its own addresses in 127.41.0.0/16.
class TestPicture : public QObject {
    Q_OBJECT
public:
    static void initMain() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
private slots:
    void readAndReset_data();
    void readAndReset();
    void setters_data();
    void setters();
};

namespace {

// The sixteen reads in order, and a distinct value for each list, none the default 50.
const QStringList Reads{"RBRI 1", "RBRI 2", "RBRI 3", "RBRI 4", "RCON 1", "RCON 2",
                        "RCON 3", "RCON 4", "RSAT 1", "RSAT 2", "RSAT 3", "RSAT 4",
                        "RHUE 1", "RHUE 2", "RHUE 3", "RHUE 4"};
const QList<int> Values{11, 16, 21, 26, 31, 36, 41, 46, 51, 56, 61, 66, 71, 76, 81, 86};

// A read's reply: the request echoed in characters 1-7, the key in 8-11, the value in 12-14.
QByteArray readReply(const QString& line) {
    const QString value = QString::number(Values[Reads.indexOf(line)]).rightJustified(3, u'0');
    return (line.leftJustified(7) + line.mid(1, 3) + 'V' + value).toLatin1();
}

// The lists in the order they are read.
QList<int> grid(Form1& form) {
    QList<int> values;
    for (const auto& row : {form.ui.cbo_image_bri, form.ui.cbo_image_con, form.ui.cbo_image_sat,
                            form.ui.cbo_image_hue})
        for (int n = 1; n <= 4; ++n)
            values << row[n]->currentIndex();
    return values;
}

// Two controllers, the first selected and answering each read with its value.
struct Bench {
    explicit Bench(const QString& net) : first(net + '1'), second(net + '2') {
        first.answerLikeController();
        for (const char* read : {"RBRI", "RCON", "RSAT", "RHUE"})
            first.reply(read, readReply);
        driver::connectTo(form, {first.address(), second.address()});
        driver::click(form.ui.opt_image);
        first.clear();
        boxes.clear();
    }
    // Compares what each controller got since the last call, up to a marker sent to both.
    void expect(const QStringList& toFirst, const QStringList& toSecond = {}) {
        form.session().sendAll("MARK\r\n");
        QTRY_COMPARE(first.lines(), toFirst + QStringList{"MARK"});
        QTRY_COMPARE(second.lines(), toSecond + QStringList{"MARK"});
        first.clear();
        second.clear();
    }

    FakeController first, second;
    MessageBoxAnswerer boxes;
    Form1 form;
};

} // namespace

void TestPicture::readAndReset_data() {
    QTest::addColumn<QByteArray>("stray"); // arrives first, while brightness of 1 is awaited
    QTest::addColumn<int>("button");       // then: 0-3 a row's reset, 4 the picture's, -1 none
    QTest::addColumn<bool>("allIp");       // the row's box ticked, the others not; or Yes
    QTest::addColumn<QString>("ack");
    QTest::newRow("key in characters 1-4") << QByteArray("BRIV080") << -1 << false << "";
    QTest::newRow("contrast at brightness") << QByteArray("RCON 1 CONV033") << -1 << false << "";
    QTest::newRow("value past the list") << QByteArray("RBRI 1 BRIV101") << -1 << false << "";
    QTest::newRow("brightness reset") << QByteArray() << 0 << false << "IMRE";
    QTest::newRow("hue reset, ALL IP, PIRE") << QByteArray() << 3 << true << "PIRE";
    QTest::newRow("picture reset, Yes, IMRE") << QByteArray() << 4 << true << "IMRE";
    QTest::newRow("picture reset, No, PIRE") << QByteArray() << 4 << false << "PIRE";
}

// "Refresh" reads the lists one at a time, its button disabled meanwhile; a stray reply
// leaves the step where it is. A reset shows 50 before its reply; either acknowledgement
// ends it. While either waits, a pick is held back but a value typed and entered goes out.
void TestPicture::readAndReset() {
    QFETCH(QByteArray, stray);
    QFETCH(int, button);
    QFETCH(bool, allIp);
    QFETCH(QString, ack);
    Bench bench("127.41.1.");
    Form1& form = bench.form;
    bench.first.reply("RBRI", [&](const QString& line) {
        if (line != "RBRI 1")
            return readReply(line);
        form.ui.btn_img_rst[5]->click(); // disabled: no second read
        driver::pick(form.ui.cbo_image_hue[4], 9);
        driver::type(form.ui.cbo_image_con[2], "8\r");
        QTimer::singleShot(100, &form, [&, line] { bench.first.push(readReply(line) + "\r\n"); });
        return stray;
    });
    driver::click(form.ui.btn_img_rst[5]);
    QCOMPARE(grid(form), Values);
    QVERIFY(form.ui.btn_img_rst[5]->isEnabled());
    driver::pick(form.ui.cbo_image_hue[1], Values[12]); // idle again: to the selected only
    bench.expect(QStringList{"RBRI 1", "SCON 2 8"} + Reads.mid(1) + QStringList{"SHUE 1 71"});
    if (button < 0)
        return;

    QList<int> expected = Values; // the row reset, or all of them, at 50
    std::fill_n(expected.begin() + (button == 4 ? 0 : 4 * button), button == 4 ? 16 : 4, 50);
    const QString command = button == 4 ? "SPIRE" : QStringLiteral("SIMRE %1").arg(button + 1);
    bool defaultsBeforeReply = false;
    bench.first.reply(command.left(5), [&](const QString&) {
        defaultsBeforeReply = form.w.wait_image_reset == 1 && grid(form) == expected;
        driver::pick(form.ui.cbo_image_hue[4], expected.last());
        driver::type(form.ui.cbo_image_con[2], "8\r");
        return ack.toLatin1();
    });
    for (int box = 0; box < 4; ++box)
        form.ui.Chk_img[box]->setChecked((box == button) == allIp);
    bench.boxes.answerWith(allIp ? QMessageBox::Yes : QMessageBox::No);
    driver::click(form.ui.btn_img_rst[button]);
    QVERIFY(defaultsBeforeReply);
    QCOMPARE(form.w.wait_image_reset, quint8(0));
    QCOMPARE(grid(form), expected);
    bench.expect({command, "SCON 2 8"}, allIp ? QStringList{command} : QStringList());
    QCOMPARE(bench.boxes.texts(), button == 4 ? QStringList{"Reset All IP ?"} : QStringList());
}

void TestPicture::setters_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("typed");  // "\r" is Enter
    QTest::addColumn<QString>("result"); // the line sent, or the warning of a refusal
    // clang-format off
    QTest::newRow("loose upper") << "cbo_image_hue(4)" << "100.5\r" << "SHUE 4 100.5";
    QTest::newRow("loose lower") << "cbo_image_con(3)" << "-0.5\r" << "SCON 3 -0.5";
    QTest::newRow("101") << "cbo_image_bri(2)" << "101\r" << "Please type 0 ~ 100";
    QTest::newRow("x") << "cbo_image_sat(3)" << "x\r" << "Please type 0 ~ 100";
    // clang-format on
}

// Typed values with Enter, as typed, to the selected controller only.
void TestPicture::setters() {
    QFETCH(QString, control);
    QFETCH(QString, typed);
    QFETCH(QString, result);
    Bench bench("127.41.5.");
    driver::type(driver::find<QComboBox>(bench.form, control), typed);
    const bool refused = result.startsWith("Please");
    bench.expect(refused ? QStringList() : QStringList{result});
    QCOMPARE(bench.boxes.texts(), refused ? QStringList{result} : QStringList());
    if (refused)
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Warning);
}

QTEST_MAIN(TestPicture)
#include "test_picture.moc"
