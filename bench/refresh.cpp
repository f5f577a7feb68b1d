// The full refresh after "Connect", against a bare socket client doing the same
// exchange with the same virtual controller.

#include "bareclient.h"
#include "measure.h"
#include "monitor/trafficmonitor.h"
#include "simprocess.h"
#include "window/form1.h"

#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QGroupBox>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QWindow>
#include <sys/socket.h>
#include <unistd.h>

namespace {

#if defined(BENCH_WINDOW_HIDDEN)
constexpr bool Shown = false;
constexpr const char* Name = "refresh_hidden";
#elif defined(BENCH_MONITOR)
constexpr bool Shown = true;
constexpr const char* Name = "refresh_monitor";
#else
constexpr bool Shown = true;
constexpr const char* Name = "refresh_shown";
#endif

const char* const Method =
    "Times the full refresh that follows \"Connect\" against its floor, in one process.\n"
    "\n"
    "Figure: Form1 (shown on the display, or never shown in refresh_hidden) lists one\n"
    "virtual controller (panomat-sim, its own process, 127.61.0.1). The clock runs from\n"
    "the click on \"Connect\" until ProgressBar1 reaches 100, that is until the last of\n"
    "the 22 replies has been handled: connect, SOSDI and the 22 reads with their waits,\n"
    "the panel lock and the progress steps. Painting that the window has not done by then\n"
    "is not counted unless it held up the exchange.\n"
    "Floor: a bare blocking socket client that connects to the same controller and sends\n"
    "the same 23 lines, each after the reply to the one before has arrived; its clock runs\n"
    "from the connect to the last reply.\n"
    "Also shown, not part of the ratio: the time until the \"Refresh completed !\" box\n"
    "is shown (it adds building the box and, on a display, its window).\n"
    "\n"
    "The two run in turn (the order swapped every pair) after three unrecorded pairs;\n"
    "between runs the window is left idle for 30 ms, so that it has painted everything\n"
    "before the next run starts. Prints median, min and max of each side and the ratio\n"
    "of the medians.\n"
    "\n"
    "refresh_monitor times the same window refresh with the traffic monitor shown\n"
    "(figure) and hidden (floor), in turn in one process.\n"
    "\n"
    "Usage: refresh_shown|refresh_hidden|refresh_monitor [--runs N]   (root: port 23)\n";

const char* const Address = "127.61.0.1";

const char* const Reads[] = {"RPOW",   "RMDN",   "RBY",    "RBEZ",   "RVER",   "RIPM",
                             "RLINK",  "RCBH 1", "RCBH 2", "RCBH 3", "RCBH 4", "RCBV 1",
                             "RCBV 2", "RCBV 3", "RCBV 4", "RRES",   "ROSDD",  "ROSDT",
                             "ROSDH",  "ROSDV",  "ROSDG",  "RMUTE"};

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

void sendLine(int fd, const std::string& line) {
    const std::string bytes = line + "\r\n";
    if (send(fd, bytes.data(), bytes.size(), 0) != ssize_t(bytes.size()))
        fail("send");
}

double bareClient() {
    const double start = bench::nowMs();
    const int fd = bench::connectToPort23(Address);
    sendLine(fd, "SOSDI"); // no reply
    char buffer[512];
    for (const char* read : Reads) {
        sendLine(fd, read);
        // Each reply is one line, handed to the kernel in one piece.
        for (bool complete = false; !complete;) {
            const ssize_t n = recv(fd, buffer, sizeof buffer, 0);
            if (n <= 0)
                fail("recv");
            complete = buffer[n - 1] == '\n';
        }
    }
    const double elapsed = bench::nowMs() - start;
    close(fd);
    return elapsed;
}

// Notes when a message box is shown and closes it again, as an operator's OK would.
class BoxWatcher : public QObject {
public:
    double shownAt = 0;
    QString text;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            if (auto* box = qobject_cast<QMessageBox*>(watched)) {
                shownAt = bench::nowMs();
                text = box->text();
                QMetaObject::invokeMethod(box, &QMessageBox::accept, Qt::QueuedConnection);
            }
        }
        return false;
    }
};

void idle(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int main(int argc, char* argv[]) {
    const int runs = bench::parseRuns(argc, argv, 30, Method);
    QApplication app(argc, argv);
    bench::SimProcess controller(QString::fromLatin1(Address), 1);

    Form1 form;
    form.ui.cbo_ipaddr->addItem(QStringLiteral("02-00-7F-3D-00-01"));
    form.ui.cbo_ipaddr->setCurrentIndex(0);
    form.services().setAddresses(QStringList{QString::fromLatin1(Address)});
    form.ui.cbo_model->addItem(QStringLiteral(" 0")); // the controller's model number
    form.ui.con_interface->setEnabled(true);          // as after a search
    if (Shown) {
        form.show();
        while (!form.windowHandle() || !form.windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    idle(200);

    // The box watcher sees every event of the application, so it is installed only once
    // the clock has stopped, and taken off after the box.
    BoxWatcher boxes;
    double readAt = 0;
    QObject::connect(form.ui.ProgressBar1, &QProgressBar::valueChanged, [&](int value) {
        if (value == 100) {
            readAt = bench::nowMs();
            app.installEventFilter(&boxes);
        }
    });
    bench::Samples figure, floor, toBox;
    auto windowRun = [&] {
        readAt = boxes.shownAt = 0;
        const double start = bench::nowMs();
        form.ui.btn_con->click(); // returns after the box has been answered
        app.removeEventFilter(&boxes);
        if (boxes.text != QLatin1String("Refresh completed !") || readAt == 0) {
            std::fprintf(stderr, "the refresh ended with \"%s\"\n", qPrintable(boxes.text));
            std::exit(1);
        }
        toBox.add(boxes.shownAt - start);
        return readAt - start;
    };

    // Each run is followed by a pause, so that neither side starts on the other's heels.
    constexpr int Unrecorded = 3;
#ifdef BENCH_MONITOR
    auto withMonitor = [&](bool shown) {
        form.monitor().setVisible(shown);
        idle(100);
        const double ms = windowRun();
        idle(100);
        return ms;
    };
    bench::alternate(
        runs, Unrecorded, [&] { return withMonitor(true); }, [&] { return withMonitor(false); },
        figure, floor);
    bench::report(Name, "Connect to last reply handled, traffic monitor shown", figure,
                  "the same, traffic monitor hidden", floor, "ms");
    return 0;
#endif
    bench::alternate(
        runs, Unrecorded,
        [&] {
            const double ms = windowRun();
            idle(30);
            return ms;
        },
        [&] {
            const double ms = bareClient();
            idle(30);
            return ms;
        },
        figure, floor);
    toBox.values.erase(toBox.values.begin(), toBox.values.begin() + Unrecorded);
    bench::printSide("info", "Connect to \"Refresh completed !\" box shown", toBox, "ms");
    bench::report(Name,
                  Shown ? "Connect to last reply handled, window shown"
                        : "Connect to last reply handled, window never shown",
                  figure, "bare client, same 23 lines, same controller", floor, "ms");
    return 0;
}
