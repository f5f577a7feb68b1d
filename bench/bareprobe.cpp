// The floor of the device search: a bare parallel probe with no Qt, and a one-host
// controller stand-in for a network namespace.
//
//   bare_probe probe NETWORK/PREFIX CONNECT_MS REPLY_MS   probes every host at once
//   bare_probe respond ADDRESS                            answers RVER on ADDRESS:23
//
// The probe opens a non-blocking connection to port 23 of every host, sends "RVER\r\n"
// once connected, and counts a host as a controller when its reply begins with "VERS".
// A host that has not connected within CONNECT_MS, or not answered REPLY_MS after
// connecting, is given up, as the search program does. It prints the number found.

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

long long nowMs() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1000LL + t.tv_nsec / 1000000;
}

[[noreturn]] void usage() {
    std::fputs("usage: bare_probe probe NETWORK/PREFIX CONNECT_MS REPLY_MS\n"
               "       bare_probe respond ADDRESS\n",
               stderr);
    std::exit(2);
}

struct Host {
    int fd = -1;
    bool connected = false;
    long long deadline = 0;
    std::string reply;
};

int probe(const char* network, int connectMs, int replyMs) {
    char text[32] = {};
    std::strncpy(text, network, sizeof text - 1);
    char* slash = std::strchr(text, '/');
    if (!slash)
        usage();
    *slash = 0;
    const int prefix = std::atoi(slash + 1);
    in_addr base{};
    if (inet_pton(AF_INET, text, &base) != 1 || prefix < 1 || prefix > 30)
        usage();
    const unsigned mask = ~0u << (32 - prefix);
    const unsigned first = (ntohl(base.s_addr) & mask) + 1;
    const unsigned last = (ntohl(base.s_addr) | ~mask) - 1;

    const int poller = epoll_create1(0);
    std::vector<Host> hosts(last - first + 1);
    const long long start = nowMs();
    int open = 0;
    for (unsigned a = first; a <= last; ++a) {
        Host& h = hosts[a - first];
        h.fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(23);
        to.sin_addr.s_addr = htonl(a);
        if (connect(h.fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0 &&
            errno != EINPROGRESS) {
            close(h.fd);
            h.fd = -1;
            continue;
        }
        h.deadline = start + connectMs;
        epoll_event e{};
        e.events = EPOLLOUT | EPOLLIN;
        e.data.u32 = a - first;
        epoll_ctl(poller, EPOLL_CTL_ADD, h.fd, &e);
        ++open;
    }
    int found = 0;
    auto finish = [&](Host& h) {
        if (h.reply.rfind("VERS", 0) == 0)
            ++found;
        close(h.fd);
        h.fd = -1;
        --open;
    };
    while (open > 0) {
        long long next = -1;
        for (Host& h : hosts)
            if (h.fd >= 0 && (next < 0 || h.deadline < next))
                next = h.deadline;
        epoll_event events[64];
        const int n = epoll_wait(poller, events, 64, int(std::max(0LL, next - nowMs())));
        for (int i = 0; i < n; ++i) {
            Host& h = hosts[events[i].data.u32];
            if (h.fd < 0)
                continue;
            if (!h.connected) {
                int error = 0;
                socklen_t size = sizeof error;
                getsockopt(h.fd, SOL_SOCKET, SO_ERROR, &error, &size);
                if (error != 0) {
                    finish(h);
                    continue;
                }
                h.connected = true;
                h.deadline = nowMs() + replyMs;
                (void)!write(h.fd, "RVER\r\n", 6);
                epoll_event e{};
                e.events = EPOLLIN;
                e.data.u32 = events[i].data.u32;
                epoll_ctl(poller, EPOLL_CTL_MOD, h.fd, &e);
                continue;
            }
            char buffer[256];
            const ssize_t got = read(h.fd, buffer, sizeof buffer);
            if (got > 0)
                h.reply.append(buffer, size_t(got));
            // As the search program decides: a whole "VERS" line, four bytes that are not
            // "VERS", or the end of the connection settle the host.
            const bool vers = h.reply.rfind("VERS", 0) == 0;
            if (got <= 0 || (vers && h.reply.find('\n') != std::string::npos) ||
                (!vers && h.reply.size() >= 4))
                finish(h);
        }
        const long long now = nowMs();
        for (Host& h : hosts)
            if (h.fd >= 0 && h.deadline <= now)
                finish(h);
    }
    std::printf("%d\n", found);
    return 0;
}

// Answers every line with a version reply, as a controller answers RVER.
int respond(const char* address) {
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    setsockopt(server, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_port = htons(23);
    if (inet_pton(AF_INET, address, &at.sin_addr) != 1)
        usage();
    if (bind(server, reinterpret_cast<sockaddr*>(&at), sizeof at) != 0 || listen(server, 64) != 0) {
        std::perror("bare_probe respond");
        return 1;
    }
    std::fputs("listening\n", stdout);
    std::fflush(stdout);
    for (;;) {
        const int peer = accept(server, nullptr, nullptr);
        if (peer < 0)
            continue;
        char buffer[256];
        if (read(peer, buffer, sizeof buffer) > 0)
            (void)!write(peer, "VERS102\r\n", 9);
        close(peer);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc == 5 && !std::strcmp(argv[1], "probe"))
        return probe(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    if (argc == 3 && !std::strcmp(argv[1], "respond"))
        return respond(argv[2]);
    usage();
}
