// An "ALL IP" setter broadcasting to 64 controllers, against 64 bare send() calls.

#include "measure.h"
#include "window/form1.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QRadioButton>
#include <arpa/inet.h>
#include <atomic>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

const char* const Method =
    "An \"ALL IP\" setter sending one line to 64 controllers, against its floor, in one\n"
    "process.\n"
    "\n"
    "64 plain listening sockets on 127.64.0.1-64, port 23, in a thread of their own,\n"
    "stand for the controllers and count the lines that arrive.\n"
    "Figure: Form1 lists and connects all 64 (the first selected), with \"ALL IP\" ticked\n"
    "for mute on the I/O page. The clock runs from the click on a mute option button\n"
    "until the receiving thread has seen the end of the line on all 64 connections.\n"
    "Floor: 64 blocking sockets connected to the same listeners; the clock runs from\n"
    "the first of 64 send() calls of the same line until the same moment.\n"
    "The two run in turn, the order swapped every pair, after three unrecorded pairs.\n"
    "Prints median, min and max of each side and the ratio of the medians.\n"
    "\n"
    "Usage: allip [--runs N]   (default 30 pairs; root: port 23)\n";

constexpr int Controllers = 64;

unsigned address(int i) {
    return (127u << 24) | (64u << 16) | unsigned(i + 1);
}

QString addressText(int i) {
    return QStringLiteral("127.64.0.%1").arg(i + 1);
}

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

// Counts line ends arriving on every accepted connection and notes when the count
// reaches the number awaited.
class Receivers {
public:
    Receivers() {
        poller_ = epoll_create1(0);
        for (int i = 0; i < Controllers; ++i) {
            const int fd = socket(AF_INET, SOCK_STREAM, 0);
            const int yes = 1;
            setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
            sockaddr_in at{};
            at.sin_family = AF_INET;
            at.sin_port = htons(23);
            at.sin_addr.s_addr = htonl(address(i));
            if (bind(fd, reinterpret_cast<sockaddr*>(&at), sizeof at) != 0 || listen(fd, 8) != 0)
                fail("listen on 127.64.0.x:23");
            watch(fd, true);
        }
        thread_ = std::thread([this] { run(); });
    }
    ~Receivers() {
        stop_ = true;
        thread_.join();
    }

    // Awaits this many line ends from now on.
    void expect(int lines) {
        arrivedAt_ = 0;
        lines_ = 0;
        awaited_ = lines;
    }
    bool done() const { return arrivedAt_.load() != 0; }
    double arrivedAt() const { return arrivedAt_.load(); }

private:
    void watch(int fd, bool listener) {
        epoll_event e{};
        e.events = EPOLLIN;
        e.data.u64 = (uint64_t(listener) << 32) | unsigned(fd);
        epoll_ctl(poller_, EPOLL_CTL_ADD, fd, &e);
    }

    void run() {
        epoll_event events[128];
        while (!stop_) {
            const int n = epoll_wait(poller_, events, 128, 50);
            for (int i = 0; i < n; ++i) {
                const int fd = int(events[i].data.u64 & 0xFFFFFFFF);
                if (events[i].data.u64 >> 32) {
                    const int peer = accept(fd, nullptr, nullptr);
                    if (peer >= 0)
                        watch(peer, false);
                    continue;
                }
                char buffer[512];
                const ssize_t got = read(fd, buffer, sizeof buffer);
                if (got <= 0) {
                    close(fd);
                    continue;
                }
                for (ssize_t k = 0; k < got; ++k)
                    lines_ += buffer[k] == '\n';
                if (awaited_ > 0 && lines_ >= awaited_ && arrivedAt_ == 0) {
                    arrivedAt_ = bench::nowMs();
                    // Wakes the waiting event loop.
                    QCoreApplication::postEvent(qApp, new QEvent(QEvent::User));
                }
            }
        }
    }

    int poller_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<int> awaited_{0};
    int lines_ = 0;
    std::atomic<double> arrivedAt_{0};
};

void waitFor(const Receivers& receivers) {
    while (!receivers.done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

int main(int argc, char* argv[]) {
    const int runs = bench::parseRuns(argc, argv, 30, Method);
    QApplication app(argc, argv);
    Receivers receivers;

    Form1 form;
    QStringList addresses;
    for (int i = 0; i < Controllers; ++i) {
        form.ui.cbo_ipaddr->addItem(
            QStringLiteral("02-00-7F-40-00-%1").arg(i + 1, 2, 16, QChar('0')));
        addresses << addressText(i);
    }
    form.ui.cbo_ipaddr->setCurrentIndex(0);
    form.services().setAddresses(addresses);
    for (int i = 0; i < Controllers; ++i)
        form.services().link().connectTo(i, addresses[i]);
    for (int i = 0; i < Controllers; ++i)
        while (!form.services().link().isConnected(i))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    form.ui.frame_control[2]->setEnabled(true); // as once connected
    form.ui.chk_io[6]->setChecked(true);        // "ALL IP" for mute

    int bare[Controllers];
    for (int i = 0; i < Controllers; ++i) {
        bare[i] = socket(AF_INET, SOCK_STREAM, 0);
        const int yes = 1;
        setsockopt(bare[i], IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(23);
        to.sin_addr.s_addr = htonl(address(i));
        if (::connect(bare[i], reinterpret_cast<sockaddr*>(&to), sizeof to) != 0)
            fail("connect");
    }

    int option = 0;
    auto windowRun = [&] {
        receivers.expect(Controllers);
        const double start = bench::nowMs();
        form.ui.opt_mute[option ^= 1]->click(); // "SMUTE n" to every listed controller
        waitFor(receivers);
        return receivers.arrivedAt() - start;
    };
    auto bareRun = [&] {
        static const char line[] = "SMUTE 1\r\n";
        receivers.expect(Controllers);
        const double start = bench::nowMs();
        for (int fd : bare)
            if (send(fd, line, sizeof line - 1, 0) != ssize_t(sizeof line - 1))
                fail("send");
        waitFor(receivers);
        return receivers.arrivedAt() - start;
    };

    bench::Samples figure, floor;
    bench::alternate(runs, 3, windowRun, bareRun, figure, floor);
    bench::report("allip", "click to last byte at 64 controllers", figure,
                  "64 send() calls to the same listeners", floor, "ms");
    return 0;
}
