#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <cmath>

using driver::find;

// Each test uses its own addresses in 127.10.0.0/16.
class TestWindow : public QObject {
    Q_OBJECT
private slots:
    void startupState();
    void startupLists();
    void pageSelectors_data();
    void pageSelectors();
    void connectSendsOsdInfoAndEnables();
    void connectFailsAfterPassLimit();
    void connectWithoutSelection();
    void guardGoesOfflineWhenDeviceDrops();
    void selectionReconnectsOnlyThatDevice();
    void tenDevicesConnect();
    void textInfoShowsLatestChunkOfSelectedSocket();
    void closingEndsRunningWait();
    void colouredButtonsReadableAndSteady();
    void stopWaitingLeavesAStrandedWait_data();
    void stopWaitingLeavesAStrandedWait();
    void floodFromAnotherControllerIsNotTakenIn();

private:
    static QColor buttonColour(Form1& form, const char* name) {
        return find<QPushButton>(form, QLatin1String(name))->palette().color(QPalette::Button);
    }
};

namespace {

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

} // namespace

void TestWindow::startupState() {
    Form1 form;
    QCOMPARE(form.windowTitle(), QStringLiteral("Panomat Set v1.10"));
    QVERIFY(!form.session().isConnected());
    QVERIFY(!form.session().searchDone());
    for (const char* frame :
         {"net_config", "con_interface", "frame_control(0)", "frame_control(5)"})
        QVERIFY2(!find<QGroupBox>(form, QLatin1String(frame))->isEnabled(), frame);
    QVERIFY(find<QGroupBox>(form, QStringLiteral("sys_setting"))->isEnabled());
    for (const char* control : {"power_ctl(0)", "btn_sys_fac_rst", "btn_sys_refresh"})
        QVERIFY2(!find<QWidget>(form, QLatin1String(control))->isEnabled(), control);
    QVERIFY(!find<QCheckBox>(form, QStringLiteral("Check1(0)"))->isEnabled());
    QVERIFY(!find<QCheckBox>(form, QStringLiteral("Check1(1)"))->isEnabled());
    QVERIFY(!find<QPushButton>(form, QStringLiteral("power_ctl(0)"))->isHidden());
    QVERIFY(find<QPushButton>(form, QStringLiteral("power_ctl(1)"))->isHidden());
    QVERIFY(find<QPushButton>(form, QStringLiteral("power_ctl(2)"))->isHidden());
    QVERIFY(find<QLabel>(form, QStringLiteral("lbl_con(2)"))->isHidden());
    QVERIFY(find<QProgressBar>(form, QStringLiteral("ProgressBar1"))->isHidden());
    QCOMPARE(buttonColour(form, "btn_discon"), QColor(255, 0, 0));
    QCOMPARE(find<QScrollBar>(form, QStringLiteral("HS_A(15)"))->maximum(), 510);
    QCOMPARE(find<QScrollBar>(form, QStringLiteral("HS_A(15)"))->value(), 0);
    QCOMPARE(find<QLabel>(form, QStringLiteral("value_posi(3)"))->text(), QStringLiteral("Value"));
}

void TestWindow::startupLists() {
    Form1 form;
    struct Expected {
        const char* name;
        int count;
        const char* first;
        const char* last;
        const char* text; // shown before anything is chosen
    };
    const Expected lists[] = {
        {"cbo_val_H(1)", 256, " 0", " 255", ""},        {"cbo_val_V(4)", 256, " 0", " 255", ""},
        {"cbo_tv_row", 15, " 1", " 15", "1~15"},        {"cbo_tv_posi", 0, "", "", "1~MxN"},
        {"cbo_tv_ch", 4, "Out A", "Out D", ""},         {"cbo_ip_type", 2, "DHCP", "STATIC", ""},
        {"cbo_info_play", 2, "OFF", "ON", ""},          {"cbo_reso", 17, "720p50", "Native", ""},
        {"cbo_image_hue(4)", 101, "0", "100", "0~100"}, {"cbo_osd(1)", 21, "0", "20", "0~20"},
        {"cbo_osd_gain", 11, "0", "10", "0~10"},        {"cbo_osd_time", 49, "2", "50", ""}};
    for (const Expected& e : lists) {
        auto* box = find<QComboBox>(form, QLatin1String(e.name));
        QCOMPARE(box->count(), e.count);
        QCOMPARE(box->itemText(0), QLatin1String(e.first));
        QCOMPARE(box->itemText(box->count() - 1), QLatin1String(e.last));
        QCOMPARE(box->currentIndex(), -1);
        QCOMPARE(box->currentText(), QLatin1String(e.text));
    }
    QCOMPARE(find<QComboBox>(form, QStringLiteral("cbo_reso"))->itemText(6),
             QStringLiteral("1080p60"));
    QCOMPARE(find<QPushButton>(form, QStringLiteral("btn_tv_fs(23)"))->text(),
             QStringLiteral("6x3"));
    QCOMPARE(find<QPushButton>(form, QStringLiteral("btn_recall(5)"))->text(),
             QStringLiteral("FAV 5"));
}

