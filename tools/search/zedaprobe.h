#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Asks every host at once (up to `parallel` at a time) whether it is a controller:
// connect to the port, send "RVER\r\n", and a reply beginning with "VERS" within the
// time-out says yes. Absent hosts on a LAN never answer the connect, so the
// time-outs bound the whole search.
//
// The probe works on non-blocking sockets and one epoll set: one socket and one
// connect per host, and no event loop to start. The search is a short-lived program
// whose whole time the operator waits for, so its fixed cost counts.
struct ProbeSettings {
    uint16_t port = 23;
    // On a LAN a host that is there connects within milliseconds and a controller
    // answers RVER at once, so a whole /24 is done in about a second: absent hosts
    // are given up at the connect time-out, silent listeners at the reply one.
    int connectTimeoutMs = 1000;
    int replyTimeoutMs = 1000;
    int parallel = 256;
};

struct ProbeFound {
    uint32_t address;
    std::string version; // the "VERS..." reply without its line end
};

// "VERS102\r\n" is nine bytes; a host that runs on longer is not a controller.
inline constexpr size_t MaxReplyBytes = 64;

// Probes `hosts` and returns the controllers in address order. `found` is told of
// each as it answers. Returns false with *error set only when the probe cannot run
// at all (no epoll set); hosts that cannot be reached are simply not controllers.
bool probeHosts(const std::vector<uint32_t>& hosts, const ProbeSettings& settings,
                const std::function<void(const ProbeFound&)>& found,
                std::vector<ProbeFound>* result, std::string* error);
