#include "support/bench.h"

namespace {

const char* const Rows[4] = {"brightness", "contrast", "saturation", "hue"};

// The lists in the order they are read.
QList<int> grid(Controls& ui) {
    QList<int> values;
    for (const auto& row : {ui.cbo_image_bri, ui.cbo_image_con, ui.cbo_image_sat, ui.cbo_image_hue})
        for (int n = 1; n <= 4; ++n)
            values << row[n]->currentIndex();
    return values;
}

// Two controllers, the first selected, on the picture page; the first's sixteen values are
// distinct, none the default 50.
struct Page : Bench {
    explicit Page(const char* first) : Bench(first, 2) {
        connect();
        driver::click(ui.opt_image);
        for (int i = 0; i < 16; ++i) {
            values << 11 + 5 * i;
            setSetting(device(), Rows[i / 4] + QByteArray(".") + char('a' + i % 4), values.last());
        }
    }
    QList<int> values;
    const QStringList reads = numbered({"RBRI", "RCON", "RSAT", "RHUE"});
};

} // namespace

// Picture read, resets and setters. Each test uses its own addresses in 127.41.0.0/16.
class TestPicture : public QObject {
    Q_OBJECT
private slots:
    void readAndReset_data() {
        QTest::addColumn<QByteArray>("stray"); // arrives first, while brightness of 1 is awaited
        QTest::addColumn<int>("button");       // then: 0-3 a row's reset, 4 the picture's, -1 none
        QTest::addColumn<bool>("allIp");       // the row's box ticked, the others not; or Yes
        QTest::addColumn<QByteArray>("ack");
        for (auto [tag, stray, button, allIp, ack] :
             {std::tuple{"key in characters 1-4", "BRIV080", -1, false, ""},
              {"contrast at brightness", "CONR001CONV033", -1, false, ""},
              {"value past the list", "BRIR001BRIV101", -1, false, ""},
              {"brightness reset", "", 0, false, "IMRE"},
              {"hue reset, ALL IP, PIRE", "", 3, true, "PIRE"},
              {"picture reset, Yes, IMRE", "", 4, true, "IMRE"},
              {"picture reset, No, PIRE", "", 4, false, "PIRE"}})
            QTest::newRow(tag) << QByteArray(stray) << button << allIp << QByteArray(ack);
    }

    // "Refresh" reads the lists one at a time, its button disabled meanwhile; a stray reply leaves
    // the read where it is. A reset shows 50 before its reply; either acknowledgement ends it.
    // While either waits, a pick is held back but a value typed and entered goes out.
    void readAndReset() {
        QFETCH(QByteArray, stray);
        QFETCH(int, button);
        QFETCH(bool, allIp);
        QFETCH(QByteArray, ack);
        Page page("127.41.1.1");
        Controls& ui = page.ui;
        const auto meanwhile = [&](int hue) {
            driver::pick(ui.cbo_image_hue[4], hue);
            driver::type(ui.cbo_image_con[2], "36\r"); // what it holds: the read shows it
        };
        page.answer(0, "RBRI 1", stray.isEmpty() ? stray : stray + "\r\n");
        page.onLine(0, "RBRI 1", [&] {
            ui.btn_img_rst[5]->click(); // disabled: no second read
            meanwhile(9);
            QTimer::singleShot(100, &page.form, [&] { page.device().push("BRIR001BRIV011\r\n"); });
        });
        driver::click(ui.btn_img_rst[5]);
        QCOMPARE(grid(ui), page.values);
        QVERIFY(ui.btn_img_rst[5]->isEnabled());
        driver::pick(ui.cbo_image_hue[1], page.values[12]); // idle again: to the selected only
        QCOMPARE(page.lines(0), (QStringList{"RBRI 1", "SCON 2 36"} + page.reads.mid(1) +
                                 QStringList{"SHUE 1 71"}));
        QCOMPARE(page.lines(1), QStringList());
        if (button < 0)
            return;

        QList<int> expected = page.values; // the row reset, or all of them, at 50
        std::fill_n(expected.begin() + (button == 4 ? 0 : 4 * button), button == 4 ? 16 : 4, 50);
        const QString command = button == 4 ? "SPIRE" : QStringLiteral("SIMRE %1").arg(button + 1);
        bool defaultsBeforeReply = false;
        page.answer(0, command.left(5).toLatin1(), {});
        page.onLine(0, command.toLatin1(), [&] {
            defaultsBeforeReply = grid(ui) == expected;
            meanwhile(expected.last());
            page.device().push(ack + "\r\n");
        });
        for (int box = 0; box < 4; ++box)
            ui.Chk_img[box]->setChecked((box == button) == allIp);
        page.boxes.answerWith(allIp ? QMessageBox::Yes : QMessageBox::No);
        driver::click(ui.btn_img_rst[button]);
        QVERIFY(defaultsBeforeReply);
        QCOMPARE(grid(ui), expected);
        QCOMPARE(page.lines(0), (QStringList{command, "SCON 2 36"}));
        QCOMPARE(page.lines(1), allIp ? QStringList{command} : QStringList());
        QCOMPARE(page.boxes.texts(), button == 4 ? QStringList{"Reset All IP ?"} : QStringList());
    }

    void setters_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");  // "\r" is Enter
        QTest::addColumn<QString>("result"); // the line sent, or the warning of a refusal
        for (auto [tag, control, typed, result] :
             {std::array{"loose upper", "cbo_image_hue(4)", "100.5\r", "SHUE 4 100.5"},
              {"loose lower", "cbo_image_con(3)", "-0.5\r", "SCON 3 -0.5"},
              {"101", "cbo_image_bri(2)", "101\r", "Please type 0 ~ 100"},
              {"x", "cbo_image_sat(3)", "x\r", "Please type 0 ~ 100"}})
            QTest::newRow(tag) << QString(control) << QString(typed) << QString(result);
    }

    // Typed values with Enter, as typed, to the selected controller only.
    void setters() {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, result);
        Page page("127.41.5.1");
        driver::type(driver::find<QComboBox>(page.form, control), typed);
        const bool refused = result.startsWith("Please");
        QCOMPARE(page.lines(0), refused ? QStringList() : QStringList{result});
        QCOMPARE(page.lines(1), QStringList());
        QCOMPARE(page.boxes.texts(), refused ? QStringList{result} : QStringList());
        if (refused)
            QCOMPARE(page.boxes.seen().first().icon, QMessageBox::Warning);
    }
};

QTEST_MAIN(TestPicture)
#include "test_picture.moc"
