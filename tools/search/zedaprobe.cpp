#include "zedaprobe.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

std::string systemError(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

// One host being probed. Slots are reused; fd < 0 marks a free one.
struct Probe {
    int fd = -1;
    uint32_t address = 0;
    bool connected = false;
    Clock::time_point deadline;
    std::string reply;
};

class ProbeRun {
public:
    ProbeRun(const std::vector<uint32_t>& hosts, const ProbeSettings& settings,
             const std::function<void(const ProbeFound&)>& found)
        : hosts_(hosts), settings_(settings), found_(found),
          slots_(size_t(std::max(1, settings.parallel))) {}

    ~ProbeRun() {
        for (Probe& p : slots_)
            if (p.fd >= 0)
                ::close(p.fd);
        if (poller_ >= 0)
            ::close(poller_);
    }

    bool exec(std::vector<ProbeFound>* result, std::string* error) {
        poller_ = epoll_create1(EPOLL_CLOEXEC);
        if (poller_ < 0) {
            *error = systemError("cannot watch sockets");
            return false;
        }
        while (launchMore(error) && open_ > 0)
            if (!waitAndHandle(error))
                return false;
        if (!error->empty())
            return false;
        std::sort(controllers_.begin(), controllers_.end(),
                  [](const ProbeFound& a, const ProbeFound& b) { return a.address < b.address; });
        *result = controllers_;
        return true;
    }

private:
    // Fills the free slots with the next hosts. Hosts that fail at once (no route)
    // free their slot again inside the loop, so a list of unreachable hosts is worked
    // through here without waiting. False only when no socket can be had while none
    // is open, so that waiting would never end.
    bool launchMore(std::string* error) {
        for (size_t slot = 0; slot < slots_.size(); ++slot)
            while (slots_[slot].fd < 0 && next_ < hosts_.size())
                if (!launch(slot)) {
                    if (open_ > 0)
                        return true; // out of descriptors: wait for open probes to end
                    *error = systemError("cannot open a socket");
                    return false;
                }
        return true;
    }

    bool launch(size_t slot) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (fd < 0)
            return false;
        Probe& p = slots_[slot];
        p = Probe{fd, hosts_[next_++], false, Clock::now() + ms(settings_.connectTimeoutMs), {}};
        ++open_;
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(settings_.port);
        to.sin_addr.s_addr = htonl(p.address);
        const int rc = ::connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to);
        if (rc != 0 && errno != EINPROGRESS) {
            settle(p, false);
            return true;
        }
        epoll_event e{};
        e.events = EPOLLOUT | EPOLLIN | EPOLLRDHUP;
        e.data.u64 = slot;
        if (::epoll_ctl(poller_, EPOLL_CTL_ADD, fd, &e) != 0) {
            settle(p, false);
            return true;
        }
        if (rc == 0)
            connected(p);
        return true;
    }

    bool waitAndHandle(std::string* error) {
        Clock::time_point next = Clock::time_point::max();
        for (const Probe& p : slots_)
            if (p.fd >= 0)
                next = std::min(next, p.deadline);
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        epoll_event events[64];
        const int n =
            ::epoll_wait(poller_, events, 64, int(std::clamp<long long>(wait.count(), 0, 60000)));
        if (n < 0 && errno != EINTR) {
            *error = systemError("cannot wait for the hosts");
            return false;
        }
        for (int i = 0; i < n; ++i) {
            Probe& p = slots_[events[i].data.u64];
            if (p.fd >= 0)
                handle(p, events[i].events);
        }
        // A controller that began its answer in time counts, as one that closes does.
        const Clock::time_point now = Clock::now();
        for (Probe& p : slots_)
            if (p.fd >= 0 && p.deadline <= now)
                settle(p, isVersion(p.reply));
        return true;
    }

    void handle(Probe& p, uint32_t events) {
        if (!p.connected) {
            int failure = 0;
            socklen_t size = sizeof failure;
            if (::getsockopt(p.fd, SOL_SOCKET, SO_ERROR, &failure, &size) != 0 || failure != 0)
                settle(p, false);
            else if (events & (EPOLLOUT | EPOLLIN))
                connected(p);
            return;
        }
        char buffer[MaxReplyBytes + 1];
        const ssize_t got = ::read(p.fd, buffer, MaxReplyBytes + 1 - p.reply.size());
        if (got < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (got <= 0) { // closed or reset: what arrived before still counts
            settle(p, isVersion(p.reply));
            return;
        }
        p.reply.append(buffer, size_t(got));
        if (isVersion(p.reply) && p.reply.find('\n') != p.reply.npos)
            settle(p, true);
        else if (p.reply.size() > MaxReplyBytes || (p.reply.size() >= 4 && !isVersion(p.reply)))
            settle(p, false);
    }

    void connected(Probe& p) {
        p.connected = true;
        p.deadline = Clock::now() + ms(settings_.replyTimeoutMs);
        epoll_event e{};
        e.events = EPOLLIN | EPOLLRDHUP;
        e.data.u64 = size_t(&p - slots_.data());
        ::epoll_ctl(poller_, EPOLL_CTL_MOD, p.fd, &e);
        static constexpr char Ask[] = "RVER\r\n";
        if (::send(p.fd, Ask, sizeof Ask - 1, MSG_NOSIGNAL) != ssize_t(sizeof Ask - 1))
            settle(p, false);
    }

    void settle(Probe& p, bool controller) {
        ::close(p.fd); // also takes it out of the epoll set
        p.fd = -1;
        --open_;
        if (!controller)
            return;
        const ProbeFound f{p.address, p.reply.substr(0, p.reply.find_first_of("\r\n"))};
        controllers_.push_back(f);
        if (found_)
            found_(f);
    }

    static std::chrono::milliseconds ms(int n) { return std::chrono::milliseconds(n); }

    static bool isVersion(const std::string& reply) { return reply.rfind("VERS", 0) == 0; }

    const std::vector<uint32_t>& hosts_;
    const ProbeSettings settings_;
    const std::function<void(const ProbeFound&)>& found_;
    std::vector<Probe> slots_;
    size_t next_ = 0;
    int open_ = 0;
    int poller_ = -1;
    std::vector<ProbeFound> controllers_;
};

} // namespace

bool probeHosts(const std::vector<uint32_t>& hosts, const ProbeSettings& settings,
                const std::function<void(const ProbeFound&)>& found,
                std::vector<ProbeFound>* result, std::string* error) {
    error->clear();
    return ProbeRun(hosts, settings, found).exec(result, error);
}
