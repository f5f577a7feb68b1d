// The device search program against a bare probe of the same hosts, as paired
// whole-process runs. Built twice: search_loopback (a /24 on loopback with four
// virtual controllers) and search_lan (a /24 in a network namespace with one
// controller, set up by scripts/bench).

#include "measure.h"
#include "zedaprobe.h"

#include <arpa/inet.h>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#ifdef BENCH_SEARCH_LAN
const char* const Name = "search_lan";
const char* const DefaultHosts = "192.0.2.0/24";
constexpr int DefaultControllers = 0; // the namespace's responder is the one controller
constexpr int DefaultExpect = 1;
const char* const Method =
    "The search of a /24 on a network, simulated, against a bare probe, as paired\n"
    "whole-process runs.\n"
    "\n"
    "Run it inside the network namespace that scripts/bench builds: a veth pair between\n"
    "two namespaces, 192.0.2.1/24 on this side and one host, 192.0.2.77, answering RVER\n"
    "like a controller on the other (bare_probe respond). The other 252 addresses of the\n"
    "/24 are absent: nothing answers their ARP requests, so their connects never\n"
    "complete and only the time-outs end them.\n"
    "Figure: ZEDA.exe with ZEDA_HOSTS=192.0.2.0/24 and --output-dir in a temporary\n"
    "folder, from start to exit; it must list exactly one controller. Floor: bare_probe,\n"
    "a parallel non-blocking connect + RVER probe without Qt that gives hosts up after\n"
    "the same connect and reply time-outs as the search program (read from its\n"
    "defaults), from start to exit; it must find the same one controller.\n"
    "The two run in turn, the order swapped every pair. Prints median, min and max of\n"
    "each side and the ratio of the medians.\n"
    "\n"
    "Usage: search_lan [--runs N] [--hosts CIDR] [--expect N]   (default 5 pairs)\n";
#else
const char* const Name = "search_loopback";
const char* const DefaultHosts = "127.62.0.0/24";
constexpr int DefaultControllers = 4;
constexpr int DefaultExpect = 4;
const char* const Method =
    "The search of a /24 with four controllers against a bare probe, as paired\n"
    "whole-process runs.\n"
    "\n"
    "Four virtual controllers (panomat-sim, its own process) listen on 127.62.0.2-5;\n"
    "the other 250 addresses of 127.62.0.0/24 refuse the connection.\n"
    "Figure: ZEDA.exe with ZEDA_HOSTS=127.62.0.0/24 and --output-dir in a temporary\n"
    "folder, from start to exit; it must list exactly four controllers. Floor:\n"
    "bare_probe, a parallel non-blocking connect + RVER probe without Qt, from start to\n"
    "exit; it must find the same four.\n"
    "The two run in turn, the order swapped every pair, after two unrecorded pairs.\n"
    "Prints median, min and max of each side and the ratio of the medians.\n"
    "\n"
    "Usage: search_loopback [--runs N]   (default 20 pairs; root: port 23)\n";
#endif

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

// Runs a program to its end; its standard output comes back.
std::string runToEnd(const std::vector<std::string>& argv, const char* env = nullptr) {
    int out[2];
    if (pipe(out) != 0)
        fail("pipe");
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], STDOUT_FILENO);
        close(out[0]);
        close(out[1]);
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDERR_FILENO);
        if (env)
            putenv(const_cast<char*>(env));
        std::vector<char*> args;
        for (const std::string& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(out[1]);
    std::string said;
    char buffer[256];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;)
        said.append(buffer, size_t(n));
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        fail(argv[0] + " failed (run it alone to see why)");
    return said;
}

bool listening(unsigned address) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(23);
    to.sin_addr.s_addr = htonl(address);
    const bool ok = connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    close(fd);
    return ok;
}

// Virtual controllers from the network's second address on; they end with this program.
void startControllers(const std::string& network, int count) {
    const std::string base = network.substr(0, network.find('/'));
    in_addr a{};
    inet_pton(AF_INET, base.c_str(), &a);
    const unsigned first = ntohl(a.s_addr) + 2;
    in_addr f{htonl(first)};
    char firstText[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &f, firstText, sizeof firstText);
    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDERR_FILENO);
        execl(BENCH_BIN_DIR "/panomat-sim", "panomat-sim", "-q", "--devices",
              std::to_string(count).c_str(), "--first", firstText, nullptr);
        _exit(127);
    }
    for (int tries = 0; tries < 500; ++tries) {
        bool all = true;
        for (int i = 0; i < count && all; ++i)
            all = listening(first + unsigned(i));
        if (all)
            return;
        usleep(10000);
    }
    fail("panomat-sim did not start (root is needed for port 23)");
}

int lines(const std::string& path) {
    std::ifstream file(path);
    int n = 0;
    for (std::string line; std::getline(file, line);)
        n += !line.empty();
    return n;
}

} // namespace

int main(int argc, char* argv[]) {
    const int runs = bench::parseRuns(argc, argv, DefaultControllers ? 20 : 5, Method);
    std::string hosts = DefaultHosts;
    int expect = DefaultExpect;
    for (int i = 1; i + 1 < argc; ++i) {
        if (!std::strcmp(argv[i], "--hosts"))
            hosts = argv[i + 1];
        else if (!std::strcmp(argv[i], "--expect"))
            expect = std::atoi(argv[i + 1]);
    }
    if (DefaultControllers)
        startControllers(hosts, DefaultControllers);

    char folder[] = "/tmp/bench-search-XXXXXX";
    if (!mkdtemp(folder))
        fail("mkdtemp");
    const std::string env = "ZEDA_HOSTS=" + hosts;
    const ProbeSettings settings;
    auto search = [&] {
        const double start = bench::nowMs();
        runToEnd({BENCH_BIN_DIR "/ZEDA.exe", "--output-dir", folder}, env.c_str());
        const double elapsed = bench::nowMs() - start;
        if (lines(std::string(folder) + "/MAC.txt") != expect)
            fail("ZEDA.exe did not list " + std::to_string(expect) + " controllers");
        return elapsed;
    };
    auto bare = [&] {
        const double start = bench::nowMs();
        const std::string found = runToEnd({BENCH_DIR "/bare_probe", "probe", hosts,
                                            std::to_string(settings.connectTimeoutMs),
                                            std::to_string(settings.replyTimeoutMs)});
        const double elapsed = bench::nowMs() - start;
        if (std::atoi(found.c_str()) != expect)
            fail("bare_probe found " + found + " controllers, not " + std::to_string(expect));
        return elapsed;
    };

    bench::Samples figure, floor;
    bench::alternate(runs, DefaultControllers ? 2 : 0, search, bare, figure, floor);
    const std::string what = "ZEDA.exe, " + hosts + ", " + std::to_string(expect) + " found";
    bench::report(Name, what, figure, "bare parallel connect + RVER probe, same hosts", floor,
                  "ms");
    runToEnd({"/bin/rm", "-rf", folder});
    return 0;
}
