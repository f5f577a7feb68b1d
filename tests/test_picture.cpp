#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include "virtualcontroller.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using driver::find;

// Picture read, resets and setters. Each test uses its own address in 127.41.0.0/16.
class TestPicture : public QObject {
    Q_OBJECT
private slots:
    void readFillsGridInOrder();
    void readReplyRules_data();
    void readReplyRules();
    void rowReset_data();
    void rowReset();
    void pictureReset_data();
    void pictureReset();
    void setters_data();
    void setters();
    void settersHeldBackOrRefused();
    void withVirtualController();
};

namespace {

const char* const Rows[4] = {"bri", "con", "sat", "hue"};

// A distinct value for every parameter and output, none of them the default 50.
int valueOf(int parameter, int output) {
    return 10 + parameter * 20 + output * 3;
}

QComboBox* list(Form1& form, int parameter, int output) {
    return find<QComboBox>(
        form, QStringLiteral("cbo_image_%1(%2)").arg(QLatin1String(Rows[parameter])).arg(output));
}

// Answers the sixteen reads: characters 1-7 echo the request, 8-11 the key, 12-14 the value.
void answerPictureReads(FakeController& device) {
    const char* const reads[4] = {"RBRI", "RCON", "RSAT", "RHUE"};
    const char* const keys[4] = {"BRIV", "CONV", "SATV", "HUEV"};
    for (int p = 0; p < 4; ++p)
        device.reply(QLatin1String(reads[p]), [p, key = keys[p]](const QString& line) {
            const int output = line.section(u' ', 1).toInt();
            return (line.leftJustified(7, u' ') + QLatin1String(key) +
                    QStringLiteral("%1").arg(valueOf(p, output), 3, 10, QLatin1Char('0')))
                .toLatin1();
        });
}

// Runs check when the controller receives line: the sender is then waiting for its reply.
void whenReceived(FakeController& device, const QString& line, std::function<void()> check) {
    QObject::connect(&device, &FakeController::lineReceived, &device, [=](const QString& got) {
        if (got == line)
            check();
    });
}

QStringList readCommands() {
    QStringList lines;
    for (const char* keyword : {"RBRI", "RCON", "RSAT", "RHUE"})
        for (int n = 1; n <= 4; ++n)
            lines << QStringLiteral("%1 %2").arg(QLatin1String(keyword)).arg(n);
    return lines;
}

void verifyGrid(Form1& form, const std::function<int(int, int)>& expected) {
    for (int p = 0; p < 4; ++p)
        for (int n = 1; n <= 4; ++n)
            QCOMPARE(list(form, p, n)->currentIndex(), expected(p, n));
}

struct Bench {
    explicit Bench(const QStringList& addresses) {
        for (const QString& address : addresses) {
            devices.push_back(std::make_unique<FakeController>(address));
            devices.back()->answerLikeController();
            answerPictureReads(*devices.back());
        }
        driver::connectTo(form, addresses);
        for (auto& device : devices)
            QTRY_COMPARE(device->connectionCount(), 1);
        boxes.clear();
    }
    FakeController& device(int i = 0) { return *devices[i]; }

    std::vector<std::unique_ptr<FakeController>> devices;
    MessageBoxAnswerer boxes;
    Form1 form;
};

} // namespace

// "Refresh" reads brightness of outputs A-D, then contrast, saturation and hue, one at
// a time, with the button disabled meanwhile; filling the grid sends no setting back.
void TestPicture::readFillsGridInOrder() {
    Bench bench({QStringLiteral("127.41.1.1")});
    FakeController& device = bench.device();
    device.clear();
    bool disabledWhileReading = false;
    whenReceived(device, QStringLiteral("RHUE 4"), [&] {
        disabledWhileReading =
            !bench.form.ui.btn_img_rst[5]->isEnabled() && bench.form.w.wait_image == 16;
    });
    driver::click(bench.form.ui.btn_img_rst[5]);
    QVERIFY(disabledWhileReading);
    verifyGrid(bench.form, valueOf);
    QCOMPARE(bench.form.w.wait_image, quint8(0));
    QVERIFY(bench.form.ui.btn_img_rst[5]->isEnabled());
    bench.form.send("MARK\r\n");
    QTRY_COMPARE(device.lines(), readCommands() << QStringLiteral("MARK"));
}

