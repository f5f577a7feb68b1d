#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using driver::find;

// The I/O page's setters. Each test uses its own address in 127.40.0.0/16.
class TestOutput : public QObject {
    Q_OBJECT
private slots:
    void setters_data();
    void setters();
    void allIpBoxes_data();
    void allIpBoxes();
    void readAndResetSendNoSetting();
    void picksSilentWhileBusy_data();
    void picksSilentWhileBusy();
    void linkDown_data();
    void linkDown();
};

namespace {

// An action on the page: option buttons are clicked, a text is typed and entered,
// otherwise the list item is picked.
void act(Form1& form, const QString& control, int item, const QString& typed) {
    if (auto* option = form.findChild<QRadioButton*>(control))
        driver::click(option);
    else if (!typed.isNull())
        driver::type(find<QComboBox>(form, control), typed, true);
    else
        driver::pick(find<QComboBox>(form, control), item);
}

// Connects and shows the I/O page as the operator sees it.
void connectAndShowPage(Form1& form, const QStringList& addresses) {
    driver::connectTo(form, addresses);
    form.show();
    driver::click(form.ui.opt_io);
}

// Every line the controller got up to a marker sent after the action: whatever the
// action sent has arrived by then.
QStringList linesUpToMarker(Form1& form, FakeController& device) {
    form.send("MARK\r\n");
    if (!QTest::qWaitFor([&] { return device.lines().contains(QStringLiteral("MARK")); }))
        return {QStringLiteral("marker lost")};
    QStringList lines = device.lines();
    lines.removeAll(QStringLiteral("MARK"));
    return lines;
}

} // namespace

void TestOutput::setters_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("sent");    // empty: nothing
    QTest::addColumn<QString>("message"); // empty: none
    const QString none;
    QTest::newRow("Native") << "cbo_reso" << 16 << none << "SRES 16" << none;
    QTest::newRow("OSD display ON") << "cbo_info_play" << 1 << none << "SOSDD 1" << none;
    QTest::newRow("H offset pick") << "cbo_osd(0)" << 20 << none << "SOSDH 20" << none;
    QTest::newRow("V offset pick") << "cbo_osd(1)" << 3 << none << "SOSDV 3" << none;
    QTest::newRow("timeout 2") << "cbo_osd_time" << 0 << none << "SOSDT 2" << none;
    QTest::newRow("timeout 50") << "cbo_osd_time" << 48 << none << "SOSDT 50" << none;
    QTest::newRow("gain pick") << "cbo_osd_gain" << 7 << none << "SOSDG 7" << none;
    QTest::newRow("mute ON") << "opt_mute(1)" << 0 << none << "SMUTE 1" << none;
    QTest::newRow("V typed as is") << "cbo_osd(1)" << 0 << "07"
                                   << "SOSDV 07" << none;
    QTest::newRow("H loose upper") << "cbo_osd(0)" << 0 << "20.9"
                                   << "SOSDH 20.9" << none;
    QTest::newRow("H loose lower") << "cbo_osd(0)" << 0 << "-0.5"
                                   << "SOSDH -0.5" << none;
    QTest::newRow("H blanks kept") << "cbo_osd(0)" << 0 << " 4 "
                                   << "SOSDH  4 " << none;
    QTest::newRow("V 21") << "cbo_osd(1)" << 0 << "21" << none << "Please type 0 ~ 20";
    QTest::newRow("V abc") << "cbo_osd(1)" << 0 << "abc" << none << "Please type 0 ~ 20";
    QTest::newRow("gain 10") << "cbo_osd_gain" << 0 << "10"
                             << "SOSDG 10" << none;
    QTest::newRow("gain 11") << "cbo_osd_gain" << 0 << "11" << none << "Please type 0 ~ 10";
}

