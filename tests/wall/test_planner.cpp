#include "support/bench.h"
#include "support/files.h"
#include "wall/wallplanner.h"

#include <QApplication>
#include <QImage>
#include <QSpinBox>

// Each test function runs four virtual controllers on its own addresses in 127.68.0.0/16.
namespace {

// The planner opened from the window's "Wall" menu with the keyboard.
WallPlanner* openPlanner(Form1& form) {
    form.activateWindow();
    if (!QTest::qWaitForWindowActive(&form))
        qFatal("the window did not become active");
    QTest::keyClick(&form, Qt::Key_W, Qt::AltModifier);
    if (!QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }))
        qFatal("the Wall menu did not open");
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_P);
    auto* planner = form.findChild<WallPlanner*>();
    if (!QTest::qWaitFor([planner] { return planner->isVisible(); }))
        qFatal("the planner did not open");
    return planner;
}

// Types rows and columns over the spin boxes' text, as a person does; none: left as is.
void shape(WallPlanner* planner, int rows, int cols = 0) {
    for (auto [name, value] : {std::pair{"planner_rows", rows}, {"planner_cols", cols}}) {
        auto* box = planner->findChild<QSpinBox*>(QLatin1String(name));
        if (!value)
            continue;
        box->activateWindow();
        box->setFocus();
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(box, QString::number(value));
        QTest::keyClick(box, Qt::Key_Tab);
    }
}

void press(WallPlanner* planner, const char* name) {
    QTest::mouseClick(planner->findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
}

// A 4 x 4 wall, auto-filled; applied if asked.
WallPlanner* fourByFour(Form1& form, bool apply = true) {
    WallPlanner* planner = openPlanner(form);
    shape(planner, 4, 4);
    press(planner, "planner_autofill");
    if (apply)
        press(planner, "planner_apply");
    return planner;
}

} // namespace

class TestPlanner : public QObject {
    Q_OBJECT
private slots:
    void autoFillAppliesEveryControllersTiles() {
        Connected bench("127.68.1.1");
        WallPlanner* planner = fourByFour(bench.form, false);
        QCOMPARE(planner->plan().rows, 4);
        QCOMPARE(planner->plan().cols, 4);
        QCOMPARE(planner->plan().assignments.size(), 16);
        QCOMPARE(planner->findChild<QLabel*>(QStringLiteral("planner_coverage"))->text(),
                 QStringLiteral("Every tile is shown by one output."));

        // While it runs, the window's own handlers see nothing of it. The last controller
        // answers slowly, so that the apply is still running when the watcher looks.
        const QString shown = bench.form.ui.TextInfo->text();
        QString shownDuring;
        bool lockedDuring = false;
        bench.c(4)->setFaults({.latencyMs = 20});
        driver::when(
            &bench.form, [&] { return linesOf(bench.c(4)).size() >= 4; },
            [&] {
                shownDuring = bench.form.ui.TextInfo->text();
                lockedDuring = !bench.form.ui.frame_control[0]->isEnabled() &&
                               !bench.form.ui.sys_setting->isEnabled();
            });
        press(planner, "planner_apply");
        QCOMPARE(shownDuring, shown);
        QVERIFY(lockedDuring);
        QVERIFY(bench.form.ui.sys_setting->isEnabled());

        for (int n = 1; n <= 4; ++n) {
            const sim::ControllerState& state = bench.c(n)->state();
            QCOMPARE(state.value("wall.rows"), 4);
            QCOMPARE(state.value("wall.cols"), 4);
            for (int o = 0; o < 4; ++o)
                QCOMPARE(state.value(QStringLiteral("wall.position.%1").arg(QChar(u'a' + o))),
                         4 * (n - 1) + o + 1);
        }
        // The second controller got exactly its pairs, each after the one before was
        // acknowledged; the first also the window's refresh afterwards.
        QCOMPARE(linesOf(bench.c(2)),
                 (QStringList{"SMNC 4 4 1", "SCO 1 5", "SMNC 4 4 2", "SCO 2 6", "SMNC 4 4 3",
                              "SCO 3 7", "SMNC 4 4 4", "SCO 4 8"}));
        QCOMPARE(linesOf(bench.c(1)).mid(0, 2), (QStringList{"SMNC 4 4 1", "SCO 1 1"}));
        QVERIFY(linesOf(bench.c(1)).contains(QStringLiteral("RPOW")));
        const QStringList texts = bench.boxes.texts();
        QCOMPARE(texts.size(), 2);
        QCOMPARE(texts[0], QStringLiteral("Refresh completed !"));
        QVERIFY2(texts[1].startsWith(QStringLiteral(
                     "Applied the wall plan to 4 of 4 controllers: 16 of 16 outputs placed.")),
                 qPrintable(texts[1]));
        QCOMPARE(bench.boxes.seen().last().icon, QMessageBox::Information);
        QCOMPARE(bench.boxes.seen().last().owner, QStringLiteral("wall_planner"));

        // On a small planner a tile still tells its controller: tile 1 showing controller
        // 2's Out A instead of controller 1's looks different.
        planner->resize(640, 420);
        WallBoard* board = planner->board();
        QTRY_VERIFY(board->tileRect(1).width() < 110);
        const QImage first = board->grab(board->tileRect(1)).toImage();
        planner->place(0, 0);
        planner->place(4, 1);
        QVERIFY(board->grab(board->tileRect(1)).toImage() != first);
    }

