#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The networks the search probes when nobody named any hosts: those of the machine's
// own interfaces, as a network scanner would. An operator plugs a laptop into the
// controllers' LAN and expects one click to find them.

// One IPv4 address of an interface, as getifaddrs gives it.
struct InterfaceAddress {
    std::string name;
    unsigned flags = 0; // IFF_* as on Linux (zedaifflags.h)
    uint32_t address = 0;
    uint32_t netmask = 0;
    uint32_t peer = 0; // the far end of a point-to-point link, 0 when none
};

struct SearchedNetwork {
    std::string interfaceName;
    uint32_t network = 0; // what is probed: network/prefix
    int prefix = 0;
    size_t hosts = 0; // how many of it are probed (the machine's own left out)
};

struct NetworkPlan {
    std::vector<SearchedNetwork> networks;
    std::vector<uint32_t> hosts;    // every host to probe: sorted, once each
    std::vector<std::string> notes; // what was narrowed or left out, and why
};

// Whole networks up to this size are probed; the probe's time-outs make a /22 about
// four seconds. A larger one (a /16 of an office) would take minutes and mostly
// reach nobody: only the /24 around the interface's own address is probed.
inline constexpr int LargestWholePrefix = 22;
// Hosts with dozens of container bridges must not turn one click into minutes.
inline constexpr size_t MaxNetworks = 16;

// Interfaces that are up and running, not loopback, with an IPv4 address and mask.
// The machine's own addresses (of every interface) are never probed.
NetworkPlan networksToSearch(const std::vector<InterfaceAddress>& interfaces);

// The machine's IPv4 interface addresses; empty when they cannot be listed.
std::vector<InterfaceAddress> machineInterfaces();

// "192.0.2.0/24"
std::string networkText(uint32_t network, int prefix);
