#include "zedafiles.h"

#include <cstdio>

// Windows: zedafiles_win.cpp.
#ifndef _WIN32
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string sizeText(size_t bytes) {
    if (bytes % (1 << 20) == 0)
        return std::to_string(bytes >> 20) + " MiB";
    if (bytes % 1024 == 0)
        return std::to_string(bytes >> 10) + " KiB";
    return std::to_string(bytes) + " bytes";
}

// Why a file that is not a regular one is refused, in the operator's words.
std::string notRegular(mode_t mode) {
    if (S_ISDIR(mode))
        return "it is a folder";
    const char* kind = S_ISFIFO(mode)   ? "a FIFO"
                       : S_ISCHR(mode)  ? "a character device"
                       : S_ISBLK(mode)  ? "a block device"
                       : S_ISSOCK(mode) ? "a socket"
                                        : nullptr;
    return kind ? std::string("it is ") + kind + ", not a regular file"
                : "it is not a regular file";
}

// Closes on every path out, so an early return leaks nothing.
struct Descriptor {
    int fd;
    explicit Descriptor(int f) : fd(f) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (fd >= 0)
            ::close(fd);
    }
};

// Twelve hex digits from the kernel's generator: a name nobody can plant in advance.
std::string randomSuffix() {
    unsigned char bytes[6];
    if (getrandom(bytes, sizeof bytes, 0) != ssize_t(sizeof bytes)) {
        std::random_device device;
        for (unsigned char& b : bytes)
            b = static_cast<unsigned char>(device());
    }
    char text[2 * sizeof bytes + 1];
    for (size_t i = 0; i < sizeof bytes; ++i)
        std::snprintf(text + 2 * i, 3, "%02x", bytes[i]);
    return text;
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        bytes.remove_prefix(size_t(n));
    }
    return true;
}

// One file into the open folder `dir`; false with errno set.
bool replaceOne(int dir, const char* name, std::string_view bytes) {
    std::string scratch;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        scratch = std::string(".") + name + '.' + randomSuffix();
        // O_EXCL with O_NOFOLLOW: a link at this name fails with EEXIST, never followed.
        fd = ::openat(dir, scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      0666);
        if (fd < 0 && errno != EEXIST)
            return false;
    }
    if (fd < 0)
        return false;
    const bool written = writeAll(fd, bytes);
    int saved = errno;
    const bool closed = ::close(fd) == 0;
    if (written && !closed)
        saved = errno;
    // rename() replaces whatever sits at the final name, a link included, as a whole.
    if (written && closed && ::renameat(dir, scratch.c_str(), dir, name) == 0)
        return true;
    if (written && closed)
        saved = errno;
    ::unlinkat(dir, scratch.c_str(), 0);
    errno = saved;
    return false;
}

} // namespace

ReadResult readRegularFile(const std::string& path, size_t cap, std::string* text,
                           std::string* why) {
    text->clear();
    // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer for ever.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.fd < 0) {
        *why = std::strerror(errno);
        return ReadResult::Missing;
    }
    struct stat st {};
    if (::fstat(file.fd, &st) != 0) {
        *why = std::strerror(errno);
        return ReadResult::Refused;
    }
    if (!S_ISREG(st.st_mode)) {
        *why = notRegular(st.st_mode);
        return ReadResult::Refused;
    }
    const std::string tooLarge = "it is larger than " + sizeText(cap);
    if (st.st_size > off_t(cap)) {
        *why = tooLarge;
        return ReadResult::Refused;
    }
    const int flags = ::fcntl(file.fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(file.fd, F_SETFL, flags & ~O_NONBLOCK);
    // Files under /proc report no size, and a file may grow while it is read: the cap
    // is kept by the reads themselves, one chunk at a time.
    char chunk[64 * 1024];
    for (;;) {
        const ssize_t n = ::read(file.fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            *why = std::strerror(errno);
            text->clear();
            return ReadResult::Refused;
        }
        if (n == 0)
            return ReadResult::Ok;
        if (text->size() + size_t(n) > cap) {
            *why = tooLarge;
            text->clear();
            return ReadResult::Refused;
        }
        text->append(chunk, size_t(n));
    }
}

std::string sharedFolderProblem(int fd) {
    struct stat st {};
    if (::fstat(fd, &st) != 0)
        return std::strerror(errno);
    if (st.st_uid != 0)
        return "it belongs to user " + std::to_string(st.st_uid);
    const bool othersWrite = (st.st_mode & S_IWOTH) || ((st.st_mode & S_IWGRP) && st.st_gid != 0);
    if (othersWrite && !(st.st_mode & S_ISVTX))
        return "other users can write it and its sticky bit is not set";
    return {};
}

bool writeFilesReplacing(const std::string& folder, const std::vector<FileToWrite>& files,
                         std::string* error) {
    const Descriptor dir(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.fd < 0) {
        *error = "cannot write into " + folder + ": " + std::strerror(errno);
        return false;
    }
    if (::geteuid() == 0) {
        const std::string problem = sharedFolderProblem(dir.fd);
        if (!problem.empty()) {
            *error = "refusing to write into " + folder + " as root: " + problem;
            return false;
        }
    }
    for (const FileToWrite& f : files)
        if (!replaceOne(dir.fd, f.name, f.bytes)) {
            *error = "cannot write " + folder + '/' + f.name + ": " + std::strerror(errno);
            return false;
        }
    return true;
}

#endif // _WIN32

std::string escaped(std::string_view bytes, size_t limit) {
    std::string out;
    for (const char c : bytes.substr(0, limit)) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\r')
            out += "\\r";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (c == '\\')
            out += "\\\\";
        else if (u < 0x20 || u >= 0x7f) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", u);
            out += hex;
        } else
            out += c;
    }
    if (bytes.size() > limit)
        out += "...";
    return out;
}
