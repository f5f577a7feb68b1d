#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

// The I/O page's setters. Each uses its own addresses in 127.40.0.0/16.
class TestOutput : public QObject {
    Q_OBJECT
public:
    static void initMain() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
private slots:
    void setters_data();
    void setters();
};

namespace {

// Three controllers, the second selected and reporting model 1, the refresh done.
struct Bench {
    explicit Bench(const QString& net)
        : devices{FakeController(net + '1'), FakeController(net + '2'), FakeController(net + '3')} {
        devices[1].answerLikeController();
        devices[1].reply("RMDN", "MODN001");
        driver::listDevices(form, {net + '1', net + '2', net + '3'});
        form.ui.cbo_ipaddr->setCurrentIndex(1);
        driver::click(form.ui.btn_con);
        driver::click(form.ui.opt_io);
        received();
        boxes.clear();
    }
    // The lines each controller got since the last call, ending with a marker sent to all.
    QList<QStringList> received() {
        form.session().sendAll("MARK\r\n");
        QList<QStringList> all;
        for (FakeController& device : devices) {
            (void)QTest::qWaitFor([&] { return device.lines().contains("MARK"); });
            all << device.lines();
            device.clear();
        }
        return all;
    }

    std::array<FakeController, 3> devices;
    MessageBoxAnswerer boxes;
    Form1 form;
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

void TestOutput::setters_data() {
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

void TestOutput::setters() {
    QFETCH(QString, control);
    QFETCH(int, box);
    QFETCH(QString, action);
    QFETCH(QString, result);
    Bench bench("127.40.1.");
    const QStringList mark{"MARK"};
    const bool refused = result.startsWith("Please");
    const QStringList sent = QStringList{result, "MARK"}.mid(refused || result.isEmpty() ? 1 : 0);
    for (bool own : {true, false}) { // own box ticked: to all; every other one: selected only
        for (QCheckBox* tick : bench.form.ui.chk_io)
            tick->setChecked((tick == bench.form.ui.chk_io[box]) == own);
        act(bench.form, control, action);
        const QStringList others = own ? sent : mark;
        QCOMPARE(bench.received(), (QList<QStringList>{others, sent, others}));
    }
    QCOMPARE(bench.boxes.texts(), refused ? QStringList(2, result) : QStringList());
    if (refused)
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Warning);

    // While the page is read or reset, picks and option clicks are held back; Enter is not.
    for (quint8* busy : {&bench.form.w.wait_io, &bench.form.w.wait_osd_reset}) {
        *busy = 3;
        act(bench.form, control, action);
        *busy = 0;
        QCOMPARE(bench.received().value(1), action.endsWith(u'\r') ? sent : mark);
    }

    // With the link down the first key or the pick is refused; two settings keep the model.
    bench.boxes.clear();
    bench.devices[1].dropConnections();
    QTRY_VERIFY(!bench.form.session().linkUp());
    act(bench.form, control, action.left(1));
    QCOMPARE(bench.boxes.texts(), QStringList{"Ethernet is disconnected !"});
    QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Critical);
    const bool keepsModel = control == "cbo_info_play" || control.startsWith("opt_mute");
    QCOMPARE(bench.form.ui.cbo_model->currentIndex(), keepsModel ? 1 : -1);
    QVERIFY(!bench.form.ui.frame_control[2]->isEnabled()); // offline
}

QTEST_MAIN(TestOutput)
#include "test_output.moc"