void TestWindow::pageSelectors_data() {
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<int>("page");
    QTest::newRow("opt_tv1") << "opt_tv1"
                             << "Panomat (1)" << 0;
    QTest::newRow("opt_tv2") << "opt_tv2"
                             << "Panomat (2)" << 1;
    QTest::newRow("opt_io") << "opt_io"
                            << "I/O Setup" << 2;
    QTest::newRow("opt_image") << "opt_image"
                               << "Image Adjust" << 3;
    QTest::newRow("opt_tv3 is captioned (4)") << "opt_tv3"
                                              << "Panomat (4)" << 4;
    QTest::newRow("opt_tv4 is captioned (3)") << "opt_tv4"
                                              << "Panomat (3)" << 5;
}

void TestWindow::pageSelectors() {
    QFETCH(QString, selector);
    QFETCH(QString, caption);
    QFETCH(int, page);
    Form1 form;
    form.show();
    auto* option = find<QRadioButton>(form, selector);
    QCOMPARE(option->text(), caption);
    driver::click(option);
    for (int i = 0; i < 6; ++i) {
        auto* frame = find<QGroupBox>(form, QStringLiteral("frame_control(%1)").arg(i));
        QCOMPARE(frame->isVisible(), i == page);
        QVERIFY(!frame->isEnabled()); // shown but not usable while not connected
    }
    QCOMPARE(find<QGroupBox>(form, QStringLiteral("frame_control(%1)").arg(page))->pos(),
             QPoint(128, 208));
}

void TestWindow::connectSendsOsdInfoAndEnables() {
    FakeController device(QStringLiteral("127.10.1.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {device.address()});
    QTRY_VERIFY(device.received().startsWith("SOSDI\r\n"));
    QVERIFY(form.session().isConnected());
    QCOMPARE(buttonColour(form, "btn_con"), QColor(0, 255, 0));
    QVERIFY(buttonColour(form, "btn_discon") != QColor(255, 0, 0));
    for (const char* control :
         {"net_config", "frame_control(0)", "frame_control(5)", "power_ctl(0)", "btn_sys_fac_rst",
          "btn_sys_refresh", "Check1(0)", "Check1(1)"})
        QVERIFY2(find<QWidget>(form, QLatin1String(control))->isEnabled(), control);
    QVERIFY(find<QLabel>(form, QStringLiteral("lbl_con(2)"))->isHidden());

    driver::click(find<QPushButton>(form, QStringLiteral("btn_discon")));
    QVERIFY(!form.session().isConnected());
    QTRY_COMPARE(device.connectionCount(), 0);
    QCOMPARE(buttonColour(form, "btn_discon"), QColor(255, 0, 0));
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("frame_control(1)"))->isEnabled());
}

void TestWindow::connectFailsAfterPassLimit() {
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {QStringLiteral("127.10.2.1")}); // nothing listens there
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Connected error!")});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
    QCOMPARE(boxes.seen().first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(!form.session().isConnected());
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("frame_control(0)"))->isEnabled());
    QVERIFY(find<QLabel>(form, QStringLiteral("lbl_con(2)"))->isHidden());
}

