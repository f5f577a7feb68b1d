#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct FoundDevice {
    uint32_t address;
    std::string mac; // "XX-XX-XX-XX-XX-XX"
};

// MAC addresses the kernel's neighbour table knows, from the text of /proc/net/arp.
// Incomplete entries (flags 0x0) and all-zero addresses are left out.
std::unordered_map<uint32_t, std::string> parseNeighbourTable(std::string_view text);

// Hosts on loopback have no neighbour entry; they get a locally administered
// address made from the IPv4 address, 02-00-a-b-c-d, the same on every search.
std::string derivedMac(uint32_t address);

// The result files the tool reads: MAC.txt has one MAC per line; IP.txt is a single
// line of 15-character zero-padded addresses. Lines end with CRLF; no devices gives
// empty files.
std::string macFileBytes(const std::vector<FoundDevice>& devices);
std::string ipFileBytes(const std::vector<FoundDevice>& devices);

// Replaces both files in `folder` as a whole; false with *error set on failure.
bool writeResultFiles(const std::string& folder, const std::vector<FoundDevice>& devices,
                      std::string* error);
