#include "zedanetworks.h"

#include "zedafiles.h"
#include "zedahosts.h"
#include "zedaifflags.h"

#include <algorithm>
#include <bit>
#include <set>
#ifndef _WIN32
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#endif

namespace {

// Linux masks are contiguous; anything else counts by its leading ones.
int prefixOf(uint32_t netmask) {
    return std::countl_one(netmask);
}

uint32_t maskOf(int prefix) {
    return prefix == 0 ? 0 : ~uint32_t(0) << (32 - prefix);
}

bool isLoopbackAddress(uint32_t a) {
    return (a >> 24) == 127;
}

} // namespace

std::string networkText(uint32_t network, int prefix) {
    return ipv4Text(network) + '/' + std::to_string(prefix);
}

NetworkPlan networksToSearch(const std::vector<InterfaceAddress>& interfaces) {
    NetworkPlan plan;
    std::set<uint32_t> own;
    for (const InterfaceAddress& i : interfaces)
        own.insert(i.address);

    std::set<std::pair<uint32_t, int>> seen;
    std::set<uint32_t> hosts;
    for (const InterfaceAddress& i : interfaces) {
        const std::string where = " on " + escaped(i.name, 32);
        if (!(i.flags & IFF_UP) || !(i.flags & IFF_RUNNING) || (i.flags & IFF_LOOPBACK) ||
            i.address == 0 || i.netmask == 0 || isLoopbackAddress(i.address))
            continue;
        const int ownPrefix = prefixOf(i.netmask);
        const int prefix = ownPrefix < LargestWholePrefix ? 24 : ownPrefix;
        const uint32_t mask = maskOf(prefix);
        uint32_t lo = i.address & mask, hi = lo | ~mask;
        if (prefix == 32) {
            // A point-to-point link has one other host, its peer; an address alone on
            // its interface has none.
            if (!i.peer || own.count(i.peer)) {
                plan.notes.push_back(networkText(i.address, 32) + where + " has no other host");
                continue;
            }
            lo = hi = i.peer;
        } else if (prefix <= 30) { // a /31 has no network or broadcast address
            ++lo;
            --hi;
        }
        const uint32_t network = prefix == 32 ? lo : i.address & mask;
        if (!seen.insert({network, prefix}).second)
            continue; // a second address on the same network: probed once
        if (plan.networks.size() == MaxNetworks) {
            plan.notes.push_back("left out " + networkText(network, prefix) + where +
                                 ": more than " + std::to_string(MaxNetworks) + " networks");
            continue;
        }
        if (prefix != ownPrefix)
            plan.notes.push_back(networkText(i.address & i.netmask, ownPrefix) + where +
                                 " is larger than a /" + std::to_string(LargestWholePrefix) +
                                 ": probing only " + networkText(network, prefix) + " around " +
                                 ipv4Text(i.address));
        SearchedNetwork n{i.name, network, prefix, 0};
        for (uint64_t a = lo; a <= hi; ++a)
            if (!own.count(uint32_t(a))) {
                hosts.insert(uint32_t(a));
                ++n.hosts;
            }
        plan.networks.push_back(n);
    }
    plan.hosts.assign(hosts.begin(), hosts.end());
    return plan;
}

// Windows: zedaplatform_win.cpp.
#ifndef _WIN32
std::vector<InterfaceAddress> machineInterfaces() {
    std::vector<InterfaceAddress> result;
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return result;
    const auto ipv4 = [](const sockaddr* a) -> uint32_t {
        return a && a->sa_family == AF_INET
                   ? ntohl(reinterpret_cast<const sockaddr_in*>(a)->sin_addr.s_addr)
                   : 0;
    };
    // A machine with thousands of interfaces is listed in part: only MaxNetworks
    // networks are probed anyway, and the own addresses beyond are simply probed.
    constexpr size_t MaxAddresses = 4096;
    for (const ifaddrs* i = list; i && result.size() < MaxAddresses; i = i->ifa_next) {
        if (!i->ifa_addr || i->ifa_addr->sa_family != AF_INET)
            continue;
        InterfaceAddress a;
        a.name = i->ifa_name ? i->ifa_name : "";
        a.flags = i->ifa_flags;
        a.address = ipv4(i->ifa_addr);
        a.netmask = ipv4(i->ifa_netmask);
        if (i->ifa_flags & IFF_POINTOPOINT)
            a.peer = ipv4(i->ifa_dstaddr);
        result.push_back(std::move(a));
    }
    freeifaddrs(list);
    return result;
}
#endif
