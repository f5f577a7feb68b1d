#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"
#include "virtualcontroller.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTest>

// Each test function uses its own address in 127.31.0.0/16.
namespace {

// One connected controller, the trim page shown, the refresh's traffic forgotten.
struct Trims {
    explicit Trims(int subnet) : device(QStringLiteral("127.31.%1.1").arg(subnet)) {
        device.answerLikeController();
        form.show();
        driver::connectTo(form, {device.address()});
        driver::click(driver::find<QRadioButton>(form, QStringLiteral("opt_tv4")));
        device.clear();
        boxes.clear();
    }
    QScrollBar* bar(int i) { return form.ui.HS_A[i]; }
    QString label(int i) { return form.ui.value_posi[i]->text(); }
    QPushButton* button(int i) { return form.ui.btn_posi[i]; }

    FakeController device;
    MessageBoxAnswerer boxes;
    Form1 form;
};

// Sends the chunks one at a time, each once the window has read the one before (loopback
// would join small writes), calling before() ahead of each. Runs within the read's wait.
void feed(Trims& trims, QList<QByteArray> chunks, std::function<void()> before) {
    auto* timer = new QTimer(&trims.form);
    QObject::connect(timer, &QTimer::timeout, timer, [=, &trims, next = 0]() mutable {
        if (next > 0 && trims.form.ui.TextInfo->text().toLatin1() != chunks[next - 1])
            return;
        if (next == chunks.size())
            return timer->stop();
        before();
        trims.device.push(chunks[next++]);
    });
    timer->start(5);
}

const char* const Reads[] = {"RCHS", "RCHE", "RCVS", "RCVE"};
const char* const Groups[] = {"CHSC", "CHEC", "CVSC", "CVEC"};
const char* const PlusKeys[] = {"PHSV", "PHEV", "PVSV", "PVEV"};

} // namespace

class TestTrim : public QObject {
    Q_OBJECT
private slots:
    void barChangeSends_data();
    void barChangeSends();
    void dragShowsAndSendsOnRelease();
    void resetMovesOnlyBarsOffZero();
    void readFillsBarsAndSendsNothing();
    void readWaitsForFittingReply();
    void disconnected_data();
    void disconnected();
    void withVirtualController();
};

void TestTrim::barChangeSends_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("bytes"); // two blanks after the keyword
    QTest::newRow("H end B") << 5 << 300 << "+45" << QByteArray("SPCHE  2 45\r\n");
    QTest::newRow("V end A") << 12 << 0 << "-255" << QByteArray("SMCVE  1 255\r\n");
    QTest::newRow("H start B") << 1 << 200 << "-55" << QByteArray("SMCHS  2 55\r\n");
    QTest::newRow("V start C") << 10 << 510 << "+255" << QByteArray("SPCVS  3 255\r\n");
    QTest::newRow("zero trim") << 3 << 255 << "+0" << QByteArray("SPCHS  4 0\r\n");
    QTest::newRow("V start D") << 11 << 254 << "-1" << QByteArray("SMCVS  4 1\r\n");
}

void TestTrim::barChangeSends() {
    QFETCH(int, index);
    QFETCH(int, position);
    QFETCH(QString, label);
    QFETCH(QByteArray, bytes);
    Trims trims(1);
    {
        const QSignalBlocker quiet(trims.bar(index)); // away from the target, unsent
        trims.bar(index)->setValue((position + 1) % 511);
    }
    trims.bar(index)->setValue(position);
    QCOMPARE(trims.label(index), label);
    QTRY_COMPARE(trims.device.received(), bytes);
}

void TestTrim::dragShowsAndSendsOnRelease() {
    Trims trims(2);
    QScrollBar* bar = trims.bar(4);
    // A click in the trough or on an arrow moves by one and sends at once.
    bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    QTRY_COMPARE(trims.device.lines(),
                 (QStringList{QStringLiteral("SMCHE  1 254"), QStringLiteral("SMCHE  1 253")}));
    trims.device.clear();
    // Dragging the thumb shows each position and sends only where it is let go.
    bar->setSliderDown(true);
    bar->setSliderPosition(100);
    QCOMPARE(trims.label(4), QStringLiteral("-155"));
    bar->setSliderPosition(400);
    QCOMPARE(trims.label(4), QStringLiteral("+145"));
    QTest::qWait(30);
    QVERIFY(trims.device.lines().isEmpty());
    bar->setSliderDown(false);
    QTRY_COMPARE(trims.device.lines(), QStringList{QStringLiteral("SPCHE  1 145")});
}

void TestTrim::resetMovesOnlyBarsOffZero() {
    Trims trims(3);
    for (QScrollBar* bar : trims.form.ui.HS_A)
        bar->setValue(255);
    trims.bar(14)->setValue(0);
    trims.bar(2)->setValue(300);
    trims.bar(9)->setValue(254);
    QTRY_COMPARE(trims.device.lines().size(), 19);
    trims.device.clear();
    driver::click(trims.button(1));
    QTRY_COMPARE(trims.device.lines(),
                 (QStringList{QStringLiteral("SPCHS  3 0"), QStringLiteral("SPCVS  2 0"),
                              QStringLiteral("SPCVE  3 0")}));
    QCOMPARE(trims.label(14), QStringLiteral("+0"));
    trims.device.clear();
    driver::click(trims.button(1));
    QTest::qWait(30);
    QVERIFY(trims.device.lines().isEmpty());
}