    void dragAndListsPlaceOutputsAndMarkTiles() {
        Connected bench("127.68.2.1");
        WallPlanner* planner = openPlanner(bench.form);
        shape(planner, 3, 4);
        WallBoard* board = planner->board();
        QCOMPARE(planner->chips().size(), 16);
        QCOMPARE(planner->chips()[5].label(), bench.form.ui.cbo_ipaddr->itemText(1) + " / Out B");

        // Controller 2's Out B dragged onto tile 7.
        const QPoint from = board->chipRect(5).center();
        const QPoint to = board->tileRect(7).center();
        QTest::mousePress(board, Qt::LeftButton, {}, from);
        QTest::mouseMove(board, (from + to) / 2);
        QTest::mouseMove(board, to);
        QTest::mouseRelease(board, Qt::LeftButton, {}, to);
        QCOMPARE(planner->plan().assignments.size(), 1);
        const wallplan::Assignment placed = planner->plan().assignments.first();
        QCOMPARE(placed.address, bench.c(2)->address().toString());
        QCOMPARE(placed.output, 2);
        QCOMPARE(placed.tile, 7);
        auto* coverage = planner->findChild<QLabel*>(QStringLiteral("planner_coverage"));
        QCOMPARE(coverage->text(),
                 QStringLiteral("No output shows tile 1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12."));

        // With the keyboard: tile 7 again from the lists, for controller 3's Out D.
        auto* tiles = planner->findChild<QComboBox*>(QStringLiteral("planner_tile"));
        auto* outputs = planner->findChild<QComboBox*>(QStringLiteral("planner_output"));
        planner->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(planner));
        tiles->setFocus();
        for (int i = 0; i < 6; ++i)
            QTest::keyClick(tiles, Qt::Key_Down);
        outputs->setFocus();
        QTest::keyClick(outputs, Qt::Key_End);
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(outputs, Qt::Key_Up);
        QCOMPARE(outputs->currentText(), bench.form.ui.cbo_ipaddr->itemText(2) + " / Out D");
        auto* placeButton = planner->findChild<QPushButton*>(QStringLiteral("planner_place"));
        placeButton->setFocus();
        QTest::keyClick(placeButton, Qt::Key_Space);
        QCOMPARE(planner->plan().assignments.size(), 2);
        QVERIFY2(coverage->text().endsWith(QStringLiteral("More than one output shows tile 7.")),
                 qPrintable(coverage->text()));

