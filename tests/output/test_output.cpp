#include "support/bench.h"

namespace {

const QStringList Reads = {"RRES", "ROSDD", "ROSDT", "ROSDH", "ROSDV", "ROSDG", "RMUTE"};

// Three controllers, the second selected (its model is 1), on the I/O page.
struct Page : Bench {
    explicit Page(const char* first) : Bench(first, 3) {
        connect(1);
        driver::click(ui.opt_io);
    }
    QList<QStringList> received() { return {lines(0), lines(1), lines(2)}; }
};

// "#n" picks item n; other text is typed key by key, "\r" being Enter; options are clicked.
void act(Form1& form, const QString& control, const QString& action) {
    if (auto* option = form.findChild<QRadioButton*>(control))
        driver::click(option);
    else if (action.startsWith(u'#'))
        driver::pick(driver::find<QComboBox>(form, control), action.mid(1).toInt());
    else
        driver::type(driver::find<QComboBox>(form, control), action);
}

} // namespace

// The I/O page: its setters, its read and the OSD reset. Addresses in 127.40.0.0/16.
class TestOutput : public QObject {
    Q_OBJECT
private slots:
    void setters_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<int>("box"); // the setting's own "ALL IP" box
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("result"); // the line sent, the warning of a refusal, or nothing
        // clang-format off
        QTest::newRow("Native") << "cbo_reso" << 0 << "#16" << "SRES 16";
        QTest::newRow("OSD display") << "cbo_info_play" << 1 << "#1" << "SOSDD 1";
        QTest::newRow("H pick") << "cbo_osd(0)" << 2 << "#20" << "SOSDH 20";
        QTest::newRow("V pick") << "cbo_osd(1)" << 3 << "#3" << "SOSDV 3";
        QTest::newRow("timeout 50") << "cbo_osd_time" << 4 << "#48" << "SOSDT 50";
        QTest::newRow("gain pick") << "cbo_osd_gain" << 5 << "#7" << "SOSDG 7";
        QTest::newRow("mute ON") << "opt_mute(1)" << 6 << "" << "SMUTE 1";
        QTest::newRow("mute OFF") << "opt_mute(0)" << 6 << "" << "SMUTE 0";
        QTest::newRow("V typed as is") << "cbo_osd(1)" << 3 << "07\r" << "SOSDV 07";
        QTest::newRow("H blanks kept") << "cbo_osd(0)" << 2 << " 4 \r" << "SOSDH  4 ";
        QTest::newRow("H loose upper") << "cbo_osd(0)" << 2 << "20.9\r" << "SOSDH 20.9";
        QTest::newRow("H loose lower") << "cbo_osd(0)" << 2 << "-0.5\r" << "SOSDH -0.5";
        QTest::newRow("gain typed 10") << "cbo_osd_gain" << 5 << "10\r" << "SOSDG 10";
        QTest::newRow("no Enter") << "cbo_osd_gain" << 5 << "5" << "";
        QTest::newRow("Tab picks nothing") << "cbo_osd(0)" << 2 << "13\t" << "";
        QTest::newRow("V 21") << "cbo_osd(1)" << 3 << "21\r" << "Please type 0 ~ 20";
        QTest::newRow("V abc") << "cbo_osd(1)" << 3 << "abc\r" << "Please type 0 ~ 20";
        QTest::newRow("gain 11") << "cbo_osd_gain" << 5 << "11\r" << "Please type 0 ~ 10";
        // clang-format on
    }

    // To the selected controller, or to all with the setting's own box ticked. While the page is
    // read or reset, picks and option clicks are held back, Enter is not.
    void setters() {
        QFETCH(QString, control);
        QFETCH(int, box);
        QFETCH(QString, action);
        QFETCH(QString, result);
        Page page("127.40.1.1");
        const bool refused = result.startsWith("Please");
        const QStringList sent = refused || result.isEmpty() ? QStringList() : QStringList{result};
        for (bool own : {true, false}) { // own box ticked: to all; every other one: selected only
            for (QCheckBox* tick : page.ui.chk_io)
                tick->setChecked((tick == page.ui.chk_io[box]) == own);
            act(page.form, control, action);
            QCOMPARE(page.received(), (QList<QStringList>{own ? sent : QStringList(), sent,
                                                          own ? sent : QStringList()}));
        }
        QCOMPARE(page.boxes.texts(), refused ? QStringList(2, result) : QStringList());
        if (refused)
            QCOMPARE(page.boxes.seen().first().icon, QMessageBox::Warning);

        for (QCheckBox* tick : page.ui.chk_io)
            tick->setChecked(false);
        const QStringList typed = action.endsWith(u'\r') ? sent : QStringList();
        for (const QByteArray held : {"RRES", "SOSDR"}) {
            page.device(1).setFaults({.silent = {held}});
            page.onLine(1, held, [&] {
                act(page.form, control, action);
                page.device(1).push(held == "RRES" ? "RESO006\r\n" : "OSDR\r\n");
            });
            page.boxes.answerWith(QMessageBox::No);
            driver::click(page.ui.btn_io_rst[held == "RRES" ? 0 : 1]);
            QCOMPARE(page.lines(1), held == "RRES" ? Reads.first(1) + typed + Reads.mid(1)
                                                   : QStringList{"SOSDR"} + typed);
        }
    }

    // The timeout list starts at 2 seconds; a value just below it clears the list.
    void readShowsValues() {
        Page page("127.40.2.1");
        for (auto [name, value] : {std::pair{"resolution", 16},
                                   {"osd.timeout", 10},
                                   {"osd.gain", 10},
                                   {"osd.h_offset", 0},
                                   {"mute", 1}})
            setSetting(page.device(1), name, value);
        driver::click(page.ui.btn_io_rst[0]);
        QCOMPARE(page.lines(1), Reads);
        QCOMPARE(page.ui.cbo_reso->currentText(), QStringLiteral("Native"));
        QCOMPARE(page.ui.cbo_osd_time->currentText(), QStringLiteral("10"));
        QCOMPARE(page.ui.cbo_osd_gain->currentIndex(), 10);
        QCOMPARE(page.ui.cbo_osd[0]->currentIndex(), 0);
        QVERIFY(page.ui.opt_mute[1]->isChecked() && page.ui.btn_io_rst[0]->isEnabled());
        page.answer(1, "ROSDT", "OSDT001\r\n");
        driver::click(page.ui.btn_io_rst[0]);
        QCOMPARE(page.ui.cbo_osd_time->currentIndex(), -1);
        QCOMPARE(page.received(), (QList<QStringList>{{}, Reads, {}})); // nothing sent back
    }

    // "RESO017" is past the list: the read waits on, its button disabled, for a reply that has
    // already come; a later reply changes nothing. "Stop waiting" ends it.
    void valueOutsideListKeepsReadWaiting() {
        Page page("127.40.3.1");
        page.answer(1, "RRES", "RESO017\r\n");
        QStringList sent;
        bool buttonDisabled = false;
        driver::when(
            &page.form, [&] { return page.ui.TextInfo->text() == "RESO017\r\n"; },
            [&] {
                page.device(1).push("OSDH003\r\n");
                QTimer::singleShot(200, &page.form, [&] {
                    sent = page.lines(1);
                    buttonDisabled = !page.ui.btn_io_rst[0]->isEnabled();
                    driver::click(driver::find<QPushButton>(page.form, "btn_stop_waiting"));
                });
            });
        driver::click(page.ui.btn_io_rst[0]);
        QCOMPARE(sent, QStringList{"RRES"});
        QVERIFY(buttonDisabled);
        QCOMPARE(page.ui.cbo_reso->currentText(), QStringLiteral("1080p60"));
        QCOMPARE(page.ui.cbo_osd[0]->currentText(), QStringLiteral("5"));
        QVERIFY(page.boxes.texts().isEmpty() && !page.form.services().isConnected());
    }

    void osdResetAnswerChoosesTargets_data() {
        QTest::addColumn<bool>("yes");
        QTest::newRow("Yes: every listed controller") << true;
        QTest::newRow("No: the selected one") << false;
    }

    // The page shows the defaults before the controller answers; only the selected one's answer
    // ends the wait.
    void osdResetAnswerChoosesTargets() {
        QFETCH(bool, yes);
        Page page("127.40.4.1");
        setSetting(page.device(1), "resolution", 0);
        driver::click(page.ui.btn_io_rst[0]);
        page.device(1).setFaults({.silent = {"SOSDR"}});
        page.boxes.answerWith(yes ? QMessageBox::Yes : QMessageBox::No);
        QList<int> shown;
        page.onLine(1, "SOSDR", [&] {
            for (QComboBox* list : {page.ui.cbo_reso, page.ui.cbo_info_play, page.ui.cbo_osd_time,
                                    page.ui.cbo_osd[0], page.ui.cbo_osd[1], page.ui.cbo_osd_gain})
                shown << list->currentIndex();
            shown << page.ui.opt_mute[0]->isChecked();
            page.device(1).push("OSDR\r\n");
        });
        driver::click(page.ui.btn_io_rst[1]);
        QCOMPARE(shown, (QList<int>{6, 0, 0, 5, 5, 2, true}));
        const QStringList others = yes ? QStringList{"SOSDR"} : QStringList();
        QCOMPARE(page.received(),
                 (QList<QStringList>{others, Reads + QStringList{"SOSDR"}, others}));
        QCOMPARE(page.boxes.seen().first().text, QStringLiteral("Reset All IP ?"));
        QCOMPARE(page.boxes.seen().first().icon, QMessageBox::Question);
        QCOMPARE(page.boxes.seen().first().buttons, QMessageBox::Yes | QMessageBox::No);
    }
};

QTEST_MAIN(TestOutput)
#include "test_output.moc"
