#include "support/bench.h"

namespace {

// Connected controllers, the first selected, on page `page`.
struct Wall : Connected {
    Wall(const char* first, int devices, QRadioButton* Controls::*page = &Controls::opt_tv2)
        : Connected(first, devices) {
        driver::click(ui.*page);
    }
    void setQuietly(int bar, int position) {
        const QSignalBlocker quiet(ui.HS_A[bar]);
        ui.HS_A[bar]->setValue(position);
    }
    // How many lines the selected controller has received, recorded by feed() ahead of each chunk:
    // a reply that released the wait would show as a line more.
    std::function<void()> count(QList<int>& counts) {
        return [this, &counts] { counts << int(device().received().size()); };
    }
};

// A trim bar moved: its index; 0 set by code, 1 click on the right arrow, 2 drag, 3 key Right,
// 4 key Home, 5 typed after Enter; where to; the label then shown and the line sent (two blanks
// after the keyword).
struct Trim {
    const char* tag;
    int index, action, position;
    const char *label, *line;
};

} // namespace
Q_DECLARE_METATYPE(Trim)

// The wall pages: geometry, favourites, hot keys, bypass, bezel correction and the position trims.
// Each test uses its own addresses in 127.30.0.0/16.
class TestWall : public QObject {
    Q_OBJECT
private slots:
    void sendWaitsForEachAcknowledgement_data() {
        QTest::addColumn<bool>("allIp");
        QTest::newRow("selected only") << false;
        QTest::newRow("ALL IP") << true;
    }

    // Rows, columns, channel and tile as picked and typed; "SCO" only after "MNCM", which only the
    // selected controller's answer gives. Then the same again.
    void sendWaitsForEachAcknowledgement() {
        QFETCH(bool, allIp);
        Wall wall("127.30.1.1", 3);
        driver::pick(wall.ui.cbo_tv_row, 15 - 1);
        driver::pick(wall.ui.cbo_tv_col, 15 - 1);
        driver::click(wall.ui.btn_panomat_send); // no channel yet: refused, nothing sent
        driver::pick(wall.ui.cbo_tv_ch, 2 - 1);
        QCOMPARE(wall.ui.cbo_tv_posi->count(), 225);
        QCOMPARE(wall.ui.cbo_tv_posi->itemText(224), QStringLiteral(" 225"));
        driver::pick(wall.ui.cbo_tv_row, 3 - 1);
        driver::type(wall.ui.cbo_tv_col, "4");
        driver::type(wall.ui.cbo_tv_posi, "13");   // "1" passes, "13" does not
        driver::type(wall.ui.cbo_tv_posi, "11.5"); // 12, rounded
        // A smaller wall drops the list's items but not the chosen tile.
        driver::pick(wall.ui.cbo_tv_row, 2 - 1);
        driver::pick(wall.ui.cbo_tv_col, 2 - 1);
        QCOMPARE(wall.ui.cbo_tv_posi->count(), 4);
        wall.ui.chk_tv_allip[0]->setChecked(allIp);
        wall.answer(0, "SMNC", {}); // a "COCH" comes out of turn first
        QList<int> counts;
        wall.onLine(0, "SMNC 2 2 2", [&] {
            wall.feed(0, {"COCH\r\n", "MNCM\r\n"}, wall.count(counts));
        });
        driver::click(wall.ui.btn_panomat_send);
        QCOMPARE(counts, (QList<int>{1, 1}));
        QCOMPARE(wall.boxes.texts(),
                 (QStringList{"Please choose the correct values !", "Please type 1 ~ 12!"}));
        wall.answer(0, "SMNC", "MNCM\r\n");
        driver::click(wall.ui.btn_panomat_send);
        const QStringList lines = {"SMNC 2 2 2", "SCO 2 12"};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(wall.lines(i), (allIp || i == 0) ? lines + lines : QStringList());
    }