void TestPicture::readReplyRules_data() {
    QTest::addColumn<QByteArray>("stray"); // arrives first, while brightness of A is awaited
    QTest::newRow("key in characters 1-4") << QByteArray("BRIV080");
    QTest::newRow("contrast at the brightness step") << QByteArray("RCON 1 CONV033");
    QTest::newRow("value past the list") << QByteArray("RBRI 1 BRIV101");
}

// A stray chunk must leave the step where it is; the real reply that follows then
// lands on output A and every later one on its own output.
void TestPicture::readReplyRules() {
    QFETCH(QByteArray, stray);
    Bench bench({QStringLiteral("127.41.2.1")});
    FakeController& device = bench.device();
    device.reply(QStringLiteral("RBRI"), [&](const QString& line) {
        if (line != QLatin1String("RBRI 1"))
            return QStringLiteral("%1BRIV%2")
                .arg(line.leftJustified(7))
                .arg(valueOf(0, line.right(1).toInt()), 3, 10, QLatin1Char('0'))
                .toLatin1();
        QTimer::singleShot(100, &device, [&] { device.push("RBRI 1 BRIV080\r\n"); });
        return stray;
    });
    driver::click(bench.form.ui.btn_img_rst[5]);
    verifyGrid(bench.form, [](int p, int n) { return p == 0 && n == 1 ? 80 : valueOf(p, n); });
    QCOMPARE(bench.form.w.wait_image, quint8(0));
}

void TestPicture::rowReset_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("allIp");
    QTest::addColumn<QString>("ack");
    QTest::newRow("brightness") << 0 << false << "IMRE";
    QTest::newRow("contrast, ALL IP") << 1 << true << "IMRE";
    QTest::newRow("saturation, acknowledged PIRE") << 2 << false << "PIRE";
    QTest::newRow("hue, ALL IP") << 3 << true << "IMRE";
}

void TestPicture::rowReset() {
    QFETCH(int, row);
    QFETCH(bool, allIp);
    QFETCH(QString, ack);
    Bench bench({QStringLiteral("127.41.3.1"), QStringLiteral("127.41.3.2")});
    Form1& form = bench.form;
    driver::click(form.ui.btn_img_rst[5]);
    const QString command = QStringLiteral("SIMRE %1").arg(row + 1);
    bench.device(0).reply(QStringLiteral("SIMRE"), ack);
    bool defaultsShownBeforeReply = false;
    whenReceived(bench.device(0), command, [&] {
        defaultsShownBeforeReply = form.w.wait_image_reset == 1;
        for (int n = 1; n <= 4; ++n)
            defaultsShownBeforeReply =
                defaultsShownBeforeReply && list(form, row, n)->currentIndex() == 50;
    });
    for (int box = 0; box < 4; ++box)
        form.ui.Chk_img[box]->setChecked(box == row ? allIp : !allIp);
    bench.device(0).clear();

    driver::click(form.ui.btn_img_rst[row]);
    QVERIFY(defaultsShownBeforeReply);
    QCOMPARE(form.w.wait_image_reset, quint8(0));
    verifyGrid(form, [row](int p, int n) { return p == row ? 50 : valueOf(p, n); });
    form.sendAll("MARK\r\n");
    QTRY_VERIFY(bench.device(1).lines().contains(QStringLiteral("MARK")));
    QTRY_COMPARE(bench.device(0).lines(), (QStringList{command, QStringLiteral("MARK")}));
    QCOMPARE(bench.device(1).lines().contains(command), allIp);
    QVERIFY(bench.boxes.texts().isEmpty());
}

