#pragma once

// The floors' side of a round trip: a plain blocking TCP connection to port 23, as
// the least any client could do.

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>

namespace bench {

// A connected socket to `address`:23; ends the program when there is none.
inline int connectToPort23(const char* address) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(23);
    inet_pton(AF_INET, address, &to.sin_addr);
    if (fd < 0 || connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) {
        std::perror("connect");
        std::exit(1);
    }
    return fd;
}

} // namespace bench