void TestWindow::connectWithoutSelection() {
    FakeController device(QStringLiteral("127.10.3.1"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {device.address()});
    form.ui.cbo_ipaddr->setCurrentIndex(-1);
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Please select a MAC to connect !")});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
    QVERIFY(find<QLabel>(form, QStringLiteral("lbl_con(2)"))->isHidden());
    QVERIFY(!form.session().isConnected());
    QTRY_COMPARE(device.acceptedCount(), 1); // every listed device is connected all the same
}

void TestWindow::guardGoesOfflineWhenDeviceDrops() {
    FakeController device(QStringLiteral("127.10.4.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {device.address()});
    boxes.clear();
    device.dropConnections();
    QTRY_VERIFY(!form.session().linkUp());
    QVERIFY(!form.session().guard());
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Ethernet is disconnected !")});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Critical);
    QVERIFY(!form.session().isConnected());
    QVERIFY(!find<QGroupBox>(form, QStringLiteral("net_config"))->isEnabled());
}

void TestWindow::selectionReconnectsOnlyThatDevice() {
    FakeController first(QStringLiteral("127.10.5.1"));
    FakeController second(QStringLiteral("127.10.5.2"));
    first.answerLikeController();
    second.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {first.address(), second.address()});
    QTRY_COMPARE(second.acceptedCount(), 1);
    QVERIFY(second.received().isEmpty());
    driver::pick(form.ui.cbo_ipaddr, 1);
    QCOMPARE(second.acceptedCount(), 2);
    QTRY_VERIFY(second.received().startsWith("SOSDI\r\n"));
    QCOMPARE(first.acceptedCount(), 1);
    QVERIFY(form.session().isConnected());
}

void TestWindow::tenDevicesConnect() {
    std::vector<std::unique_ptr<FakeController>> devices;
    QStringList addresses;
    for (int i = 1; i <= 10; ++i) {
        devices.push_back(std::make_unique<FakeController>(QStringLiteral("127.10.7.%1").arg(i)));
        devices.back()->answerLikeController();
        addresses << devices.back()->address();
    }
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, addresses);
    for (auto& device : devices)
        QTRY_COMPARE(device->acceptedCount(), 1);
    // A broadcast reaches every listed socket; one that is down is passed over silently.
    devices[4]->stopListening();
    QTRY_VERIFY(!form.session().link().isConnected(4));
    boxes.clear();
    form.session().sendAll("SFAVE 2\r\n");
    for (int i = 0; i < 10; ++i)
        QTRY_COMPARE(devices[i]->lines().contains(QStringLiteral("SFAVE 2")), i != 4);
    QVERIFY(boxes.texts().isEmpty());
    driver::pick(form.ui.cbo_ipaddr, 9);
    QTRY_VERIFY(devices[9]->lines().contains(QStringLiteral("SOSDI")));
}

void TestWindow::textInfoShowsLatestChunkOfSelectedSocket() {
    FakeController selected(QStringLiteral("127.10.8.1"));
    FakeController other(QStringLiteral("127.10.8.2"));
    selected.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {selected.address(), other.address()});
    QTRY_COMPARE(other.connectionCount(), 1);
    auto* info = find<QLineEdit>(form, QStringLiteral("TextInfo"));

    selected.push("POWE001\r\n");
    QTRY_COMPARE(info->text(), QStringLiteral("POWE001\r\n"));
    selected.push("MODN002\r\n");
    QTRY_COMPARE(info->text(), QStringLiteral("MODN002\r\n"));
    // Data on another socket makes the selected one be read: nothing is there.
    other.push("BYPA001\r\n");
    QTRY_COMPARE(info->text(), QString());
}

void TestWindow::closingEndsRunningWait() {
    Form1 form;
    form.show();
    bool closedDuringWait = false;
    bool result = true;
    QTimer::singleShot(0, &form, [&] {
        QTimer::singleShot(50, &form, [&] {
            closedDuringWait = true;
            form.close();
        });
        result = form.session().pump().until([] { return false; }); // no reply ever comes
    });
    QTRY_VERIFY(closedDuringWait);
    QVERIFY(!result);
    QVERIFY(form.session().pump().cancelled());
}

// The green and red buttons keep their colours and readable text, enabled or not (the
// disabled red "Disconnect" at start-up, the disabled green "Power ON" during a refresh),
// and the system buttons stay put when the progress bar appears.
void TestWindow::colouredButtonsReadableAndSteady() {
    Form1 form;
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    for (const char* name : {"btn_discon", "power_ctl(1)", "power_ctl(2)"}) {
        auto* button = find<QPushButton>(form, QLatin1String(name));
        for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Disabled}) {
            const QPalette& palette = button->palette();
            const double ratio = contrast(palette.color(group, QPalette::ButtonText),
                                          palette.color(group, QPalette::Button));
            QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("%1: %2:1").arg(name).arg(ratio)));
        }
    }
    auto* search = find<QPushButton>(form, QStringLiteral("btn_sys_search"));
    const QPoint before = search->mapTo(&form, QPoint(0, 0));
    find<QProgressBar>(form, QStringLiteral("ProgressBar1"))->setVisible(true);
    QTest::qWait(20);
    QCOMPARE(search->mapTo(&form, QPoint(0, 0)), before);
}

