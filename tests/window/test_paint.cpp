// The pacer paints a window at most once a frame and never loses a change: a refresh
// sets a control with every reply, and painting each one at once made it wait for the
// screen.

#include "window/paintpacer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>
#include <QVBoxLayout>

namespace {

class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

} // namespace

class TestPaint : public QObject {
    Q_OBJECT
    std::unique_ptr<QWidget> window;
    QLineEdit* text = nullptr;
    QProgressBar* bar = nullptr;

private slots:
    void init() {
        window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(window.get());
        layout->addWidget(text = new QLineEdit);
        layout->addWidget(bar = new QProgressBar);
        new PaintPacer(window.get());
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QTest::qWait(100); // the first frames are done
    }
    void cleanup() { window.reset(); }

    // As replies set a text between passes of a wait: every pass may paint, but the
    // window paints what changed at most once a frame, and the last text reaches the screen.
    void changesInQuickSuccessionArePaintedOnce() {
        PaintCounter counter(text);
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 40; ++i) {
            text->setText(QStringLiteral("MODN%1").arg(i, 3, 10, QChar('0')));
            QCoreApplication::processEvents();
        }
        const qint64 frames = clock.elapsed() / PaintPacer::FrameMs + 2;
        QVERIFY2(
            counter.paints <= frames,
            qPrintable(
                QStringLiteral("%1 paints in %2 ms").arg(counter.paints).arg(clock.elapsed())));
        text->setText(QStringLiteral("MUTE000"));
        const int before = counter.paints;
        QTRY_VERIFY(counter.paints > before); // the last change is not lost
    }

    // QProgressBar::setValue repaints at once, which would paint everything the window has
    // pending in the middle of a refresh; the value is painted with the next frame instead.
    void repaintWaitsForTheFrame() {
        PaintCounter counter(bar);
        bar->update();
        QTRY_VERIFY(counter.paints > 0);
        QTest::qWait(50);
        const int shown = counter.paints;
        bar->setValue(37);
        QCOMPARE(counter.paints, shown);
        QTRY_VERIFY(counter.paints > shown);
        QCOMPARE(bar->value(), 37);
    }
};

QTEST_MAIN(TestPaint)
#include "test_paint.moc"
