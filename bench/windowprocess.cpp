// Start-up time and idle memory of the tool's window against a bare Qt Widgets
// window, as paired whole-process runs. Built twice: startup and idle_memory.

#include "measure.h"

#include <csignal>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

#ifdef BENCH_IDLE_MEMORY
constexpr bool Memory = true;
const char* const Method =
    "Resident memory of the tool's window at rest against a bare window, as paired\n"
    "whole-process runs.\n"
    "\n"
    "Figure: window_app, the tool's main window built as panomat-set builds it (Form1\n"
    "with its start-up, not connected). Floor: window_bare, a Qt Widgets window with\n"
    "one label, as large as the tool's window (its backing store grows with the area).\n"
    "Each is started, shown on the display, left idle for one second after\n"
    "its first frame, and then its VmRSS is read from /proc and the process ended. The\n"
    "two run in turn, the order swapped every pair. Prints median, min and max of each\n"
    "side in MiB and the ratio of the medians.\n"
    "\n"
    "Usage: idle_memory [--runs N]   (default 5 pairs; needs a display)\n";
#else
constexpr bool Memory = false;
const char* const Method =
    "Start-up to the window shown, the tool's window against a bare window, as paired\n"
    "whole-process runs.\n"
    "\n"
    "Figure: window_app, the tool's main window built as panomat-set builds it (Form1\n"
    "with its start-up: controls, lists filled, not connected). Floor: window_bare, a\n"
    "Qt Widgets window with one label, as large as the tool's window. The clock runs\n"
    "from just before the process is\n"
    "forked until it reports that its window has been exposed and its first frame\n"
    "painted; the process then exits. The two run in turn, the order swapped every\n"
    "pair, after two unrecorded pairs. Prints median, min and max of each side and the\n"
    "ratio of the medians.\n"
    "\n"
    "Usage: startup [--runs N]   (default 20 pairs; needs a display)\n";
#endif

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

double residentMiB(pid_t pid) {
    const std::string path = "/proc/" + std::to_string(pid) + "/status";
    FILE* status = std::fopen(path.c_str(), "r");
    if (!status)
        fail("cannot read " + path);
    char line[256];
    long kib = -1;
    while (std::fgets(line, sizeof line, status))
        if (std::sscanf(line, "VmRSS: %ld kB", &kib) == 1)
            break;
    std::fclose(status);
    if (kib < 0)
        fail("no VmRSS in " + path);
    return double(kib) / 1024;
}

struct Run {
    double value;     // milliseconds to the window shown, or MiB resident at rest
    std::string size; // the window's, "WxH"
};

// One run of a program with its arguments.
Run run(const std::vector<std::string>& command) {
    int out[2];
    if (pipe(out) != 0)
        fail("pipe");
    std::vector<char*> argv;
    for (const std::string& a : command)
        argv.push_back(const_cast<char*>(a.c_str()));
    if (!Memory)
        argv.push_back(const_cast<char*>("--exit"));
    argv.push_back(nullptr);
    const double start = bench::nowMs();
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], STDOUT_FILENO);
        close(out[0]);
        close(out[1]);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(out[1]);
    char said[64] = {};
    pollfd ready{out[0], POLLIN, 0};
    const bool shown = poll(&ready, 1, 20000) == 1 && read(out[0], said, sizeof said - 1) > 0 &&
                       std::string(said).rfind("shown ", 0) == 0;
    const double elapsed = bench::nowMs() - start;
    if (!shown) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        fail(command[0] + " did not show its window (is there a display?)");
    }
    Run result{elapsed, std::string(said + 6, std::strcspn(said + 6, "\n"))};
    if (Memory) {
        usleep(1000 * 1000);
        result.value = residentMiB(pid);
        kill(pid, SIGTERM);
    }
    waitpid(pid, nullptr, 0);
    close(out[0]);
    return result;
}

} // namespace

int main(int argc, char* argv[]) {
    const int runs = bench::parseRuns(argc, argv, Memory ? 5 : 20, Method);
    const std::vector<std::string> app = {BENCH_DIR "/window_app"};
    const std::vector<std::string> bare = {BENCH_DIR "/window_bare", "--size", run(app).size};
    bench::Samples figure, floor;
    bench::alternate(
        runs, Memory ? 0 : 2, [&] { return run(app).value; }, [&] { return run(bare).value; },
        figure, floor);
    if (Memory)
        bench::report("idle_memory", "tool's window, idle, resident", figure,
                      "window with one label, " + bare[2] + ", idle, resident", floor, "MiB");
    else
        bench::report("startup", "start to tool's window shown", figure,
                      "start to window with one label, " + bare[2] + ", shown", floor, "ms");
    return 0;
}
