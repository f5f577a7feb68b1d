// ZEDA.exe: finds the video-wall controllers among the hosts its configuration names,
// or on the networks of the machine's interfaces when none are named, and writes MAC.txt and IP.txt
// for the configuration tool: beside itself, or where
// --output-dir says (an installed tool cannot write its own folder).
//
// The program is plain C++ on POSIX sockets. It lives for one search, and the
// operator waits for the whole of it: on a fast network, loading a toolkit would be
// most of that time.

#include "zedafiles.h"
#include "zedahosts.h"
#include "zedanetworks.h"
#include "zedaplatform.h"
#include "zedaprobe.h"
#include "zedaresults.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

namespace fs = std::filesystem;

namespace {

const std::string Usage =
    std::string("Usage: ZEDA.exe [options]\n"
                "Probes the configured hosts on TCP port 23 for video-wall controllers\n"
                "and writes MAC.txt and IP.txt beside the program. With no host list\n"
                "(ZEDA_HOSTS, ") +
    UserHostListHint + ", " + SystemHostListHint +
    ",\n"
    "ZEDA.conf beside the program) it probes the networks of this machine's\n"
    "interfaces: each whole up to a /22, else the /24 around the own address.\n"
    "\n"
    "Options:\n"
    "  -h, --help              Displays help on commandline options.\n"
    "  -v, --version           Displays version information.\n"
    "  --output-dir <dir>      Write the result files into <dir> instead.\n";

void say(const std::string& text) {
    std::fprintf(stderr, "ZEDA: %s\n", text.c_str());
}

std::string plural(size_t n, const char* noun) {
    return std::to_string(n) + ' ' + noun + (n == 1 ? "" : "s");
}

#ifdef _WIN32
constexpr char Separator = '\\';
#else
constexpr char Separator = '/';
#endif
const std::string ListName = std::string("panomat-set") + Separator + "ZEDA.conf";

// The first `name` in the configuration folders, the user's first.
std::optional<std::string> locateConfig(const std::string& name) {
    for (const std::string& folder : configFolders()) {
        std::error_code error;
        const std::string path = folder + Separator + name;
        if (fs::is_regular_file(path, error))
            return path;
    }
    return std::nullopt;
}

// A list that names nothing at all (the shipped example, all comments) is no list: the
// search then looks at the machine's own networks. One with entries that are all
// refused is a list, and probes nothing.
bool namesNothing(const HostList& list) {
    return list.hosts.empty() && list.refused == 0 && list.errors.empty();
}

struct Configured {
    HostList list;
    std::string source; // as shown: "ZEDA_HOSTS" or the file; empty when none is configured
};

// The environment variable wins; then the user's panomat-set/ZEDA.conf in the XDG
// configuration folder (~/.config), the system's (/etc/xdg), and last the list beside
// the program. A list that cannot be opened, or names nothing, means none is
// configured; one that is there but is no host list (a FIFO, a device, a folder,
// larger than the cap) ends the search with exit status 2.
std::optional<Configured> configuredHosts(const std::string& folder) {
    const char* fromEnv = std::getenv("ZEDA_HOSTS");
    if (fromEnv && std::string_view(fromEnv).find_first_not_of(" \t\r\n") != std::string::npos) {
        say("hosts from ZEDA_HOSTS");
        return Configured{parseHostList(fromEnv), "ZEDA_HOSTS"};
    }
    const std::string path = locateConfig(ListName).value_or(folder + Separator + "ZEDA.conf");
    std::string text, why;
    switch (readRegularFile(path, MaxHostListBytes, &text, &why)) {
    case ReadResult::Missing:
        say("no host list: ZEDA_HOSTS is not set and " + path + " cannot be read (" + why +
            "); searching the networks of this machine");
        return Configured{};
    case ReadResult::Refused:
        say("cannot read the host list " + path + ": " + why);
        return std::nullopt;
    case ReadResult::Ok:
        break;
    }
    HostList list = parseHostList(text);
    if (namesNothing(list)) {
        say("the host list " + path + " names no host; searching the networks of this machine");
        return Configured{};
    }
    say("hosts from " + path);
    return Configured{std::move(list), shownPath(path)};
}

// What is probed goes to standard output, a line each, as the probe starts: the
// window shows the last line while the search runs. Flushed at once, as the output
// is a pipe there.
void announce(const std::string& line) {
    std::fprintf(stdout, "%s\n", line.c_str());
    std::fflush(stdout);
}

// The machine's own networks, or none with the reason on the error output.
std::vector<uint32_t> machineNetworkHosts() {
    const NetworkPlan plan = networksToSearch(machineInterfaces());
    for (const std::string& note : plan.notes)
        say(note);
    if (plan.networks.empty()) {
        say(std::string("no network to search: no interface is up with an IPv4 address; name "
                        "hosts in ZEDA_HOSTS or ") +
            UserHostListHint);
        return {};
    }
    std::string all;
    for (size_t i = 0; i < plan.networks.size(); ++i) {
        const SearchedNetwork& n = plan.networks[i];
        const std::string network =
            networkText(n.network, n.prefix) + " on " + escaped(n.interfaceName, 32);
        announce("probing " + network + " (" + plural(n.hosts, "host") + ")");
        if (i < 3)
            all += (i ? ", " : "") + network;
    }
    // The last line sums up the search when it spans several networks.
    if (plan.networks.size() > 1)
        announce("probing " + plural(plan.networks.size(), "network") + ": " + all +
                 (plan.networks.size() > 3
                      ? " and " + std::to_string(plan.networks.size() - 3) + " more"
                      : std::string()) +
                 " (" + plural(plan.hosts.size(), "host") + ")");
    return plan.hosts;
}

} // namespace

