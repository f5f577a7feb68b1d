#include "zedaplatform.h"

#include "zedafiles.h"
#include "zedaresults.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

const char* const UserHostListHint = "~/.config/panomat-set/ZEDA.conf";
const char* const SystemHostListHint = "/etc/xdg/panomat-set/ZEDA.conf";

std::string programFolder(const char* argv0) {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return (error ? fs::absolute(argv0, error) : self).parent_path().string();
}

// The user's XDG configuration folder (~/.config), then the system's
// ($XDG_CONFIG_DIRS, /etc/xdg when unset).
std::vector<std::string> configFolders() {
    std::vector<std::string> folders;
    const char* home = std::getenv("XDG_CONFIG_HOME");
    if (home && *home == '/')
        folders.emplace_back(home);
    else if (const char* user = std::getenv("HOME"))
        folders.push_back(std::string(user) + "/.config");
    const char* dirs = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream system(dirs && *dirs ? dirs : "/etc/xdg");
    for (std::string folder; std::getline(system, folder, ':');)
        if (!folder.empty() && folder.front() == '/')
            folders.push_back(folder);
    return folders;
}

std::string shownPath(const std::string& path) {
    const char* home = std::getenv("HOME");
    const std::string prefix = home && *home == '/' ? std::string(home) + '/' : std::string();
    if (!prefix.empty() && prefix != "//" && path.rfind(prefix, 0) == 0)
        return escaped("~/" + path.substr(prefix.size()), 256);
    return escaped(path, 256);
}

std::unordered_map<uint32_t, std::string> neighbourMacs() {
    std::string text, why;
    // None on a system without IPv4: no MACs known.
    readRegularFile("/proc/net/arp", MaxHostListBytes, &text, &why);
    return parseNeighbourTable(text);
}
