#include "support/fakecontroller.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

// Each test function uses its own address in 127.31.0.0/16.
namespace {

// One connected controller, the refresh's traffic forgotten.
struct Trims {
    explicit Trims(int subnet) : device(QStringLiteral("127.31.%1.1").arg(subnet)) {
        device.answerLikeController();
        form.show();
        driver::connectTo(form, {device.address()});
        driver::click(form.ui.opt_tv4);
        device.clear();
        boxes.clear(); // the connect's own message
    }
    QScrollBar* bar(int i) { return ui.HS_A[i]; }
    QString label(int i) { return ui.value_posi[i]->text(); }
    int enabled() { return ui.btn_posi[0]->isEnabled() + ui.btn_posi[1]->isEnabled(); }
    void setQuietly(int i, int position) {
        const QSignalBlocker quiet(bar(i));
        bar(i)->setValue(position);
    }

    FakeController device;
    MessageBoxAnswerer boxes;
    Form1 form;
    Controls& ui = form.ui;
};

// Pushes the chunks one at a time, each once the window has shown the one before
// (loopback would join small writes). Runs from within the read's wait.
void feed(Trims& trims, QList<QByteArray> chunks) {
    const QByteArray chunk = chunks.takeFirst();
    trims.device.push(chunk);
    if (!chunks.isEmpty())
        driver::when(
            &trims.form, [&trims, chunk] { return trims.ui.TextInfo->text().toLatin1() == chunk; },
            [&trims, chunks] { feed(trims, chunks); });
}

} // namespace

class TestTrim : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    void barSends_data() {
        QTest::addColumn<int>("index");
        // 0 set by code, 1 click on the right arrow, 2 drag, 3 key Right, 4 key Home
        QTest::addColumn<int>("action");
        QTest::addColumn<int>("position");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QByteArray>("bytes"); // two blanks after the keyword
        QTest::newRow("H end B") << 5 << 0 << 300 << "+45" << QByteArray("SPCHE  2 45\r\n");
        QTest::newRow("V end A") << 12 << 0 << 0 << "-255" << QByteArray("SMCVE  1 255\r\n");
        QTest::newRow("H start B") << 1 << 0 << 200 << "-55" << QByteArray("SMCHS  2 55\r\n");
        QTest::newRow("V start C") << 10 << 0 << 510 << "+255" << QByteArray("SPCVS  3 255\r\n");
        QTest::newRow("zero trim") << 3 << 0 << 255 << "+0" << QByteArray("SPCHS  4 0\r\n");
        QTest::newRow("V start D") << 11 << 0 << 254 << "-1" << QByteArray("SMCVS  4 1\r\n");
        QTest::newRow("arrow, by one") << 4 << 1 << 256 << "+1" << QByteArray("SPCHE  1 1\r\n");
        QTest::newRow("key Right") << 9 << 3 << 300 << "+45" << QByteArray("SPCVS  2 45\r\n");
        QTest::newRow("key Home") << 15 << 4 << 0 << "-255" << QByteArray("SMCVE  4 255\r\n");
        QTest::newRow("drag") << 4 << 2 << 400 << "+145" << QByteArray("SPCHE  1 145\r\n");
    }

    void barSends() {
        QFETCH(int, index);
        QFETCH(int, action);
        QFETCH(int, position);
        QFETCH(QString, label);
        QFETCH(QByteArray, bytes);
        Trims trims(1);
        QScrollBar* bar = trims.bar(index);
        const bool fromBelow = action == 1 || action == 3;
        trims.setQuietly(index, fromBelow ? position - 1 : (position + 1) % 511);
        if (action == 0) {
            bar->setValue(position);
        } else if (action == 1) {
            driver::clickAt(bar, QPoint(bar->width() - 4, bar->height() / 2));
        } else if (action >= 3) {
            driver::key(bar, action == 3 ? Qt::Key_Right : Qt::Key_Home);
        } else { // a drag shows where the thumb is and sends only where it is let go
            bar->setSliderDown(true);
            bar->setSliderPosition(position);
            QCOMPARE(trims.label(index), label);
            QTest::qWait(30);
            QVERIFY(trims.device.received().isEmpty());
            bar->setSliderDown(false);
        }
        QCOMPARE(trims.label(index), label);
        QTRY_COMPARE(trims.device.received(), bytes);
    }

    void resetMovesOnlyBarsOffZero() {
        Trims trims(3);
        for (int i = 0; i < 16; ++i)
            trims.setQuietly(i, i == 14 ? 0 : i == 2 ? 300 : i == 9 ? 254 : 255);
        driver::click(trims.ui.btn_posi[1]); // every line is written before the click returns
        QTRY_COMPARE(trims.device.lines(), (QStringList{"SPCHS  3 0", "SPCVS  2 0", "SPCVE  3 0"}));
        QCOMPARE(trims.label(14), QStringLiteral("+0"));
    }

    // Output n of group g answers n * 10 + g, plus on odd outputs ("RCHS" with "CHSC" and
    // "PHSV" or "MINU"); characters 5-7 are noise. Step 5 first gets replies of the wrong
    // group and outside the bar's range (555, -1), which leave the read waiting, then its
    // own with a blank before the magnitude; any of them taken would shift or stop the read.
    void readFillsBarsAndSendsNothing() {
        Trims trims(4);
        const QStringList reads = {"RCHS", "RCHE", "RCVS", "RCVE"};
        QStringList expected;
        QList<int> progress;
        bool locked = true;
        for (int g = 0; g < 4; ++g) {
            for (int n = 1; n <= 4; ++n)
                expected << reads[g] + u' ' + QString::number(n);
            trims.device.reply(reads[g], [&, g](const QString& line) {
                progress << trims.ui.ProgressBar1->value();
                locked = locked && trims.enabled() == 0 && trims.ui.ProgressBar1->isVisible();
                const int n = line.right(1).toInt();
                if (g == 1 && n == 1) {
                    feed(trims, {"CHSC001PHSV012\r\n", "CHECxyzPHEV300\r\n", "CHECxyzMHEV256\r\n",
                                 "CHECxyzPHEV 11\r\n"});
                    return QByteArray();
                }
                return QStringLiteral("%1Cxyz%2%3")
                    .arg(line.mid(1, 3), n % 2 ? u'P' + line.mid(2, 2) + u'V' : "MINU")
                    .arg(n * 10 + g, 3, 10, QLatin1Char('0'))
                    .toLatin1();
            });
        }
        driver::click(trims.ui.btn_posi[0]);
        QVERIFY(locked);
        QCOMPARE(progress,
                 (QList<int>{0, 0, 0, 0, 25, 25, 25, 25, 50, 50, 50, 50, 75, 75, 75, 75}));
        for (int i = 0; i < 16; ++i) {
            const int m = (i % 4 + 1) * 10 + i / 4;
            QCOMPARE(trims.bar(i)->value(), i % 2 ? 255 - m : 255 + m);
            QCOMPARE(trims.label(i), (i % 2 ? u'-' : u'+') + QString::number(m));
        }
        QVERIFY(trims.enabled() == 2 && trims.ui.ProgressBar1->isHidden() &&
                !trims.form.w.wait_posi);
        QVERIFY(trims.boxes.texts().isEmpty());
        QTest::qWait(30); // bars moved by the read send nothing
        QCOMPARE(trims.device.lines(), expected);
    }
};

QTEST_MAIN(TestTrim)
#include "test_trim.moc"