int main(int argc, char* argv[]) {
    std::optional<std::string> outputDir;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            std::fputs(Usage.c_str(), stdout);
            return 0;
        }
        if (arg == "-v" || arg == "--version") {
            std::printf("ZEDA.exe %s\n", PANOMAT_VERSION);
            return 0;
        }
        if (arg == "--output-dir" && i + 1 < argc)
            outputDir = argv[++i];
        else if (arg.rfind("--output-dir=", 0) == 0)
            outputDir = std::string(arg.substr(std::strlen("--output-dir=")));
        else {
            std::fprintf(stderr, "ZEDA.exe: %s '%s'.\n\n%s",
                         arg == "--output-dir" ? "Missing value after" : "Unknown option", argv[i],
                         Usage.c_str());
            return 1;
        }
    }
    const std::string folder = programFolder(argv[0]);
    const std::string results = outputDir.value_or(folder);
    const auto started = std::chrono::steady_clock::now();

    const std::optional<Configured> configured = configuredHosts(folder);
    if (!configured)
        return 2;
    HostList list = configured->list;
    for (const std::string& e : list.errors)
        say("ignored " + e);
    if (list.refused > size_t(HostList::MaxErrorTexts))
        say("ignored " + std::to_string(list.refused - HostList::MaxErrorTexts) +
            " more entries that are not hosts");
    if (configured->source.empty())
        list.hosts = machineNetworkHosts();
    else
        announce("probing the host list " + configured->source + " (" +
                 plural(list.hosts.size(), "host") + ")");
    say("probing " + plural(list.hosts.size(), "host") + " on port 23");

    std::vector<ProbeFound> controllers;
    std::string error;
    const auto announce = [](const ProbeFound& f) {
        // The version is the host's own text: escaped, so it cannot drive the terminal.
        say("controller at " + ipv4Text(f.address) + " (" + escaped(f.version) + ")");
    };
    if (!probeHosts(list.hosts, ProbeSettings{}, announce, &controllers, &error)) {
        say(error);
        return 1;
    }

    const auto neighbours = neighbourMacs();
    std::vector<FoundDevice> devices;
    for (const ProbeFound& f : controllers) {
        const auto known = neighbours.find(f.address);
        devices.push_back(
            {f.address, known != neighbours.end() ? known->second : derivedMac(f.address)});
    }

    std::error_code made;
    fs::create_directories(results, made);
    if (made) {
        say("cannot create " + results + ": " + made.message());
        return 1;
    }
    if (!writeResultFiles(results, devices, &error)) {
        say(error);
        return 1;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.1f", took.count());
    say(plural(devices.size(), "controller") + " found among " + plural(list.hosts.size(), "host") +
        " in " + seconds + " s; MAC.txt and IP.txt written to " + results);
    return 0;
}
