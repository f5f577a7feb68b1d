// A program that starts, shows its window and says so on standard output: the tool's
// own window (window_app, built like panomat-set) or a Qt Widgets window with one
// label (window_bare, the floor). The start-up and idle-memory benchmarks run these.
//
// "shown" is written once the window has been exposed and its first frame painted.
// With --exit the program then ends at once; without, it stays idle until killed.

#include <QApplication>
#include <QTimer>
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
    explicit FirstFrame(bool exitAfter) : exitAfter_(exitAfter) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Expose && watched->isWindowType() && !said_) {
            said_ = true;
            QTimer::singleShot(0, [this] {
                (void)!write(STDOUT_FILENO, "shown\n", 6);
                if (exitAfter_)
                    _exit(0);
            });
        }
        return false;
    }

private:
    bool exitAfter_;
    bool said_ = false;
};

} // namespace

int main(int argc, char* argv[]) {
    const bool exitAfter = argc > 1 && !std::strcmp(argv[1], "--exit");
    QApplication::setApplicationName(QStringLiteral("Panomat Set"));
    QApplication app(argc, argv);
    Window window;
    FirstFrame frame(exitAfter);
    app.installEventFilter(&frame);
    window.show();
    return app.exec();
}