void TestTrim::readFillsBarsAndSendsNothing() {
    Trims trims(4);
    // Output n of group g answers n * 10 + g, plus on odd outputs; characters 5-7 are noise.
    QList<int> progress;
    bool locked = true;
    for (int g = 0; g < 4; ++g) {
        trims.device.reply(QLatin1String(Reads[g]), [&, g](const QString& line) {
            progress << trims.form.ui.ProgressBar1->value();
            locked = locked && !trims.button(0)->isEnabled() && !trims.button(1)->isEnabled() &&
                     trims.form.ui.ProgressBar1->isVisible();
            const int n = line.right(1).toInt();
            return QStringLiteral("%1xyz%2%3")
                .arg(QLatin1String(Groups[g]),
                     n % 2 ? QLatin1String(PlusKeys[g]) : QLatin1String("MINU"))
                .arg(n * 10 + g, 3, 10, QLatin1Char('0'))
                .toLatin1();
        });
    }
    driver::click(trims.button(0));
    QStringList expected;
    for (const char* read : Reads)
        for (int n = 1; n <= 4; ++n)
            expected << QStringLiteral("%1 %2").arg(QLatin1String(read)).arg(n);
    QCOMPARE(trims.device.lines(), expected); // bars moved by the read sent nothing
    QVERIFY(locked);
    QCOMPARE(progress, (QList<int>{0, 0, 0, 0, 25, 25, 25, 25, 50, 50, 50, 50, 75, 75, 75, 75}));
    for (int i = 0; i < 16; ++i) {
        const int m = (i % 4 + 1) * 10 + i / 4;
        QCOMPARE(trims.bar(i)->value(), i % 2 ? 255 - m : 255 + m);
        QCOMPARE(trims.label(i), (i % 2 ? u'-' : u'+') + QString::number(m));
    }
    QTest::qWait(30);
    QCOMPARE(trims.device.lines().size(), 16);
    QCOMPARE(trims.form.w.wait_posi, quint8(0));
    QVERIFY(trims.button(0)->isEnabled() && trims.button(1)->isEnabled());
    QVERIFY(trims.form.ui.ProgressBar1->isHidden());
    QVERIFY(trims.boxes.texts().isEmpty());
}

// At step 5 the replies come one chunk at a time; only the fitting one advances it.
void TestTrim::readWaitsForFittingReply() {
    Trims trims(5);
    for (int g = 0; g < 4; ++g)
        trims.device.reply(QLatin1String(Reads[g]),
                           QLatin1String(Groups[g]) + QStringLiteral("000") + PlusKeys[g] + "003");
    QList<int> steps;
    trims.device.reply(QStringLiteral("RCHE"), [&](const QString& line) {
        if (line != QLatin1String("RCHE 1"))
            return QByteArray("CHEC000PHEV000");
        feed(trims,
             {
                 "CHSC001PHSV012\r\n", // the wrong group for step 5
                 "CHECxyzPHEV300\r\n", // 555 is past the bar's end
                 "CHECxyzMHEV256\r\n", // -1 is before its start
                 "CHECxyzPHEV 10\r\n", // fits; the magnitude skips blanks
             },
             [&] { steps << trims.form.w.wait_posi; }); // where the chunk before left it
        return QByteArray();
    });
    driver::click(trims.button(0));
    QCOMPARE(steps, (QList<int>{5, 5, 5, 5}));
    QCOMPARE(trims.bar(4)->value(), 265);
    QCOMPARE(trims.label(4), QStringLiteral("+10"));
    QCOMPARE(trims.bar(3)->value(), 258);
    QCOMPARE(trims.device.lines().size(), 16);
}

void TestTrim::disconnected_data() {
    QTest::addColumn<int>("action");
    QTest::newRow("bar change") << 0;
    QTest::newRow("drag") << 1;
    QTest::newRow("Refresh") << 2;
    QTest::newRow("Reset") << 3;
}

void TestTrim::disconnected() {
    QFETCH(int, action);
    Trims trims(6);
    trims.device.dropConnections();
    QTRY_VERIFY(!trims.form.linkUp());
    switch (action) {
    case 0:
        trims.bar(0)->setValue(100);
        break;
    case 1:
        trims.bar(0)->setSliderDown(true);
        trims.bar(0)->setSliderPosition(100);
        break;
    default:
        driver::click(trims.button(action - 2));
    }
    // Going offline also ends a drag, whose Change then finds the link down as well.
    QVERIFY(!trims.boxes.texts().isEmpty());
    QCOMPARE(trims.boxes.texts().first(), QStringLiteral("Ethernet is disconnected !"));
    QCOMPARE(trims.boxes.seen().first().icon, QMessageBox::Critical);
    QVERIFY(!trims.form.is_connected);
    QCOMPARE(trims.form.w.wait_posi, quint8(0));
    QVERIFY(trims.device.lines().isEmpty());
    QCOMPARE(trims.label(0), QStringLiteral("Value"));
}

// A virtual controller keeps the trims it is sent and reads them back.
void TestTrim::withVirtualController() {
    sim::VirtualController controller(1);
    QVERIFY(controller.listen(QHostAddress(QStringLiteral("127.31.90.1"))));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {QStringLiteral("127.31.90.1")});
    form.ui.HS_A[5]->setValue(300);
    form.ui.HS_A[12]->setValue(45);
    QTRY_COMPARE(controller.state().trim[sim::HEnd][1], 45);
    QTRY_COMPARE(controller.state().trim[sim::VEnd][0], -210);
    for (QScrollBar* bar : form.ui.HS_A) {
        const QSignalBlocker quiet(bar);
        bar->setValue(0);
    }
    driver::click(form.ui.btn_posi[0]);
    for (int i = 0; i < 16; ++i)
        QCOMPARE(form.ui.HS_A[i]->value(), i == 5 ? 300 : i == 12 ? 45 : 255);
    QCOMPARE(form.ui.value_posi[12]->text(), QStringLiteral("-210"));
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestTrim test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_trim.moc"
