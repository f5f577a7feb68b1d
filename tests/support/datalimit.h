#pragma once

#include <sys/resource.h>

// Limits the data segment of a child process, to show that it does not take memory in
// proportion to its input. AddressSanitizer reserves far more address space than such
// a limit allows for its shadow memory, so under it the limit is left out: the plain
// build checks the bound, the sanitizer build the memory errors. False on failure.
inline bool limitData(rlim_t bytes) {
#if defined(__SANITIZE_ADDRESS__)
    (void)bytes;
    return true;
#else
    const rlimit data{bytes, bytes};
    return setrlimit(RLIMIT_DATA, &data) == 0;
#endif
}