    void typedSize_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("refusals");
        QTest::addColumn<int>("positions");
        QTest::newRow("2.5 to even") << "2.5" << 0 << 8;
        QTest::newRow("3.5 to even") << "3.5" << 0 << 16;
        QTest::newRow("15") << "15" << 0 << 60;
        QTest::newRow("16 after 1") << "16" << 1 << 4;
        QTest::newRow("0") << "0" << 1 << 0;
        QTest::newRow("letters") << "abc" << 3 << 0;
    }

    // Rows typed, every keystroke checked; columns are 4.
    void typedSize() {
        QFETCH(QString, text);
        QFETCH(int, refusals);
        QFETCH(int, positions);
        Wall wall("127.30.2.1", 1);
        driver::pick(wall.ui.cbo_tv_col, 4 - 1);
        driver::type(wall.ui.cbo_tv_row, text);
        QCOMPARE(wall.boxes.texts(), QStringList(refusals, "Please type 1 ~ 15!"));
        QCOMPARE(wall.ui.cbo_tv_posi->count(), positions);
    }

    // Save and bypass go to every controller. A recall too, but only a stored slot's number in the
    // selected controller's answer releases it, whichever slot was asked for; then bypass, bezel
    // mode and values are read back. The panels stay locked until the completion message is closed.
    void saveAndRecall() {
        Wall wall("127.30.6.1", 2);
        wall.ui.opt_ch4_bypass[0]->click(); // "ON" sends 1
        driver::click(wall.ui.btn_save[2]);
        for (int i = 0; i < 2; ++i)
            QCOMPARE(wall.lines(i), (QStringList{"SBY 1", "SFAVE 2"}));
        wall.ui.opt_ch4_bypass[1]->setChecked(true);
        wall.answer(0, "RFAVE", {});
        QList<int> counts;
        bool lockedWhileWaiting = false, lockedAtMessage = false;
        wall.onLine(0, "RFAVE 2", [&] {
            lockedWhileWaiting = wall.locked() && wall.ui.ProgressBar1->isVisible();
            wall.feed(0, {"RFAV006\r\n", "RFAV\r\n", "MNCM\r\n", "RFAV005\r\n"},
                      wall.count(counts));
        });
        wall.boxes.hold(true);
        driver::when(&wall.form, QApplication::activeModalWidget, [&] {
            lockedAtMessage = wall.locked() && wall.ui.ProgressBar1->value() == 100;
            wall.boxes.pressNow();
        });
        driver::click(wall.ui.btn_recall[2]);
        QVERIFY(lockedWhileWaiting && lockedAtMessage);
        QCOMPARE(counts, (QList<int>{1, 1, 1, 1}));
        QCOMPARE(wall.boxes.texts(), QStringList{"Recall completed !"});
        QCOMPARE(wall.boxes.seen().first().icon, QMessageBox::NoIcon);
        QVERIFY(!wall.locked() && wall.ui.ProgressBar1->isHidden());
        QVERIFY(wall.ui.opt_ch4_bypass[0]->isChecked()); // read, not sent back
        QCOMPARE(wall.lines(0),
                 QStringList({"RFAVE 2", "RBY", "RBEZ"}) + numbered({"RCBH", "RCBV"}));
        QCOMPARE(wall.lines(1), QStringList{"RFAVE 2"});
    }

    void hotKey_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("allIp");
        QTest::addColumn<bool>("bypassOn"); // what the shape leaves, read back afterwards
        QTest::newRow("1x1") << 0 << false << true;
        QTest::newRow("6x3") << 23 << false << false;
        QTest::newRow("1x3 to all") << 14 << true << true;
    }

    // "SHOT n" to the selected controller or all; the bezel reset's "WDEF" comes first and does not
    // release it. Then the bypass is read back from the selected one.
    void hotKey() {
        QFETCH(int, index);
        QFETCH(bool, allIp);
        QFETCH(bool, bypassOn);
        Wall wall("127.30.7.1", 3, &Controls::opt_tv1);
        wall.ui.Check1[2]->setChecked(allIp);
        wall.ui.opt_ch4_bypass[bypassOn ? 1 : 0]->setChecked(true);
        const QByteArray shot = "SHOT " + QByteArray::number(index);
        wall.answer(0, "SHOT", {});
        QList<int> counts;
        wall.onLine(0, shot, [&] { wall.feed(0, {"WDEF\r\n", "HOTK\r\n"}, wall.count(counts)); });
        driver::click(wall.ui.btn_tv_fs[index]);
        QCOMPARE(counts, (QList<int>{1, 1}));
        QVERIFY(wall.ui.opt_ch4_bypass[bypassOn ? 0 : 1]->isChecked());
        QCOMPARE(wall.lines(0), (QStringList{shot, "RBY"})); // the option read sends nothing
        for (int i = 1; i < 3; ++i)
            QCOMPARE(wall.lines(i), allIp ? QStringList{shot} : QStringList());
    }

    // Eight values, each only after the acknowledgement of its own output ("CBHC002" for output 1
    // leaves it waiting), then the bezel mode is read back. V's Send does nothing.
    void bezelSendWaitsForEachAcknowledgement() {
        Wall wall("127.30.8.1", 1);
        const int values[] = {0, 5, 255, 10, 20, 30, 40, 7};
        for (int n = 1; n <= 4; ++n) {
            wall.ui.cbo_val_H[n]->setCurrentIndex(values[n - 1]);
            wall.ui.cbo_val_V[n]->setCurrentIndex(values[n + 3]);
        }
        wall.answer(0, "SCBH 1", {});
        QList<int> counts;
        wall.onLine(0, "SCBH 1 0", [&] {
            wall.feed(0, {"CBHC002\r\n", "CBHC001\r\n"}, wall.count(counts));
        });
        driver::click(wall.ui.btn_H_Bezel_send);
        QCOMPARE(counts, (QList<int>{1, 1}));
        QCOMPARE(wall.lines(),
                 (QStringList{"SCBH 1 0", "SCBH 2 5", "SCBH 3 255", "SCBH 4 10", "SCBV 1 20",
                              "SCBV 2 30", "SCBV 3 40", "SCBV 4 7", "RBEZ"}));
        driver::click(wall.ui.btn_V_Bezel_send);
        QCOMPARE(wall.lines(), QStringList());
    }

    // Refresh reads the value at characters 12-14 of each reply. Reset shows the defaults before
    // the controller has answered, then reads the bypass back; what the read sets sends nothing.
    void bezelRefreshAndReset() {
        Wall wall("127.30.9.1", 1);
        for (int n = 1; n <= 4; ++n) {
            setSetting(wall.device(), "bezel.h." + QByteArray(1, char('a' + n - 1)), n * 7);
            setSetting(wall.device(), "bezel.v." + QByteArray(1, char('a' + n - 1)), 250 + n);
        }
        driver::click(wall.ui.btn_panomat_refresh);
        QCOMPARE(wall.lines(), numbered({"RCBH", "RCBV"}));
        for (int n = 1; n <= 4; ++n) {
            QCOMPARE(wall.ui.cbo_val_H[n]->currentText(), QStringLiteral(" %1").arg(n * 7));
            QCOMPARE(wall.ui.cbo_val_V[n]->currentText(), QStringLiteral(" %1").arg(250 + n));
        }
        wall.ui.cbo_val_V[2]->setCurrentIndex(-1);
        setSetting(wall.device(), "bypass", 1);
        wall.device().setFaults({.silent = {"SWDE"}});
        QStringList shown;
        wall.onLine(0, "SWDE", [&] {
            for (int n = 1; n <= 4; ++n)
                shown << wall.ui.cbo_val_H[n]->currentText() << wall.ui.cbo_val_V[n]->currentText();
            wall.device().push("WDEF\r\n");
        });
        driver::click(wall.ui.btn_panomat_reset);
        QCOMPARE(shown, QStringList(8, QStringLiteral(" 10")));
        QVERIFY(wall.ui.opt_ch4_bypass[0]->isChecked());
        QCOMPARE(wall.lines(), (QStringList{"SWDE", "RBY"}));
    }

    void barSends_data() {
        QTest::addColumn<Trim>("trim");
        for (const Trim& t : {Trim{"H end B", 5, 0, 300, "+45", "SPCHE  2 45"},
                              {"V end A", 12, 0, 0, "-255", "SMCVE  1 255"},
                              {"H start B", 1, 0, 200, "-55", "SMCHS  2 55"},
                              {"V start C", 10, 0, 510, "+255", "SPCVS  3 255"},
                              {"zero trim", 3, 0, 255, "+0", "SPCHS  4 0"},
                              {"V start D", 11, 0, 254, "-1", "SMCVS  4 1"},
                              {"arrow, by one", 4, 1, 256, "+1", "SPCHE  1 1"},
                              {"key Right", 9, 3, 300, "+45", "SPCVS  2 45"},
                              {"key Home", 15, 4, 0, "-255", "SMCVE  4 255"},
                              {"drag", 4, 2, 400, "+145", "SPCHE  1 145"},
                              {"typed", 6, 5, 225, "-30", "SMCHE  3 30"}})
            QTest::newRow(t.tag) << t;
    }
    void barSends() {
        QFETCH(Trim, trim);
        const auto [tag, index, action, position, label, line] = trim;
        Wall wall("127.31.1.1", 1, &Controls::opt_tv4);
        QScrollBar* bar = wall.ui.HS_A[index];
        const bool fromBelow = action == 1 || action == 3;
        wall.setQuietly(index, fromBelow ? position - 1 : (position + 1) % 511);
        if (action == 0) {
            bar->setValue(position);
        } else if (action == 1) {
            driver::clickAt(bar, QPoint(bar->width() - 4, bar->height() / 2));
        } else if (action == 5) {
            driver::when(
                &wall.form,
                [] {
                    QWidget* dialog = QApplication::activeModalWidget();
                    return dialog && dialog->isAncestorOf(QApplication::focusWidget());
                },
                [position] {
                    QWidget* field = QApplication::focusWidget();
                    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
                    QTest::keyClicks(field, QString::number(position - 255));
                    QTest::keyClick(field, Qt::Key_Return);
                });
            driver::key(bar, Qt::Key_Return);
        } else if (action >= 3) {
            const QImage unfocused = bar->grab().toImage();
            driver::key(bar, action == 3 ? Qt::Key_Right : Qt::Key_Home);
            wall.setQuietly(index, fromBelow ? position - 1 : (position + 1) % 511);
            QVERIFY2(bar->grab().toImage() != unfocused, "the focused bar looks unfocused");
            wall.setQuietly(index, position);
        } else { // a drag shows where the thumb is and sends only where it is let go
            bar->setSliderDown(true);
            bar->setSliderPosition(position);
            QCOMPARE(wall.ui.value_posi[index]->text(), QString(label));
            QCOMPARE(wall.lines(), QStringList());
            bar->setSliderDown(false);
        }
        QCOMPARE(wall.ui.value_posi[index]->text(), QString(label));
        QCOMPARE(wall.lines(), QStringList{line});
    }

    void trimResetMovesOnlyBarsOffZero() {
        Wall wall("127.31.3.1", 1, &Controls::opt_tv4);
        for (int i = 0; i < 16; ++i)
            wall.setQuietly(i, i == 14 ? 0 : i == 2 ? 300 : i == 9 ? 254 : 255);
        driver::click(wall.ui.btn_posi[1]);
        QCOMPARE(wall.lines(), (QStringList{"SPCHS  3 0", "SPCVS  2 0", "SPCVE  3 0"}));
        QCOMPARE(wall.ui.value_posi[14]->text(), QStringLiteral("+0"));
    }

    // Output n of group g is trimmed by n * 10 + g, plus on odd outputs. The read of step 5 ("RCHE
    // 1") first gets a reply of another group and two outside the bar's range, which leave it
    // waiting, then its own with a blank before the magnitude and noise where the output is.
    // Progress goes up a quarter a group; the buttons stay disabled meanwhile.
    void trimReadFillsBarsAndSendsNothing() {
        Wall wall("127.31.4.1", 1, &Controls::opt_tv4);
        const char* groups[] = {"trim.h_start.", "trim.h_end.", "trim.v_start.", "trim.v_end."};
        for (int i = 0; i < 16; ++i) {
            const int m = (i % 4 + 1) * 10 + i / 4;
            setSetting(wall.device(), groups[i / 4] + QByteArray(1, char('a' + i % 4)),
                       i % 2 ? -m : m);
        }
        QList<int> progress, counts;
        bool busy = true;
        wall.device().setReplyHook([&](const QByteArray& line, const QByteArray& reply) {
            progress << wall.ui.ProgressBar1->value();
            busy = busy && !wall.ui.btn_posi[0]->isEnabled() && !wall.ui.btn_posi[1]->isEnabled() &&
                   wall.ui.ProgressBar1->isVisible();
            if (line != "RCHE 1")
                return reply;
            wall.feed(0,
                      {"CHSC001PHSV012\r\n", "CHEC001PHEV300\r\n", "CHEC001MHEV256\r\n",
                       "CHECxyzPHEV 11\r\n"},
                      wall.count(counts));
            return QByteArray();
        });
        driver::click(wall.ui.btn_posi[0]);
        QVERIFY(busy);
        QCOMPARE(progress,
                 (QList<int>{0, 0, 0, 0, 25, 25, 25, 25, 50, 50, 50, 50, 75, 75, 75, 75}));
        QCOMPARE(counts, (QList<int>{5, 5, 5, 5}));
        for (int i = 0; i < 16; ++i) {
            const int m = i == 4 ? 11 : (i % 4 + 1) * 10 + i / 4;
            QCOMPARE(wall.ui.HS_A[i]->value(), i % 2 ? 255 - m : 255 + m);
            QCOMPARE(wall.ui.value_posi[i]->text(), (i % 2 ? u'-' : u'+') + QString::number(m));
        }
        QVERIFY(wall.ui.btn_posi[0]->isEnabled() && wall.ui.btn_posi[1]->isEnabled());
        QVERIFY(wall.ui.ProgressBar1->isHidden() && wall.boxes.texts().isEmpty());
        // Bars moved by the read send nothing.
        QCOMPARE(wall.lines(), numbered({"RCHS", "RCHE", "RCVS", "RCVE"}));
    }
};

QTEST_MAIN(TestWall)
#include "test_wall.moc"
