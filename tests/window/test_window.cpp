#include "support/bench.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <cmath>

using driver::find;

namespace {

QColor colour(QWidget* button, QPalette::ColorGroup group = QPalette::Active,
              QPalette::ColorRole role = QPalette::Button) {
    return button->palette().color(group, role);
}

// WCAG contrast ratio of two colours, 1 to 21.
double contrast(const QColor& a, const QColor& b) {
    auto luminance = [](const QColor& c) {
        auto channel = [](double v) {
            return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) +
               0.0722 * channel(c.blueF());
    };
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

// Counts the paint events a widget gets.
struct Painted : QObject {
    explicit Painted(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint;
        return false;
    }
    int count = 0;
};

// Which of the frames and system controls can be used.
QStringList enabled(Form1& form) {
    QStringList names;
    for (const char* name :
         {"net_config", "con_interface", "frame_control(0)", "frame_control(5)", "power_ctl(0)",
          "btn_sys_fac_rst", "btn_sys_refresh", "Check1(0)", "Check1(1)"})
        if (find<QWidget>(form, QLatin1String(name))->isEnabled())
            names << QLatin1String(name);
    return names;
}

const QStringList RefreshReads =
    QStringList{"RPOW", "RMDN", "RBY", "RBEZ", "RVER", "RIPM", "RLINK"} +
    numbered({"RCBH", "RCBV"}) +
    QStringList{"RRES", "ROSDD", "ROSDT", "ROSDH", "ROSDV", "ROSDG", "RMUTE"};

} // namespace

// Start-up, connecting, the full refresh, "Stop waiting" and closing. Addresses in 127.10.0.0/16
// and 127.12.0.0/16.
class TestWindow : public QObject {
    Q_OBJECT
private slots:
    // Not connected: only "Search MAC" can be used. The lists are filled, nothing chosen. The page
    // selectors' captions of opt_tv3 and opt_tv4 are crossed.
    void startUp() {
        Form1 form;
        form.show();
        QCOMPARE(form.windowTitle(), QStringLiteral("Panomat Set v1.10"));
        QCOMPARE(enabled(form), QStringList());
        QVERIFY(form.ui.sys_setting->isEnabled() && form.ui.btn_sys_search->isEnabled());
        QVERIFY(form.ui.power_ctl[0]->isVisible() && !form.ui.power_ctl[1]->isVisible() &&
                !form.ui.power_ctl[2]->isVisible());
        QVERIFY(!form.ui.lbl_con[2]->isVisible() && !form.ui.ProgressBar1->isVisible());
        QCOMPARE(colour(form.ui.btn_discon), QColor(255, 0, 0));
        QCOMPARE(form.ui.HS_A[15]->maximum(), 510);
        QCOMPARE(form.ui.HS_A[15]->value(), 0);
        QCOMPARE(form.ui.value_posi[3]->text(), QStringLiteral("Value"));
        // name, count, first, last, the text shown before anything is chosen
        // clang-format off
        const std::tuple<const char*, int, const char*, const char*, const char*> lists[] = {
            {"cbo_val_H(1)", 256, " 0", " 255", ""}, {"cbo_val_V(4)", 256, " 0", " 255", ""},
            {"cbo_tv_row", 15, " 1", " 15", "1~15"}, {"cbo_tv_posi", 0, "", "", "1~MxN"},
            {"cbo_tv_ch", 4, "Out A", "Out D", ""}, {"cbo_ip_type", 2, "DHCP", "STATIC", ""},
            {"cbo_info_play", 2, "OFF", "ON", ""}, {"cbo_reso", 17, "720p50", "Native", ""},
            {"cbo_image_hue(4)", 101, "0", "100", "0~100"}, {"cbo_osd(1)", 21, "0", "20", "0~20"},
            {"cbo_osd_gain", 11, "0", "10", "0~10"}, {"cbo_osd_time", 49, "2", "50", ""}};
        // clang-format on
        for (auto [name, count, first, last, text] : lists) {
            auto* box = find<QComboBox>(form, QLatin1String(name));
            QCOMPARE(box->count(), count);
            QCOMPARE(box->itemText(0), QLatin1String(first));
            QCOMPARE(box->itemText(count - 1), QLatin1String(last));
            QCOMPARE(box->currentIndex(), -1);
            QCOMPARE(box->currentText(), QLatin1String(text));
        }
        QCOMPARE(form.ui.cbo_reso->itemText(6), QStringLiteral("1080p60"));
        QCOMPARE(form.ui.btn_tv_fs[23]->text(), QStringLiteral("6x3"));
        QCOMPARE(form.ui.btn_recall[5]->text(), QStringLiteral("FAV 5"));
        const std::tuple<QRadioButton*, const char*> selectors[] = {
            {form.ui.opt_tv1, "Panomat (1)"}, {form.ui.opt_tv2, "Panomat (2)"},
            {form.ui.opt_io, "I/O Setup"},    {form.ui.opt_image, "Image Adjust"},
            {form.ui.opt_tv3, "Panomat (4)"}, {form.ui.opt_tv4, "Panomat (3)"}};
        for (int page = 0; page < 6; ++page) {
            auto [option, caption] = selectors[page];
            QCOMPARE(option->text(), QLatin1String(caption));
            driver::click(option);
            for (int i = 0; i < 6; ++i)
                QCOMPARE(form.ui.frame_control[i]->isVisible(), i == page);
#ifdef Q_OS_WIN // other fonts, other widths: there every page stands where the first does
            QCOMPARE(form.ui.frame_control[page]->pos(), form.ui.frame_control[0]->pos());
#else
            QCOMPARE(form.ui.frame_control[page]->pos(), QPoint(128, 208));
#endif
        }

        // The green and red buttons keep their colours and readable text, enabled or not (the
        // disabled red "Disconnect" at start-up, the disabled green "Power ON" during a refresh),
        // and the system buttons stay put when the progress bar appears.
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        for (QPushButton* button : {form.ui.btn_discon, form.ui.power_ctl[1], form.ui.power_ctl[2]})
            for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Disabled}) {
                const double ratio =
                    contrast(colour(button, group, QPalette::ButtonText), colour(button, group));
                QVERIFY2(ratio >= 4.5, qPrintable(button->objectName()));
            }
        // Values shown while offline read on their backgrounds.
        for (QWidget* control : std::initializer_list<QWidget*>{form.ui.txt_ip, form.ui.cbo_model,
                                                                form.ui.btn_con, form.ui.TextInfo})
            for (QPalette::ColorRole text :
                 {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
                for (QPalette::ColorRole back :
                     {QPalette::Base, QPalette::Window, QPalette::Button})
                    QVERIFY2(contrast(colour(control, QPalette::Disabled, text),
                                      colour(control, QPalette::Disabled, back)) >= 4.5,
                             qPrintable(control->objectName()));
        const QPoint before = form.ui.btn_sys_search->mapTo(&form, QPoint(0, 0));
        Painted painted(form.ui.ProgressBar1);
        form.ui.ProgressBar1->setVisible(true);
        QTest::qWait(20);
        QCOMPARE(form.ui.btn_sys_search->mapTo(&form, QPoint(0, 0)), before);
        // The window paces its painting: a progress value is painted with the next frame,
        // not at once in the middle of a refresh.
        QTRY_VERIFY(painted.count > 0);
        QTest::qWait(50);
        const int shown = painted.count;
        form.ui.ProgressBar1->setValue(37);
        QCOMPARE(painted.count, shown);
        QTRY_VERIFY(painted.count > shown);
    }

    // Every listed controller is connected, more than the old nine; the selected one gets "SOSDI"
    // and the refresh. A broadcast passes over a socket that is down; picking another controller
    // reconnects only that one. Disconnect closes them all.
    void connectListedControllers() {
        Bench bench("127.10.7.1", 10);
        bench.connect();
        QCOMPARE(colour(bench.ui.btn_con), QColor(0, 255, 0));
        QVERIFY(colour(bench.ui.btn_discon) != QColor(255, 0, 0));
        QCOMPARE(enabled(bench.form).size(), 9);
        QVERIFY(bench.ui.lbl_con[2]->isHidden());
        for (int i = 0; i < 10; ++i)
            QCOMPARE(bench.device(i).acceptedCount(), 1);
        bench.device(4).stop();
        QTRY_VERIFY(!bench.form.services().link().isConnected(4));
        driver::click(bench.ui.btn_save[2]);
        for (int i = 0; i < 10; ++i)
            QCOMPARE(bench.lines(i), i == 4 ? QStringList() : QStringList{"SFAVE 2"});
        driver::pick(bench.ui.cbo_ipaddr, 9);
        QCOMPARE(bench.lines(9), QStringList{"SOSDI"} + RefreshReads);
        QCOMPARE(bench.device(9).acceptedCount(), 2);
        QCOMPARE(bench.device(0).acceptedCount(), 1);
        QCOMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        // The box shows the last chunk received from the selected controller; data on another
        // socket makes the selected one be read, and nothing is there.
        bench.device(9).push("MODN002\r\n");
        QTRY_COMPARE(bench.ui.TextInfo->text(), QStringLiteral("MODN002\r\n"));
        bench.device(0).push("BYPA001\r\n");
        QTRY_COMPARE(bench.ui.TextInfo->text(), QString());
        driver::click(bench.ui.btn_discon);
        QCOMPARE(enabled(bench.form), QStringList{"con_interface"});
        QCOMPARE(colour(bench.ui.btn_discon), QColor(255, 0, 0));
        for (int i = 0; i < 10; ++i)
            QTRY_COMPARE(bench.device(i).connectionCount(), 0);
    }

    // Nothing listens: "Connected error!" after the pass limit. No selection: every listed
    // controller is connected all the same, nothing else happens.
    void connectFails() {
        Bench bench("127.10.2.1", 1);
        driver::listDevices(bench.form, {"127.10.2.2"});
        driver::click(bench.ui.btn_con);
        driver::listDevices(bench.form, bench.addresses());
        bench.ui.cbo_ipaddr->setCurrentIndex(-1);
        driver::click(bench.ui.btn_con);
        QCOMPARE(bench.boxes.texts(),
                 (QStringList{"Connected error!", "Please select a MAC to connect !"}));
        for (const auto& box : bench.boxes.seen())
            QVERIFY(box.icon == QMessageBox::Warning && box.buttons == QMessageBox::Ok);
        QVERIFY(!bench.form.services().isConnected() && bench.ui.lbl_con[2]->isHidden());
        QCOMPARE(enabled(bench.form), QStringList{"con_interface"});
        QTRY_COMPARE(bench.device().acceptedCount(), 1);
        QCOMPARE(bench.lines(), QStringList());
    }

    // The refresh holds at "RBEZ" with the panels locked and the progress at 0; they stay locked
    // until the completion message is closed, at 100. Then the window shows the controller; a
    // second Refresh reads the same, and what the reads set sends nothing.
    void refreshReadsInOrderWithPanelsLocked() {
        Bench bench("127.12.2.1", 1);
        bench.device().setFaults({.silent = {"RBEZ"}});
        bench.boxes.hold(true);
        QStringList sentWhileWaiting;
        bool lockedAtZero = false, lockedAtHundred = false;
        bench.onLine(0, "RBEZ", [&] {
            QTimer::singleShot(200, &bench.form, [&] {
                sentWhileWaiting = bench.lines();
                lockedAtZero = bench.locked() && !bench.ui.ProgressBar1->isHidden() &&
                               bench.ui.ProgressBar1->value() == 0;
                bench.device().push("BEZE001\r\n");
            });
        });
        driver::when(&bench.form, QApplication::activeModalWidget, [&] {
            lockedAtHundred = bench.locked() && bench.ui.ProgressBar1->value() == 100;
            bench.boxes.pressNow();
        });
        driver::listDevices(bench.form, bench.addresses());
        driver::click(bench.ui.btn_con);
        QCOMPARE(sentWhileWaiting, (QStringList{"SOSDI", "RPOW", "RMDN", "RBY", "RBEZ"}));
        QVERIFY(lockedAtZero && lockedAtHundred);
        QVERIFY(!bench.locked() && bench.ui.ProgressBar1->isHidden());
        QCOMPARE(bench.lines(), RefreshReads.mid(4));
        QCOMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::NoIcon);
        QCOMPARE(bench.form.windowTitle(), QStringLiteral("Panomat Set v1.10    FW: v1.02"));
        QVERIFY(!bench.ui.power_ctl[1]->isHidden() && bench.ui.power_ctl[2]->isHidden());
        QVERIFY(bench.ui.opt_ch4_bypass[1]->isChecked() && bench.ui.opt_bezel[1]->isChecked());
        QCOMPARE(bench.ui.cbo_model->currentIndex(), 0);
        QCOMPARE(bench.ui.cbo_ip_type->currentText(), QStringLiteral("STATIC"));
        QVERIFY(bench.ui.txt_ip->isEnabled());
        // The address block's fields go in as they stand, leading zeros kept.
        QCOMPARE(bench.ui.txt_ip->text(), QStringLiteral("127.012.002.001"));
        QCOMPARE(bench.ui.txt_net->text(), QStringLiteral("255.000.000.000"));
        QCOMPARE(bench.ui.txt_gate->text(), QStringLiteral("127.000.000.001"));
        bench.boxes.hold(false);
        bench.device().setFaults({});
        driver::click(bench.ui.btn_sys_refresh);
        QCOMPARE(bench.lines(), RefreshReads);
    }

