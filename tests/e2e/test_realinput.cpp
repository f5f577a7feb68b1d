#include "monitor/trafficmonitor.h"
#include "support/bench.h"
#include "wall/wallplanner.h"

#include <QFileDialog>
#include <QHash>
#include <QProcess>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QStyleOptionSlider>
#include <cmath>

using driver::find;

namespace {

// Runs xdotool and returns once it has finished and the events it caused have been handled (a
// handler that waits runs its own loop inside this one).
void xdo(const QStringList& args) {
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), args);
    QVERIFY2(tool.waitForStarted(), "xdotool is not installed");
    QVERIFY(QTest::qWaitFor([&] { return tool.state() == QProcess::NotRunning; }, 10000));
    QCOMPARE(tool.exitCode(), 0);
    QTest::qWait(60);
}

// Moves the pointer to a point of a widget, and returns once it is there ("--sync" would wait for
// ever for a move to where the pointer already is).
void moveTo(QWidget* widget, QPoint point) {
    static QPoint pointer(-1, -1);
    const QPoint global = widget->mapToGlobal(point) * widget->devicePixelRatio();
    if (global == pointer)
        return;
    pointer = global;
    xdo({"mousemove", "--sync", QString::number(global.x()), QString::number(global.y())});
}

void clickAt(QWidget* widget, QPoint point) {
    moveTo(widget, point);
    xdo({"click", "1"});
}

void click(QWidget* widget) {
    clickAt(widget, widget->rect().center());
}

// Clicks into an editable list's text, selects it all and types over it.
void typeInto(QComboBox* box, const QString& text, const QString& endKey) {
    click(box->lineEdit());
    xdo({"key", "ctrl+a"});
    xdo({"type", "--delay", "15", text});
    if (!endKey.isEmpty())
        xdo({"key", endKey});
}

// What the X server shows of a control.
QImage onScreen(QWidget* control) {
    const QPoint at = control->mapTo(control->window(), QPoint(0, 0));
    return control->screen()
        ->grabWindow(control->window()->winId(), at.x(), at.y(), control->width(),
                     control->height())
        .toImage();
}

// The contrast of the text in a picture of a control: its most common colour is the
// background, the colour furthest from it in luminance the text's (1 to 21).
double textContrast(const QImage& image) {
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    QRgb background = counts.begin().key();
    for (auto it = counts.begin(); it != counts.end(); ++it)
        if (it.value() > counts[background])
            background = it.key();
    const auto luminance = [](QRgb c) {
        const auto channel = [](int v) {
            const double s = v / 255.0;
            return s <= 0.03928 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(qRed(c)) + 0.7152 * channel(qGreen(c)) + 0.0722 * channel(qBlue(c));
    };
    double best = 1;
    for (auto it = counts.begin(); it != counts.end(); ++it) {
        const double a = luminance(it.key()), b = luminance(background);
        best = std::max(best, (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05));
    }
    return best;
}

// The captions of a window's visible buttons that are not wholly on the screen.
QStringList offScreenButtons(QWidget* window, const QRect& screen) {
    QStringList off;
    for (QAbstractButton* button : window->findChildren<QAbstractButton*>())
        if (button->isVisibleTo(window) &&
            !screen.contains(QRect(button->mapToGlobal(QPoint(0, 0)), button->size())))
            off << button->text();
    return off;
}

QRect sliderRect(QScrollBar* bar) {
    QStyleOptionSlider option;
    option.initFrom(bar);
    option.subControls = QStyle::SC_All;
    option.orientation = bar->orientation();
    option.minimum = bar->minimum();
    option.maximum = bar->maximum();
    option.sliderPosition = bar->sliderPosition();
    option.sliderValue = bar->value();
    option.singleStep = bar->singleStep();
    option.pageStep = bar->pageStep();
    return bar->style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider,
                                        bar);
}

} // namespace