void TestPicture::pictureReset_data() {
    QTest::addColumn<bool>("yes");
    QTest::addColumn<QString>("ack");
    QTest::newRow("Yes") << true << "PIRE";
    QTest::newRow("No, acknowledged IMRE") << false << "IMRE";
}

// The answer picks who is reset; the grid shows the defaults either way, before the reply.
void TestPicture::pictureReset() {
    QFETCH(bool, yes);
    QFETCH(QString, ack);
    Bench bench({QStringLiteral("127.41.4.1"), QStringLiteral("127.41.4.2")});
    Form1& form = bench.form;
    driver::click(form.ui.btn_img_rst[5]);
    bench.device(0).reply(QStringLiteral("SPIRE"), ack);
    bool defaultsShownBeforeReply = false;
    whenReceived(bench.device(0), QStringLiteral("SPIRE"), [&] {
        defaultsShownBeforeReply = form.w.wait_image_reset == 1;
        for (int p = 0; p < 4; ++p)
            for (int n = 1; n <= 4; ++n)
                defaultsShownBeforeReply =
                    defaultsShownBeforeReply && list(form, p, n)->currentIndex() == 50;
    });
    bench.device(0).clear();
    bench.boxes.answerWith(yes ? QMessageBox::Yes : QMessageBox::No);

    driver::click(form.ui.btn_img_rst[4]);
    QCOMPARE(bench.boxes.texts(), QStringList{QStringLiteral("Reset All IP ?")});
    QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Question);
    QCOMPARE(bench.boxes.seen().first().buttons, QMessageBox::Yes | QMessageBox::No);
    QVERIFY(defaultsShownBeforeReply);
    QCOMPARE(form.w.wait_image_reset, quint8(0));
    form.sendAll("MARK\r\n");
    QTRY_VERIFY(bench.device(1).lines().contains(QStringLiteral("MARK")));
    QTRY_COMPARE(bench.device(0).lines(),
                 (QStringList{QStringLiteral("SPIRE"), QStringLiteral("MARK")}));
    QCOMPARE(bench.device(1).lines().contains(QStringLiteral("SPIRE")), yes);
}

void TestPicture::setters_data() {
    QTest::addColumn<QString>("control");
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("sent"); // empty: refused with a message
    const QString none;
    QTest::newRow("hue A 0") << "cbo_image_hue(1)" << 0 << none << "SHUE 1 0";
    QTest::newRow("saturation D 100") << "cbo_image_sat(4)" << 100 << none << "SSAT 4 100";
    QTest::newRow("contrast C 75") << "cbo_image_con(3)" << 75 << none << "SCON 3 75";
    QTest::newRow("brightness B 12") << "cbo_image_bri(2)" << 12 << none << "SBRI 2 12";
    QTest::newRow("typed as is") << "cbo_image_bri(2)" << 0 << "050"
                                 << "SBRI 2 050";
    QTest::newRow("loose upper") << "cbo_image_hue(4)" << 0 << "100.5"
                                 << "SHUE 4 100.5";
    QTest::newRow("loose lower") << "cbo_image_con(1)" << 0 << "-0.5"
                                 << "SCON 1 -0.5";
    QTest::newRow("101") << "cbo_image_bri(2)" << 0 << "101" << none;
    QTest::newRow("x") << "cbo_image_sat(3)" << 0 << "x" << none;
}