void TestWindow::stopWaitingLeavesAStrandedWait_data() {
    QTest::addColumn<bool>("escape");     // else the status bar's button
    QTest::addColumn<bool>("secondRead"); // bezel Refresh pressed again while the first waits
    QTest::newRow("button, dropped mid-refresh") << false << false;
    QTest::newRow("Escape, dropped mid-refresh") << true << false;
    QTest::newRow("button, two bezel reads") << false << true;
}

// A read whose controller went away waits for ever with the panels locked; "Stop
// waiting" ends it (and a read started on top of it) without sending or showing anything
// more, unlocks the panels and goes offline. Connecting again then works as before.
void TestWindow::stopWaitingLeavesAStrandedWait() {
    QFETCH(bool, escape);
    QFETCH(bool, secondRead);
    FakeController device(QStringLiteral("127.10.9.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    form.show();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    auto* stop = find<QPushButton>(form, QStringLiteral("btn_stop_waiting"));
    QVERIFY(!stop->isEnabled());
    driver::connectTo(form, {device.address()});
    auto* bezelRefresh = find<QPushButton>(form, QStringLiteral("btn_panomat_refresh"));
    driver::click(form.ui.opt_tv2);
    // The refresh stalls at the status read's "RBEZ", the bezel read at "RCBV 1".
    const QString stall = secondRead ? QStringLiteral("RCBV 1") : QStringLiteral("RBEZ");
    device.silence(stall.left(4));
    boxes.clear();
    device.clear();

    int sentWhenStopped = -1;
    driver::when(
        &form, [&] { return device.lines().contains(stall); },
        [&] {
            if (secondRead) {
                device.clear();
                driver::when(
                    &form, [&] { return device.lines().contains(stall); },
                    [&] {
                        sentWhenStopped = int(device.lines().size());
                        driver::click(stop);
                    });
                driver::click(bezelRefresh); // the first read's wait goes on meanwhile
                return;
            }
            device.dropConnections();
            driver::when(
                &form, [&] { return !form.session().linkUp(); },
                [&] {
                    QVERIFY(!stop->parentWidget()->isHidden() && stop->isEnabled());
                    QVERIFY(!form.ui.sys_setting->isEnabled()); // locked, Disconnect too
                    sentWhenStopped = int(device.lines().size());
                    if (escape) { // through the window, where shortcuts are matched
                        form.activateWindow();
                        QVERIFY(
                            QTest::qWaitFor([&] { return QApplication::activeWindow() == &form; }));
                        QTest::keyClick(form.windowHandle(), Qt::Key_Escape);
                    } else {
                        driver::click(stop);
                    }
                });
        });
    if (secondRead)
        driver::click(bezelRefresh);
    else
        driver::click(form.ui.btn_sys_refresh);
    QTest::qWait(50);
    QCOMPARE(int(device.lines().size()), sentWhenStopped);
    QCOMPARE(boxes.texts(), QStringList());
    QVERIFY(!stop->isEnabled());
    QVERIFY(!form.ui.ProgressBar1->isVisible());
    QVERIFY(form.ui.con_interface->isEnabled() && form.ui.sys_setting->isEnabled());
    QVERIFY(form.ui.btn_sys_search->isEnabled());
    QVERIFY(!form.ui.frame_control[1]->isEnabled() && !form.session().isConnected()); // offline

    device.speak(stall.left(4));
    driver::click(form.ui.btn_con);
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Refresh completed !")});
    QVERIFY(form.ui.frame_control[1]->isEnabled() && form.ui.btn_panomat_refresh->isEnabled());
}

// A listed controller that is not selected is never read; whatever it sends must not
// pile up in the window. The flood is written as fast as the connection takes it.
void TestWindow::floodFromAnotherControllerIsNotTakenIn() {
    constexpr qint64 Chunk = 256 * 1024, Flood = 64 * 1024 * 1024;
    FakeController selected(QStringLiteral("127.10.10.1"));
    selected.answerLikeController();
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
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {selected.address(), QStringLiteral("127.10.10.2")});
    QVERIFY(QTest::qWaitFor([&] { return victim != nullptr; }));
    qint64 taken = -1;
    for (int still = 0; still < 10 && written < Flood; QTest::qWait(50)) { // settled
        const qint64 now = written - victim->bytesToWrite();
        still = now == taken ? still + 1 : 0;
        taken = now;
    }
    QVERIFY2(taken < 16 * 1024 * 1024, qPrintable(QStringLiteral("%1 bytes taken").arg(taken)));
    QVERIFY(form.session().linkUp());
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_window.moc"
