// The window paints at most once a frame, and never loses a change: a refresh sets a
// control with every reply, and painting each one at once made it wait for the screen.

#include "window/form1.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>

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
private slots:
    void init() {
        form = std::make_unique<Form1>();
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QTest::qWait(100); // the first frames are done
    }
    void cleanup() { form.reset(); }

    void changesInQuickSuccessionArePaintedOnce();
    void repaintWaitsForTheFrame();

private:
    std::unique_ptr<Form1> form;
};

// As replies set TextInfo between passes of a wait: every pass may paint, but the
// window paints what changed at most once a frame, and the last text reaches the screen.
void TestPaint::changesInQuickSuccessionArePaintedOnce() {
    PaintCounter counter(form->ui.TextInfo);
    constexpr int Passes = 40;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < Passes; ++i) {
        form->ui.TextInfo->setText(QStringLiteral("MODN%1").arg(i, 3, 10, QChar('0')));
        QCoreApplication::processEvents();
    }
    const qint64 frames = clock.elapsed() / 16 + 2;
    QVERIFY2(
        counter.paints <= frames,
        qPrintable(QStringLiteral("%1 paints in %2 ms").arg(counter.paints).arg(clock.elapsed())));
    form->ui.TextInfo->setText(QStringLiteral("MUTE000"));
    const int before = counter.paints;
    QTRY_VERIFY(counter.paints > before); // the last change is not lost
}

// QProgressBar::setValue repaints at once, which would paint everything the window has
// pending in the middle of a refresh; the value is painted with the next frame instead.
void TestPaint::repaintWaitsForTheFrame() {
    QProgressBar* bar = form->ui.ProgressBar1;
    bar->setVisible(true);
    PaintCounter counter(bar);
    QTRY_VERIFY(counter.paints > 0);
    QTest::qWait(50);
    const int shown = counter.paints;
    bar->setValue(37);
    QCOMPARE(counter.paints, shown);
    QTRY_VERIFY(counter.paints > shown);
    QCOMPARE(bar->value(), 37);
}

QTEST_MAIN(TestPaint)
#include "test_paint.moc"
