// A program that starts, shows its window and says so on standard output: the tool's
// own window (window_app, built like panomat-set) or a Qt Widgets window with one
// label (window_bare, the floor). The start-up and idle-memory benchmarks run these.
//
// "shown WxH" (the window's size) is written once the window has been exposed and its
// first frame painted. With --exit the program then ends at once; without, it stays
// idle until killed. window_bare takes --size WxH: the floor shows a window as large
// as the tool's, since a window's backing store and first frame grow with its area.

#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#ifdef BENCH_TOOL_WINDOW
#include "window/form1.h"
using Window = Form1;
#else
#include <QLabel>
struct Window : QLabel {
    Window() : QLabel(QStringLiteral("Panomat Set")) {}
};
#endif

namespace {

// The first Expose paints and flushes the window before it returns; the zero timer
// runs after that.
class FirstFrame : public QObject {
public:
    FirstFrame(const QWidget& window, bool exitAfter) : window_(window), exitAfter_(exitAfter) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Expose && watched->isWindowType() && !said_) {
            said_ = true;
            QTimer::singleShot(0, [this] {
                std::printf("shown %dx%d\n", window_.width(), window_.height());
                std::fflush(stdout);
                if (exitAfter_)
                    _exit(0);
            });
        }
        return false;
    }

private:
    const QWidget& window_;
    bool exitAfter_;
    bool said_ = false;
};

} // namespace

int main(int argc, char* argv[]) {
    bool exitAfter = false;
    int width = 0, height = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--exit"))
            exitAfter = true;
        else if (!std::strcmp(argv[i], "--size") && i + 1 < argc)
            std::sscanf(argv[++i], "%dx%d", &width, &height);
    }
    QApplication::setApplicationName(QStringLiteral("Panomat Set"));
    QApplication app(argc, argv);
    Window window;
    if (width > 0 && height > 0)
        window.resize(width, height);
    FirstFrame frame(window, exitAfter);
    app.installEventFilter(&frame);
    window.show();
    return app.exec();
}