void TestOutput::setters() {
    QFETCH(QString, control);
    QFETCH(int, item);
    QFETCH(QString, typed);
    QFETCH(QString, sent);
    QFETCH(QString, message);
    FakeController device(QStringLiteral("127.40.1.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAndShowPage(form, {device.address()});
    boxes.clear();
    device.clear();

    act(form, control, item, typed);
    QCOMPARE(linesUpToMarker(form, device), sent.isEmpty() ? QStringList() : QStringList{sent});
    QCOMPARE(boxes.texts(), message.isEmpty() ? QStringList() : QStringList{message});
    if (!message.isEmpty()) {
        QCOMPARE(boxes.seen().first().icon, QMessageBox::Warning);
        QCOMPARE(find<QComboBox>(form, control)->currentText(), typed); // left as typed
    }

    // Keys other than Enter send nothing.
    if (!typed.isNull()) {
        device.clear();
        driver::type(find<QComboBox>(form, control), QStringLiteral("5"), false);
        QCOMPARE(linesUpToMarker(form, device), QStringList());
    }
}

void TestOutput::allIpBoxes_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("box");
    QTest::addColumn<bool>("everyDevice");
    QTest::addColumn<QString>("sent");
    const QString none;
    QTest::newRow("reso, own box") << "cbo_reso" << 2 << none << 0 << true << "SRES 2";
    QTest::newRow("reso, mute's box") << "cbo_reso" << 2 << none << 6 << false << "SRES 2";
    QTest::newRow("OSD display") << "cbo_info_play" << 0 << none << 1 << true << "SOSDD 0";
    QTest::newRow("H offset") << "cbo_osd(0)" << 9 << none << 2 << true << "SOSDH 9";
    QTest::newRow("H offset, V's box") << "cbo_osd(0)" << 9 << none << 3 << false << "SOSDH 9";
    QTest::newRow("V offset typed") << "cbo_osd(1)" << 0 << "12" << 3 << true << "SOSDV 12";
    QTest::newRow("timeout") << "cbo_osd_time" << 8 << none << 4 << true << "SOSDT 10";
    QTest::newRow("gain typed") << "cbo_osd_gain" << 0 << "3" << 5 << true << "SOSDG 3";
    QTest::newRow("mute") << "opt_mute(1)" << 0 << none << 6 << true << "SMUTE 1";
}

void TestOutput::allIpBoxes() {
    QFETCH(QString, control);
    QFETCH(int, item);
    QFETCH(QString, typed);
    QFETCH(int, box);
    QFETCH(bool, everyDevice);
    QFETCH(QString, sent);
    FakeController first(QStringLiteral("127.40.2.1"));
    FakeController second(QStringLiteral("127.40.2.2"));
    FakeController third(QStringLiteral("127.40.2.3"));
    for (FakeController* device : {&first, &second, &third})
        device->answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAndShowPage(form, {first.address(), second.address(), third.address()});
    driver::pick(form.ui.cbo_ipaddr, 1); // the second is the selected one
    QTRY_COMPARE(third.connectionCount(), 1);
    for (FakeController* device : {&first, &second, &third})
        device->clear();
    find<QCheckBox>(form, QStringLiteral("chk_io(%1)").arg(box))->setChecked(true);

    act(form, control, item, typed);
    form.sendAll("MARK\r\n");
    for (FakeController* device : {&first, &second, &third})
        QTRY_VERIFY(device->lines().contains(QStringLiteral("MARK")));
    const QStringList all{sent, QStringLiteral("MARK")};
    const QStringList markOnly{QStringLiteral("MARK")};
    QCOMPARE(second.lines(), all);
    QCOMPARE(first.lines(), everyDevice ? all : markOnly);
    QCOMPARE(third.lines(), everyDevice ? all : markOnly);
}

// A read or a reset fills the page and raises every control's Click: none of them may
// send the value back.
void TestOutput::readAndResetSendNoSetting() {
    FakeController device(QStringLiteral("127.40.3.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RRES"), QStringLiteral("RESO016"));
    device.reply(QStringLiteral("RMUTE"), QStringLiteral("MUTE001"));
    device.reply(QStringLiteral("SOSDR"), QStringLiteral("OSDR"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {device.address()});
    QCOMPARE(form.ui.cbo_reso->currentIndex(), 16);
    QVERIFY(form.ui.opt_mute[1]->isChecked());
    driver::click(form.ui.btn_io_rst[1]); // "Reset", answered Yes
    QCOMPARE(form.ui.cbo_reso->currentIndex(), 6);
    QVERIFY(form.ui.opt_mute[0]->isChecked());
    const QStringList lines = linesUpToMarker(form, device);
    QVERIFY(lines.contains(QStringLiteral("RMUTE")));
    QVERIFY(lines.contains(QStringLiteral("SOSDR")));
    for (const QString& line : lines)
        QVERIFY2(line.startsWith(u'R') || line == QLatin1String("SOSDI") ||
                     line == QLatin1String("SOSDR"),
                 qPrintable(line));
}

void TestOutput::picksSilentWhileBusy_data() {
    QTest::addColumn<bool>("reading"); // else an OSD reset is running
    QTest::newRow("read") << true;
    QTest::newRow("OSD reset") << false;
}

// Only picks and option clicks are held back; what is typed and entered goes out.
void TestOutput::picksSilentWhileBusy() {
    QFETCH(bool, reading);
    FakeController device(QStringLiteral("127.40.4.1"));
    device.answerLikeController();
    MessageBoxAnswerer boxes;
    Form1 form;
    connectAndShowPage(form, {device.address()});
    boxes.clear();
    device.clear();
    (reading ? form.w.wait_io : form.w.wait_osd_reset) = 3;

    driver::pick(form.ui.cbo_reso, 1);
    driver::pick(form.ui.cbo_info_play, 1);
    driver::pick(form.ui.cbo_osd[0], 1);
    driver::pick(form.ui.cbo_osd_time, 1);
    driver::pick(form.ui.cbo_osd_gain, 1);
    driver::click(form.ui.opt_mute[1]);
    driver::type(form.ui.cbo_osd[1], QStringLiteral("6"), true);
    driver::type(form.ui.cbo_osd_gain, QStringLiteral("4"), true);
    QCOMPARE(linesUpToMarker(form, device),
             (QStringList{QStringLiteral("SOSDV 6"), QStringLiteral("SOSDG 4")}));
    QCOMPARE(boxes.texts(), QStringList());
}

void TestOutput::linkDown_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<int>("key"); // 0: a pick or click
    QTest::addColumn<bool>("clearsModel");
    QTest::newRow("reso") << "cbo_reso" << 0 << true;
    QTest::newRow("OSD display") << "cbo_info_play" << 0 << false;
    QTest::newRow("V offset") << "cbo_osd(1)" << 0 << true;
    QTest::newRow("timeout") << "cbo_osd_time" << 0 << true;
    QTest::newRow("gain") << "cbo_osd_gain" << 0 << true;
    QTest::newRow("mute") << "opt_mute(1)" << 0 << false;
    QTest::newRow("H offset, Enter") << "cbo_osd(0)" << int(Qt::Key_Return) << true;
    QTest::newRow("gain, any key") << "cbo_osd_gain" << int(Qt::Key_A) << true;
}

void TestOutput::linkDown() {
    QFETCH(QString, control);
    QFETCH(int, key);
    QFETCH(bool, clearsModel);
    FakeController device(QStringLiteral("127.40.5.1"));
    device.answerLikeController();
    device.reply(QStringLiteral("RMDN"), QStringLiteral("MODN001"));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::listDevices(form, {device.address(), QStringLiteral("127.40.5.2")});
    driver::click(form.ui.btn_con);
    form.show();
    driver::click(form.ui.opt_io);
    QCOMPARE(form.ui.cbo_model->currentIndex(), 1);
    boxes.clear();
    device.dropConnections();
    QTRY_VERIFY(!form.linkUp());

    if (key)
        QTest::keyClick(find<QComboBox>(form, control)->lineEdit(), Qt::Key(key));
    else
        act(form, control, 2, QString());
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Ethernet is disconnected !")});
    QCOMPARE(boxes.seen().first().icon, QMessageBox::Critical);
    QCOMPARE(form.ui.cbo_model->currentIndex(), clearsModel ? -1 : 1);
    QVERIFY(!form.ui.frame_control[2]->isEnabled()); // offline
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestOutput test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_output.moc"