// The window under a real X server, driven with real X input (xdotool), against virtual controllers
// in 127.23.0.0/16. Qt's synthetic events take other paths than a person's keys and mouse; this is
// where the two must agree.
class TestRealInput : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QVERIFY2(QGuiApplication::platformName() == QLatin1String("xcb"),
                 "runs under an X server (xvfb-run)");
    }

    void typedKeysWheelAndBars() {
        Bench bench("127.23.0.1", 2);
        qputenv("ZEDA_HOSTS", "127.23.0.1-127.23.0.2");
        Form1& form = bench.form;
        MessageBoxAnswerer& boxes = bench.boxes;
        form.move(0, 0);
        form.show();
        form.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&form));

        click(find<QPushButton>(form, QStringLiteral("btn_sys_search")));
        QTRY_COMPARE_WITH_TIMEOUT(form.ui.cbo_ipaddr->count(), 2, 30000);
        click(form.ui.btn_con);
        QTRY_VERIFY(form.services().isConnected());
        QTRY_COMPARE(boxes.texts().count(QStringLiteral("Refresh completed !")), 2);
        bench.lines(0);
        bench.lines(1);
        boxes.clear();

        // I/O page: a typed offset goes out on Enter exactly as typed, a bad one is refused, Tab
        // commits nothing, and the wheel over a closed list that has no focus sends nothing.
        click(form.ui.opt_io);
        typeInto(form.ui.cbo_osd[0], QStringLiteral("07"), QStringLiteral("Return"));
        typeInto(form.ui.cbo_osd[0], QStringLiteral("21"), QStringLiteral("Return"));
        typeInto(form.ui.cbo_osd[0], QStringLiteral("13"), QStringLiteral("Tab"));
        moveTo(form.ui.cbo_reso, form.ui.cbo_reso->rect().center());
        xdo({"click", "--repeat", "2", "5"});
        for (int pick = 0; pick < 2;
             ++pick) { // the item read back, picked twice: a Click each time
            click(form.ui.cbo_reso);
            xdo({"key", "Return"});
        }

        click(form.ui.opt_image);
        typeInto(form.ui.cbo_image_bri[2], QStringLiteral("050"), QStringLiteral("Return"));
        typeInto(form.ui.cbo_image_con[3], QStringLiteral("34"), QStringLiteral("Tab"));

        // Wall page: rows and columns typed, the channel picked with the keyboard from the open
        // list, the position typed; Enter and Tab pick nothing.
        click(form.ui.opt_tv2);
        typeInto(form.ui.cbo_tv_row, QStringLiteral("3"), QStringLiteral("Return"));
        typeInto(form.ui.cbo_tv_col, QStringLiteral("4"), QStringLiteral("Tab"));
        click(form.ui.cbo_tv_ch);
        xdo({"key", "Down", "Return"}); // the open list starts on its first item
        typeInto(form.ui.cbo_tv_posi, QStringLiteral("7"), QStringLiteral("Tab"));
        click(form.ui.btn_panomat_send);

        // Trim page: a click on a bar's arrow, a drag of its thumb, then keys on the bar that the
        // click focused, and Tab to the next bar.
        click(form.ui.opt_tv4);
        click(form.ui.btn_posi[1]); // "Reset": every bar to zero trim
        QScrollBar* bar = form.ui.HS_A[0];
        QTRY_COMPARE(form.ui.HS_A[15]->value(), 255);
        const QStringList beforeTrims = bench.lines(0);
        clickAt(bar, QPoint(bar->width() - 4, bar->height() / 2));
        const QPoint thumb = sliderRect(bar).center();
        moveTo(bar, thumb);
        xdo({"mousedown", "1"});
        moveTo(bar, thumb + QPoint(12, 0));
        xdo({"mouseup", "1"});
        const int dragged = bar->value() - 255;
        QVERIFY2(dragged > 1, "the drag moved the thumb");
        xdo({"key", "Right"});
        xdo({"key", "End"});
        xdo({"key", "Tab", "Left"});

        QStringList pages{"SOSDH 07", "SRES 6", "SRES 6", "SBRI 2 050", "SMNC 3 4 2", "SCO 2 7"};
        for (const char* group : {"HS", "HE", "VS", "VE"}) // the trim page's "Reset"
            for (int output = 1; output <= 4; ++output)
                pages << QStringLiteral("SPC%1  %2 0").arg(QLatin1String(group)).arg(output);
        QCOMPARE(beforeTrims, pages);
        QCOMPARE(bench.lines(0),
                 (QStringList{"SPCHS  1 1", QStringLiteral("SPCHS  1 %1").arg(dragged),
                              QStringLiteral("SPCHS  1 %1").arg(dragged + 1), "SPCHS  1 255",
                              "SMCHS  2 1"}));
        QCOMPARE(boxes.texts(), QStringList{"Please type 0 ~ 20"});
        QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
        QCOMPARE(form.ui.cbo_osd[0]->currentText(),
                 QStringLiteral("13")); // as typed, kept
        QCOMPARE(bench.lines(1), QStringList());
    }

    // As the screen shows them: disabled captions can be read, and every control that
    // takes the focus looks different with it.
    void disabledTextAndFocusVisible() {
        Bench bench("127.23.1.1", 1);
        Form1& form = bench.form;
        form.move(0, 0);
        form.show();
        form.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        for (QWidget* control : QList<QWidget*>{form.ui.btn_con, form.ui.btn_ip_get,
                                                form.ui.btn_sys_refresh, form.ui.opt_mute[0]}) {
            QVERIFY(!control->isEnabled());
            const double ratio = textContrast(onScreen(control));
            QVERIFY2(
                ratio >= 3.0,
                qPrintable(
                    QStringLiteral("%1: %2:1").arg(control->objectName()).arg(ratio, 0, 'f', 2)));
        }
        bench.connect();
        auto* area = form.findChild<QScrollArea*>();
        // A real Tab puts the window in keyboard use, where styles draw the focus.
        form.ui.TextInfo->setFocus();
        xdo({"key", "Tab"});
        QStringList unmarked;
        for (int page = 0; page < PageCount; ++page) {
            form.ShowPage(page);
            for (QWidget* control : form.findChildren<QWidget*>()) {
                if (!(control->focusPolicy() & Qt::TabFocus) || !control->isVisible() ||
                    !control->isEnabled() || control->objectName().isEmpty() ||
                    control->objectName().startsWith(QLatin1String("qt_")))
                    continue;
                area->ensureWidgetVisible(control, 0, 0);
                QWidget* elsewhere = control == form.ui.TextInfo
                                         ? static_cast<QWidget*>(form.ui.cbo_ipaddr)
                                         : form.ui.TextInfo;
                elsewhere->setFocus();
                QTRY_VERIFY(!control->hasFocus());
                QTest::qWait(40);
                const QImage before = onScreen(control);
                if (!form.isActiveWindow()) {
                    form.activateWindow();
                    QVERIFY(QTest::qWaitForWindowActive(&form));
                }
                control->setFocus(Qt::TabFocusReason);
                QTRY_VERIFY2(control->hasFocus(), qPrintable(control->objectName()));
                QTest::qWait(40);
                if (onScreen(control) == before)
                    unmarked << control->objectName();
            }
        }
        QVERIFY2(unmarked.isEmpty(), qPrintable(unmarked.join(u' ')));
    }

    // At any scale the window fits the screen, and every control can be scrolled into view.
    void everyControlReachable() {
        Form1 form;
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        const QRect screen = form.screen()->availableGeometry();
        QVERIFY2(screen.contains(form.frameGeometry()),
                 qPrintable(QStringLiteral("window %1x%2 on a %3x%4 screen")
                                .arg(form.frameGeometry().width())
                                .arg(form.frameGeometry().height())
                                .arg(screen.width())
                                .arg(screen.height())));
        auto* area = form.findChild<QScrollArea*>();
        for (int page = 0; page < 6; ++page) {
            form.ShowPage(page);
            for (QWidget* control : form.findChildren<QWidget*>()) {
                if (control->objectName().isEmpty() || !control->isVisibleTo(&form) ||
                    control->objectName().startsWith(QLatin1String("qt_")))
                    continue;
                // The status bar stays in sight; everything else scrolls.
                const bool scrolled = area && area->widget()->isAncestorOf(control);
                if (scrolled)
                    area->ensureWidgetVisible(control, 0, 0);
                const QRect shown(control->mapTo(&form, QPoint(0, 0)), control->size());
                const QRect view = scrolled ? QRect(area->viewport()->mapTo(&form, QPoint(0, 0)),
                                                    area->viewport()->size())
                                            : form.rect();
                QVERIFY2(view.contains(shown.center()), qPrintable(control->objectName()));
            }
        }
        // A file dialog, and every one of its buttons, on the screen.
        QRect dialog;
        QStringList offScreen;
        driver::when(
            &form, [] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()); },
            [&] {
                auto* files = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                dialog = files->frameGeometry();
                for (QPushButton* button : files->findChildren<QPushButton*>())
                    if (button->isVisible() &&
                        !screen.contains(QRect(button->mapToGlobal(QPoint(0, 0)), button->size())))
                        offScreen << button->text();
                files->reject();
            });
        form.monitor().show();
        QTest::mouseClick(form.monitor().findChild<QPushButton*>(QStringLiteral("monitor_save")),
                          Qt::LeftButton);
        QVERIFY2(screen.contains(dialog), qPrintable(QStringLiteral("file dialog %1x%2 at %3,%4")
                                                         .arg(dialog.width())
                                                         .arg(dialog.height())
                                                         .arg(dialog.x())
                                                         .arg(dialog.y())));
        QCOMPARE(offScreen, QStringList());

        // The docked monitor takes its room beside or below the pages, not from them, and
        // shows its own controls whole.
        QVERIFY2(area->viewport()->width() >= 300,
                 qPrintable(QStringLiteral("pages %1 px wide").arg(area->viewport()->width())));
        QVERIFY(screen.contains(form.frameGeometry()));
        QCOMPARE(offScreenButtons(&form.monitor(), screen), QStringList());

        // A long wait text gives way to "Stop waiting", which stays whole.
        emit form.services().notice().hint(QString(300, u'x'));
        auto* stop = find<QPushButton>(form, QStringLiteral("btn_stop_waiting"));
        QVERIFY(form.rect().contains(QRect(stop->mapTo(&form, QPoint(0, 0)), stop->size())));
        QVERIFY(stop->width() >= stop->sizeHint().width());

        // The planner opens within the screen, its buttons and wall on it.
        form.planner().present();
        QVERIFY(QTest::qWaitForWindowExposed(&form.planner()));
        QVERIFY2(screen.contains(form.planner().frameGeometry()),
                 qPrintable(QStringLiteral("planner %1x%2")
                                .arg(form.planner().frameGeometry().width())
                                .arg(form.planner().frameGeometry().height())));
        QCOMPARE(offScreenButtons(&form.planner(), screen), QStringList());
        QVERIFY(form.planner().board()->height() >=
                form.planner().board()->minimumSizeHint().height());
    }
};

QTEST_MAIN(TestRealInput)

#include "test_realinput.moc"