        // Dragged off the wall, the output leaves it.
        const QPoint off(board->width() - 2, board->height() - 2);
        QTest::mousePress(board, Qt::LeftButton, {}, from);
        QTest::mouseMove(board, off);
        QTest::mouseRelease(board, Qt::LeftButton, {}, off);
        QCOMPARE(planner->plan().assignments.size(), 1);
        QCOMPARE(planner->plan().assignments.first().output, 4);
    }

    // A plan comes back from its file as it was saved; a file that is no plan for this window
    // is refused with its fault named, and the plan stays.
    void plansSurviveSaveAndOpenBadOnesAndStatesAreRefused() {
        Connected bench("127.68.4.1");
        QTemporaryDir dir;
        WallPlanner* planner = openPlanner(bench.form);
        shape(planner, 2, 5);
        press(planner, "planner_autofill");
        planner->place(0, 10); // controller 1's Out A onto the last tile instead
        const wallplan::Plan saved = planner->plan();
        QVERIFY(planner->save(dir.filePath("wall.json")));
        shape(planner, 1);
        QVERIFY(planner->plan() != saved);
        QVERIFY(planner->open(dir.filePath("wall.json")));
        QCOMPARE(planner->plan(), saved);
        QCOMPARE(planner->findChild<QSpinBox*>(QStringLiteral("planner_cols"))->value(), 5);
        QVERIFY(bench.boxes.texts().isEmpty());

        const QByteArray head = R"({"format": "panomat-wall-plan/1", )";
        const std::pair<QByteArray, QString> bad[] = {
            {head + "\n  \"rows\": 2,,\n}", "line 2"},
            {R"({"format": "panomat-wall-plan/9", "rows": 1, "cols": 1, "assignments": []})",
             "panomat-wall-plan/9"},
            {head + R"("rows": 16, "cols": 15, "assignments": []})", "1..15"},
            {head +
                 R"("rows": 1, "cols": 2, "assignments": [)"
                 R"({"mac": "02-00-00-00-00-99", "address": "127.68.4.9", "output": "A", "tile": 1}]})",
             "127.68.4.9 (02-00-00-00-00-99)"}};
        for (const auto& [text, fault] : bad) {
            QVERIFY(writeFile(dir.filePath("bad.json"), text));
            bench.boxes.clear();
            QVERIFY(!planner->open(dir.filePath("bad.json")));
            QCOMPARE(bench.boxes.texts().size(), 1);
            QVERIFY2(bench.boxes.texts().first().contains(fault),
                     qPrintable(bench.boxes.texts().first()));
            QCOMPARE(bench.boxes.seen().first().owner, QStringLiteral("wall_planner"));
            QCOMPARE(planner->plan(), saved);
        }

        // While the refresh waits for a reply that does not come, Apply is refused.
        bench.c(1)->setFaults({.silent = {"RPOW"}});
        bench.forget();
        bench.boxes.clear();
        QStringList shownWhileWaiting;
        driver::when(
            &bench.form, [&] { return bench.form.services().pump().waiting(); },
            [&] {
                press(planner, "planner_apply");
                shownWhileWaiting = bench.boxes.texts();
                bench.form.StopWaiting();
            });
        driver::click(bench.form.ui.btn_sys_refresh);
        QTRY_VERIFY(!bench.form.services().cancelled()); // the stopped refresh has unwound
        QCOMPARE(shownWhileWaiting,
                 QStringList{"The window waits for a controller's reply: apply the "
                             "plan once it has come."});
        QCOMPARE(linesOf(bench.c(1)), QStringList{"RPOW"});
        for (int n = 2; n <= 4; ++n)
            QVERIFY(linesOf(bench.c(n)).isEmpty());
        bench.c(1)->setFaults({});

        // Not connected: nothing is sent.
        bench.boxes.clear();
        driver::click(bench.form.ui.btn_discon);
        bench.boxes.clear();
        press(planner, "planner_apply");
        QCOMPARE(bench.boxes.texts(),
                 QStringList{"Connect to the controllers before applying the plan."});
        for (int n = 1; n <= 4; ++n)
            QVERIFY(!linesOf(bench.c(n)).contains(QStringLiteral("SMNC 2 2 1")));
    }

    void silentAndDroppingControllersAreNamedOthersAreDone() {
        Connected bench("127.68.5.1");
        bench.c(3)->setFaults({.silent = {"SCO"}});
        bench.c(4)->setFaults({.dropAfter = 3});
        WallPlanner* planner = fourByFour(bench.form);

        const QString summary = bench.boxes.texts().last();
        QVERIFY2(summary.startsWith(QStringLiteral(
                     "Applied the wall plan to 2 of 4 controllers: 9 of 16 outputs placed.")),
                 qPrintable(summary));
        const QString mac3 = bench.form.ui.cbo_ipaddr->itemText(2);
        QVERIFY2(
            summary.contains(QStringLiteral("127.68.5.3 (%1): failed: no reply to SCO 1 9 within "
                                            "2000 ms")
                                 .arg(mac3)) &&
                summary.contains(QStringLiteral("  wall.position.b = 14: sent, not confirmed\n"
                                                "  wall.rows = 4: not sent")),
            qPrintable(summary));
        QCOMPARE(bench.boxes.seen().last().icon, QMessageBox::Warning);
        for (int n : {1, 2})
            QCOMPARE(bench.c(n)->state().value("wall.position.d"), 4 * (n - 1) + 4);
        // The silent one got no line after the first unanswered one.
        QCOMPARE(linesOf(bench.c(3)), (QStringList{"SMNC 4 4 1", "SCO 1 9"}));
        QVERIFY(bench.form.ui.sys_setting->isEnabled());

        // Controllers gone since (the one that dropped, and one stopped): their sockets are
        // not connected, and nothing is sent to anyone.
        bench.c(2)->stop();
        QTRY_VERIFY(!bench.form.services().link().isConnected(1));
        bench.forget();
        bench.boxes.clear();
        press(planner, "planner_apply");
        QCOMPARE(bench.boxes.texts(),
                 QStringList{QStringLiteral("These controllers of the plan are not connected:\n"
                                            "127.68.5.2 (%1)\n127.68.5.4 (%2)\nNothing was sent.")
                                 .arg(bench.form.ui.cbo_ipaddr->itemText(1),
                                      bench.form.ui.cbo_ipaddr->itemText(3))});
        QCOMPARE(bench.received(), 0);
    }

    void aDropAfterTheKthWriteIsReportedAsTheControllerHasIt_data() {
        QTest::addColumn<int>("k");
        for (int k : {1, 4, 7})
            QTest::addRow("after write %d", k) << k;
    }

    // The second controller drops after its k-th line: the tiles the report calls written
    // are those it holds, and no other.
    void aDropAfterTheKthWriteIsReportedAsTheControllerHasIt() {
        QFETCH(int, k);
        Connected bench(QStringLiteral("127.68.%1.1").arg(10 + k));
        bench.c(2)->setFaults({.dropAfterWrites = k});
        fourByFour(bench.form);
        const QString summary = bench.boxes.texts().last();
        QVERIFY2(summary.contains(QStringLiteral(": %1 of 16 outputs placed.").arg(12 + k / 2)),
                 qPrintable(summary));
        for (int o = 0; o < 4; ++o) {
            const QString name = QStringLiteral("wall.position.%1").arg(QChar(u'a' + o));
            const QString written = QStringLiteral("  %1 = %2: written").arg(name).arg(5 + o);
            QCOMPARE(summary.contains(written), bench.c(2)->state().value(name) == 5 + o);
        }
    }
};

QTEST_MAIN(TestPlanner)

#include "test_planner.moc"
