#pragma once

// The interface flags the search works with are Linux's (<net/if.h>). Windows names a
// few of them in its socket headers, with other values and for another purpose: they
// are replaced here, so that every part of the program means the same bits.
#ifdef _WIN32
#undef IFF_UP
#undef IFF_BROADCAST
#undef IFF_LOOPBACK
#undef IFF_POINTOPOINT
#undef IFF_RUNNING
#define IFF_UP 0x1
#define IFF_BROADCAST 0x2
#define IFF_LOOPBACK 0x8
#define IFF_POINTOPOINT 0x10
#define IFF_RUNNING 0x40
#else
#include <net/if.h>
#endif
