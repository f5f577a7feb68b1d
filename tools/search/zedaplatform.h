#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// What the search program takes from the system it runs on: where it lies, where
// host lists are kept, and the MAC addresses the machine has seen.

// The folder the program runs from: the shipped host list lies there, and the result
// files go there unless told otherwise.
std::string programFolder(const char* argv0);

// The folders holding panomat-set/ZEDA.conf, the user's first, then the machine's.
std::vector<std::string> configFolders();

// The user's own host list as the messages name it.
extern const char* const UserHostListHint;
// The machine's list as the messages name it.
extern const char* const SystemHostListHint;

// A path as the operator knows it (on Linux their home folder as "~"), escaped.
std::string shownPath(const std::string& path);

// The neighbour table: MAC addresses ("XX-XX-XX-XX-XX-XX") of IPv4 hosts this machine
// has reached. Empty when it cannot be read.
std::unordered_map<uint32_t, std::string> neighbourMacs();
