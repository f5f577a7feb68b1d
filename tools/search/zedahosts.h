#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Which hosts the search probes. One entry per line (or separated by commas or blanks
// in the environment variable), '#' starts a comment:
//   127.0.0.2             one address
//   127.0.0.2-127.0.0.5   a range, both ends included
//   127.0.0.2-5           the same, the end given as its last octet
//   127.0.0.0/24          a network; its network and broadcast addresses are left out
//                         for prefixes up to /30
struct HostList {
    // A /16. Larger entries are refused; a list that names more hosts in all is cut
    // to the first this many, counted before anything is expanded.
    static constexpr int MaxHosts = 65536;

    // Texts kept for refused entries: a list of garbage must not turn into as many
    // messages. The rest are only counted.
    static constexpr int MaxErrorTexts = 20;

    std::vector<uint32_t> hosts;     // sorted, no duplicates
    std::vector<std::string> errors; // one text per refused entry, with its line number
    size_t refused = 0;              // every refused entry, those beyond the texts too
};

HostList parseHostList(std::string_view text);
// "a.b.c.d" with decimal octets only: hand-written lists must not read "010" as 8.
std::optional<uint32_t> parseIpv4(std::string_view text);
std::string ipv4Text(uint32_t address);