    // A reply for another step leaves the read where it is, and of two replies in one chunk only
    // the first is seen.
    void repliesAtWrongStepOrJoinedAreIgnored() {
        Bench bench("127.12.3.1", 2);
        bench.device().setFaults({.silent = {"RPOW", "RMDN"}});
        driver::listDevices(bench.form, bench.addresses());
        bench.ui.cbo_model->setCurrentIndex(1);
        QList<int> seen; // lines received and the model, ahead of each reply
        const auto look = [&] {
            seen << int(bench.device().received().size()) << bench.ui.cbo_model->currentIndex();
        };
        bench.onLine(0, "RPOW", [&] {
            bench.feed(0, {"MODN000\r\n", "POWE000\r\nMODN000\r\n"}, look);
        });
        bench.onLine(0, "RMDN", [&] { bench.feed(0, {"BYPA001\r\n", "MODN000\r\n"}, look); });
        driver::click(bench.ui.btn_con);
        QCOMPARE(seen, (QList<int>{2, 1, 2, 1, 3, 1, 3, 1}));
        QCOMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        QCOMPARE(bench.ui.cbo_model->currentIndex(), 0);
        QVERIFY(!bench.ui.power_ctl[2]->isHidden());
    }

    void everyHandlerChecksTheLinkFirst_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("action"); // "#n" picks item n, text is typed; else a click
        QTest::addColumn<bool>("keepsModel");
        // clang-format off
        for (const char* button : {"btn_panomat_send", "btn_save(1)", "btn_recall(4)",
                 "opt_ch4_bypass(0)", "btn_tv_fs(3)", "btn_posi(1)", "btn_H_Bezel_send",
                 "btn_panomat_reset", "opt_bezel(1)", "opt_mute(1)", "btn_io_rst(0)",
                 "btn_img_rst(5)", "btn_sys_fac_rst", "power_ctl(1)", "btn_ip_get", "btn_ip_set",
                 "btn_ip_relink", "btn_sys_refresh"})
            QTest::newRow(button) << button << "" << true;
        QTest::newRow("HS_A(0)") << "HS_A(0)" << "100" << true;
        QTest::newRow("cbo_reso") << "cbo_reso" << "#16" << false;
        QTest::newRow("cbo_info_play") << "cbo_info_play" << "#1" << true;
        QTest::newRow("cbo_osd_time") << "cbo_osd_time" << "#3" << false;
        QTest::newRow("cbo_osd_gain") << "cbo_osd_gain" << "#2" << false;
        QTest::newRow("cbo_osd(0), first key") << "cbo_osd(0)" << "4" << false;
        QTest::newRow("cbo_image_bri(1)") << "cbo_image_bri(1)" << "#5" << true;
        QTest::newRow("cbo_image_con(2), first key") << "cbo_image_con(2)" << "7" << true;
        QTest::newRow("cbo_model") << "cbo_model" << "#1" << false;
        // clang-format on
    }

    // Whatever the operator does with the link down is refused before anything is sent: "Ethernet
    // is disconnected !", offline. Some lists a status read fills lose their selection of the model
    // first.
    void everyHandlerChecksTheLinkFirst() {
        QFETCH(QString, control);
        QFETCH(QString, action);
        QFETCH(bool, keepsModel);
        Bench bench("127.10.5.1", 2);
        bench.connect();
        bench.device().stop();
        QTRY_VERIFY(!bench.form.services().linkUp());
        QWidget* widget = find<QWidget>(bench.form, control);
        for (int page = 0; page < 6; ++page)
            if (bench.ui.frame_control[page]->isAncestorOf(widget))
                bench.form.ShowPage(page);
        if (auto* bar = qobject_cast<QScrollBar*>(widget))
            bar->setValue(action.toInt());
        else if (action.startsWith(u'#'))
            driver::pick(qobject_cast<QComboBox*>(widget), action.mid(1).toInt());
        else if (!action.isEmpty())
            driver::type(qobject_cast<QComboBox*>(widget), action);
        else
            driver::click(qobject_cast<QAbstractButton*>(widget));
        QCOMPARE(bench.boxes.texts(), QStringList{"Ethernet is disconnected !"});
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Critical);
        QCOMPARE(enabled(bench.form), QStringList{"con_interface"});
        QCOMPARE(bench.ui.cbo_model->currentIndex(), keepsModel ? 0 : -1);
        QCOMPARE(bench.ui.value_posi[0]->text(), QStringLiteral("Value"));
        QCOMPARE(bench.lines(1), QStringList());
    }

    // Closing the window while a reply is awaited ends the wait: nothing more is sent or shown.
    void closingEndsRunningWait() {
        Bench bench("127.10.6.1", 1);
        bench.connect();
        bench.device().setFaults({.silent = {"RMDN"}});
        bench.onLine(0, "RMDN", [&] { bench.form.close(); });
        driver::click(bench.ui.btn_sys_refresh);
        QCOMPARE(bench.lines(), (QStringList{"RPOW", "RMDN"}));
        QVERIFY(bench.boxes.texts().isEmpty());
    }

    void stopWaitingLeavesAStrandedWait_data() {
        QTest::addColumn<bool>("escape");     // else the status bar's button
        QTest::addColumn<bool>("secondRead"); // bezel Refresh pressed again while the first waits
        QTest::newRow("button, dropped mid-refresh") << false << false;
        QTest::newRow("Escape, dropped mid-refresh") << true << false;
        QTest::newRow("button, two bezel reads") << false << true;
    }

    // A read whose controller went away waits for ever with the panels locked; "Stop waiting" ends
    // it (and a read started on top of it) without sending or showing anything more, unlocks the
    // panels and goes offline. Connecting again then works.
    void stopWaitingLeavesAStrandedWait() {
        QFETCH(bool, escape);
        QFETCH(bool, secondRead);
        Bench bench("127.10.9.1", 1);
        Form1& form = bench.form;
        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        auto* stop = find<QPushButton>(form, QStringLiteral("btn_stop_waiting"));
        QVERIFY(!stop->isEnabled());
        bench.connect();
        driver::click(bench.ui.opt_tv2);
        // The refresh stalls at the status read's "RBEZ", the bezel read at "RCBV 1".
        const QByteArray stall = secondRead ? "RCBV 1" : "RBEZ";
        bench.device().setFaults({.silent = {stall.left(4)}});
        int sent = -1;
        bench.onLine(0, stall, [&] {
            if (secondRead) {
                bench.device().clearReceived();
                bench.onLine(0, stall, [&] {
                    sent = int(bench.device().received().size());
                    driver::click(stop);
                });
                return driver::click(bench.ui.btn_panomat_refresh); // the first read waits on
            }
            bench.device().stop();
            driver::when(
                &form, [&] { return !form.services().linkUp(); },
                [&] {
                    QVERIFY(stop->isVisible() && stop->isEnabled() && bench.locked());
                    sent = int(bench.device().received().size());
                    if (!escape)
                        return driver::click(stop);
                    form.activateWindow(); // through the window, where shortcuts are matched
                    QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == &form; }));
                    QTest::keyClick(form.windowHandle(), Qt::Key_Escape);
                });
        });
        driver::click(secondRead ? bench.ui.btn_panomat_refresh : bench.ui.btn_sys_refresh);
        QTest::qWait(50);
        QCOMPARE(int(bench.device().received().size()), sent);
        QCOMPARE(bench.boxes.texts(), QStringList());
        // The status bar says what was given up.
        const QString said = find<QLabel>(form, QStringLiteral("wait_status"))->text();
        QVERIFY2(said.startsWith(QStringLiteral("Stopped: ")) &&
                     said.contains(QStringLiteral("waiting for %1 from 127.10.9.1")
                                       .arg(secondRead ? "CBVR" : "BEZE")) &&
                     said.endsWith(QStringLiteral("The window is offline; Connect to go on.")),
                 qPrintable(said));
        QVERIFY(!stop->isEnabled() && !bench.ui.ProgressBar1->isVisible());
        QCOMPARE(enabled(form), QStringList{"con_interface"});
        QVERIFY(bench.ui.sys_setting->isEnabled() && bench.ui.btn_sys_search->isEnabled());
        bench.device().setFaults({});
        QVERIFY(bench.device().isListening() || bench.device().listen(QHostAddress("127.10.9.1")));
        driver::click(bench.ui.btn_con);
        QCOMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        QVERIFY(bench.ui.frame_control[1]->isEnabled() &&
                bench.ui.btn_panomat_refresh->isEnabled());
    }

    // Keys beside the documented ones, through the window as a person's keys arrive: F5
    // refreshes, Ctrl+3 shows the third page, each only where its button could be
    // pressed; Ctrl+Q quits. Without a display the program says so.
    void keysBesideTheDocumentedOnes() {
#ifndef Q_OS_WIN // a Windows session always has its desktop, and its lock in the profile
        QProcess headless;
        QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
        for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            bare.remove(QString::fromLatin1(variable));
        headless.setProcessEnvironment(bare);
        headless.start(QStringLiteral(PANOMAT_SET_EXE), {});
        QVERIFY(headless.waitForFinished(10000));
        QCOMPARE(headless.exitStatus(), QProcess::NormalExit);
        QCOMPARE(headless.exitCode(), 1);
        QVERIFY(headless.readAllStandardError().contains("there is no display"));

        // A second copy is told of the first.
        QTemporaryDir runtime;
        QProcessEnvironment offscreen = QProcessEnvironment::systemEnvironment();
        offscreen.insert("QT_QPA_PLATFORM", "offscreen");
        offscreen.insert("XDG_RUNTIME_DIR", runtime.path());
        QProcess first, second;
        for (QProcess* copy : {&first, &second}) {
            copy->setProcessEnvironment(offscreen);
            copy->start(QStringLiteral(PANOMAT_SET_EXE), {});
            QVERIFY(copy->waitForStarted());
            QVERIFY(QTest::qWaitFor(
                [&] { return QFile::exists(runtime.filePath("panomat-set.lock")); }));
        }
        QVERIFY(QTest::qWaitFor(
            [&] { return second.readAllStandardError().contains("Another Panomat Set runs"); }));
        QVERIFY(!first.readAllStandardError().contains("Another Panomat Set runs"));
        for (QProcess* copy : {&first, &second}) {
            copy->kill();
            copy->waitForFinished();
        }
#endif

        Bench bench("127.10.12.1", 1);
        Form1& form = bench.form;
        form.show();
        const auto press = [&form](QKeyCombination key) {
            form.activateWindow();
            QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == &form; }));
            QTest::keyClick(form.windowHandle(), key.key(), key.keyboardModifiers());
        };
        press(Qt::Key_F5); // offline: Refresh cannot be pressed
        QVERIFY(bench.device().received().isEmpty() && bench.boxes.texts().isEmpty());
        press(Qt::ALT | Qt::Key_C); // Connect, found by no search yet: not pressed
        QVERIFY(bench.device().received().isEmpty() && bench.boxes.texts().isEmpty());
        bench.connect();
        press(Qt::ALT | Qt::Key_D);
        QVERIFY(!form.services().isConnected());
        press(Qt::ALT | Qt::Key_C);
        QTRY_COMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        QVERIFY(form.services().isConnected());
        bench.boxes.clear();
        bench.forget();
        press(Qt::CTRL | Qt::Key_3);
        QVERIFY(bench.ui.frame_control[2]->isVisible() && !bench.ui.frame_control[0]->isVisible());
        press(Qt::Key_F5);
        QTRY_COMPARE(bench.boxes.texts(), QStringList{"Refresh completed !"});
        QCOMPARE(bench.lines().first(), QStringLiteral("RPOW"));
        press(Qt::CTRL | Qt::Key_Q);
        QTRY_VERIFY(!form.isVisible());
    }

    // A listed controller that is not selected is never read; whatever it sends must not pile up in
    // the window. The flood is written as fast as the connection takes it.
    void floodFromAnotherControllerIsNotTakenIn() {
        constexpr qint64 Chunk = 256 * 1024, Flood = 64 * 1024 * 1024;
        Bench bench("127.10.10.1", 1);
        QTcpServer flooder;
        QVERIFY(flooder.listen(QHostAddress(QStringLiteral("127.10.10.2")), 23));
        qint64 written = 0;
        QTcpSocket* victim = nullptr;
        QTimer pump;
        QObject::connect(&pump, &QTimer::timeout, [&] {
            if (!victim && flooder.hasPendingConnections())
                victim = flooder.nextPendingConnection();
            while (victim && written < Flood && victim->bytesToWrite() < Chunk)
                written += victim->write(QByteArray(Chunk, 'x'));
        });
        pump.start(1);
        driver::listDevices(bench.form, {"127.10.10.1", "127.10.10.2"});
        driver::click(bench.ui.btn_con);
        QVERIFY(QTest::qWaitFor([&] { return victim != nullptr; }));
        qint64 taken = -1;
        for (int still = 0; still < 10 && written < Flood; QTest::qWait(50)) { // settled
            const qint64 now = written - victim->bytesToWrite();
            still = now == taken ? still + 1 : 0;
            taken = now;
        }
        QVERIFY2(taken < 16 * 1024 * 1024, qPrintable(QString::number(taken)));
        QVERIFY(bench.form.services().linkUp());
    }
};

QTEST_MAIN(TestWindow)
#include "test_window.moc"
