#include "zedaresults.h"

#include "zedafiles.h"
#include "zedahosts.h"

#include <cctype>
#include <cstdio>
#include <sstream>

std::unordered_map<uint32_t, std::string> parseNeighbourTable(std::string_view text) {
    // IP address  HW type  Flags  HW address  Mask  Device; the first line is a header.
    std::unordered_map<uint32_t, std::string> table;
    std::istringstream lines{std::string(text)};
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string ip, type, flags, mac;
        if (!(fields >> ip >> type >> flags >> mac))
            continue;
        const auto address = parseIpv4(ip);
        const unsigned long f = std::strtoul(flags.c_str(), nullptr, 16);
        if (!address || f == 0 || mac.size() != 17 || mac == "00:00:00:00:00:00")
            continue;
        for (char& c : mac)
            c = c == ':' ? '-' : char(std::toupper(static_cast<unsigned char>(c)));
        table[*address] = mac;
    }
    return table;
}

std::string derivedMac(uint32_t a) {
    char text[18];
    std::snprintf(text, sizeof text, "02-00-%02X-%02X-%02X-%02X", a >> 24, (a >> 16) & 0xFF,
                  (a >> 8) & 0xFF, a & 0xFF);
    return text;
}

std::string macFileBytes(const std::vector<FoundDevice>& devices) {
    std::string out;
    for (const FoundDevice& d : devices)
        out += d.mac + "\r\n";
    return out;
}

std::string ipFileBytes(const std::vector<FoundDevice>& devices) {
    if (devices.empty())
        return {};
    std::string out;
    for (const FoundDevice& d : devices) {
        const uint32_t a = d.address;
        char text[16];
        std::snprintf(text, sizeof text, "%03u.%03u.%03u.%03u", a >> 24, (a >> 16) & 0xFF,
                      (a >> 8) & 0xFF, a & 0xFF);
        out += text;
    }
    return out + "\r\n";
}

// Each file is written beside the old one and renamed over it: the tool never sees a
// half-written file, and the old contents are replaced whole. Nothing is synced to
// disk: the tool reads the files at once, and a search lost to a power cut is simply
// run again; on a fast network the sync would be most of the search's own time.
bool writeResultFiles(const std::string& folder, const std::vector<FoundDevice>& devices,
                      std::string* error) {
    return writeFilesReplacing(
        folder, {{"MAC.txt", macFileBytes(devices)}, {"IP.txt", ipFileBytes(devices)}}, error);
}