// Always to the selected controller only, whatever the "ALL IP" boxes say.
void TestPicture::setters() {
    QFETCH(QString, control);
    QFETCH(int, item);
    QFETCH(QString, typed);
    QFETCH(QString, sent);
    Bench bench({QStringLiteral("127.41.5.1"), QStringLiteral("127.41.5.2")});
    Form1& form = bench.form;
    for (QCheckBox* box : form.ui.Chk_img)
        box->setChecked(true);
    for (auto& device : bench.devices)
        device->clear();

    auto* box = find<QComboBox>(form, control);
    if (typed.isNull())
        driver::pick(box, item);
    else
        driver::type(box, typed, true);
    form.sendAll("MARK\r\n");
    QTRY_VERIFY(bench.device(1).lines().contains(QStringLiteral("MARK")));
    QTRY_VERIFY(bench.device(0).lines().contains(QStringLiteral("MARK")));
    QStringList expected{QStringLiteral("MARK")};
    if (!sent.isEmpty())
        expected.prepend(sent);
    QCOMPARE(bench.device(0).lines(), expected);
    QCOMPARE(bench.device(1).lines(), QStringList{QStringLiteral("MARK")});
    QCOMPARE(bench.boxes.texts(),
             sent.isEmpty() ? QStringList{QStringLiteral("Please type 0 ~ 100")} : QStringList());
    if (sent.isEmpty())
        QCOMPARE(bench.boxes.seen().first().icon, QMessageBox::Warning);
}

// A running read or reset holds picks back but not Enter; a dropped link is reported,
// the window goes offline and the model list keeps its selection.
void TestPicture::settersHeldBackOrRefused() {
    Bench bench({QStringLiteral("127.41.6.1")});
    Form1& form = bench.form;
    FakeController& device = bench.device();
    device.clear();
    for (quint8* busy : {&form.w.wait_image, &form.w.wait_image_reset}) {
        *busy = 1;
        driver::pick(form.ui.cbo_image_bri[1], 9);
        driver::pick(form.ui.cbo_image_hue[4], 9);
        driver::type(form.ui.cbo_image_con[2], QStringLiteral("8"), true);
        *busy = 0;
    }
    form.send("MARK\r\n");
    QTRY_VERIFY(device.lines().contains(QStringLiteral("MARK")));
    QCOMPARE(device.lines(), (QStringList{QStringLiteral("SCON 2 8"), QStringLiteral("SCON 2 8"),
                                          QStringLiteral("MARK")}));

    form.ui.cbo_model->setCurrentIndex(0);
    device.dropConnections();
    QTRY_VERIFY(!form.linkUp());
    QTest::keyClick(form.ui.cbo_image_sat[3]->lineEdit(), Qt::Key_7); // any key
    driver::pick(form.ui.cbo_image_bri[1], 3);
    QCOMPARE(bench.boxes.texts(), QStringList(2, QStringLiteral("Ethernet is disconnected !")));
    QCOMPARE(bench.boxes.seen().last().icon, QMessageBox::Critical);
    QVERIFY(!form.ui.frame_control[3]->isEnabled());
    QCOMPARE(form.ui.cbo_model->currentIndex(), 0);
}

// The grid against a virtual controller that keeps what it is told.
void TestPicture::withVirtualController() {
    sim::VirtualController controller(1);
    QVERIFY(controller.listen(QHostAddress(QStringLiteral("127.41.7.1"))));
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::connectTo(form, {QStringLiteral("127.41.7.1")});
    driver::pick(form.ui.cbo_image_con[3], 75);
    driver::type(form.ui.cbo_image_hue[1], QStringLiteral("12"), true);
    QTRY_COMPARE(controller.state().picture[sim::Hue][0], 12);
    driver::click(form.ui.btn_img_rst[5]);
    verifyGrid(form, [&](int p, int n) { return controller.state().picture[p][n - 1]; });
    QCOMPARE(form.ui.cbo_image_con[3]->currentIndex(), 75);

    boxes.answerWith(QMessageBox::No);
    driver::click(form.ui.btn_img_rst[4]);
    QCOMPARE(controller.state().picture[sim::Contrast][2], 50);
    driver::click(form.ui.btn_img_rst[5]);
    verifyGrid(form, [](int, int) { return 50; });
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestPicture test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_picture.moc"
