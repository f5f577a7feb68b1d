// The probe on Winsock. select() rather than WSAPoll: before Windows 10 2004, WSAPoll
// never reports a connect that failed, and every refused host would wait out its
// time-out; select() names it in the exception set. Windows' fd_set is a list of
// sockets, not a bitmap, so it is made large enough for every probe at once.
#define FD_SETSIZE 1024
#include "zedaprobe.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

std::string socketError(const char* what, int code) {
    char* text = nullptr;
    FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                       FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, DWORD(code), 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string out = std::string(what) + ": " + (text ? text : "error " + std::to_string(code));
    if (text)
        LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == '.'))
        out.pop_back();
    return out;
}

// Winsock is started for the length of one probe.
struct Winsock {
    int failure;
    Winsock() {
        WSADATA data;
        failure = WSAStartup(MAKEWORD(2, 2), &data);
    }
    ~Winsock() {
        if (failure == 0)
            WSACleanup();
    }
};

// One host being probed. Slots are reused; INVALID_SOCKET marks a free one.
struct Probe {
    SOCKET s = INVALID_SOCKET;
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
          slots_(size_t(std::clamp(settings.parallel, 1, FD_SETSIZE))) {}

    ~ProbeRun() {
        for (Probe& p : slots_)
            if (p.s != INVALID_SOCKET)
                closesocket(p.s);
    }

    bool exec(std::vector<ProbeFound>* result, std::string* error) {
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
    // As on Linux: hosts that fail at once free their slot inside the loop; false only
    // when no socket can be had while none is open.
    bool launchMore(std::string* error) {
        for (size_t slot = 0; slot < slots_.size(); ++slot)
            while (slots_[slot].s == INVALID_SOCKET && next_ < hosts_.size())
                if (!launch(slot)) {
                    if (open_ > 0)
                        return true;
                    *error = socketError("cannot open a socket", WSAGetLastError());
                    return false;
                }
        return true;
    }

    bool launch(size_t slot) {
        const SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        if (s == INVALID_SOCKET)
            return false;
        u_long nonBlocking = 1;
        ioctlsocket(s, FIONBIO, &nonBlocking);
        Probe& p = slots_[slot];
        p = Probe{s, hosts_[next_++], false, Clock::now() + ms(settings_.connectTimeoutMs), {}};
        ++open_;
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(settings_.port);
        to.sin_addr.s_addr = htonl(p.address);
        if (connect(s, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0)
            connected(p);
        else if (WSAGetLastError() != WSAEWOULDBLOCK)
            settle(p, false);
        return true;
    }

    bool waitAndHandle(std::string* error) {
        Clock::time_point next = Clock::time_point::max();
        fd_set readable, writable, failed;
        FD_ZERO(&readable);
        FD_ZERO(&writable);
        FD_ZERO(&failed);
        for (const Probe& p : slots_) {
            if (p.s == INVALID_SOCKET)
                continue;
            next = std::min(next, p.deadline);
            if (p.connected) {
                FD_SET(p.s, &readable);
            } else {
                FD_SET(p.s, &writable);
                FD_SET(p.s, &failed);
            }
        }
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        const long long waitMs = std::clamp<long long>(wait.count(), 0, 60000);
        timeval timeout{long(waitMs / 1000), long(waitMs % 1000) * 1000};
        const int n = select(0, &readable, &writable, &failed, &timeout);
        if (n == SOCKET_ERROR) {
            *error = socketError("cannot wait for the hosts", WSAGetLastError());
            return false;
        }
        for (Probe& p : slots_) {
            if (p.s == INVALID_SOCKET)
                continue;
            if (!p.connected) {
                if (FD_ISSET(p.s, &failed))
                    settle(p, false);
                else if (FD_ISSET(p.s, &writable))
                    connected(p);
            } else if (FD_ISSET(p.s, &readable)) {
                read(p);
            }
        }
        // A controller that began its answer in time counts, as one that closes does.
        const Clock::time_point now = Clock::now();
        for (Probe& p : slots_)
            if (p.s != INVALID_SOCKET && p.deadline <= now)
                settle(p, isVersion(p.reply));
        return true;
    }

    void read(Probe& p) {
        char buffer[MaxReplyBytes + 1];
        const int got = recv(p.s, buffer, int(MaxReplyBytes + 1 - p.reply.size()), 0);
        if (got == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK)
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
        static constexpr char Ask[] = "RVER\r\n";
        if (send(p.s, Ask, int(sizeof Ask - 1), 0) != int(sizeof Ask - 1))
            settle(p, false);
    }

    void settle(Probe& p, bool controller) {
        closesocket(p.s);
        p.s = INVALID_SOCKET;
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
    std::vector<ProbeFound> controllers_;
};

} // namespace

bool probeHosts(const std::vector<uint32_t>& hosts, const ProbeSettings& settings,
                const std::function<void(const ProbeFound&)>& found,
                std::vector<ProbeFound>* result, std::string* error) {
    error->clear();
    const Winsock winsock;
    if (winsock.failure != 0) {
        *error = socketError("cannot start Winsock", winsock.failure);
        return false;
    }
    return ProbeRun(hosts, settings, found).exec(result, error);
}
