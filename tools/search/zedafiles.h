#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// How the search program touches files and the terminal. Its result folder may be one
// that other users share, and it may run as root: nothing here follows a name another
// user could have planted, and nothing read takes memory in proportion to what a
// hostile file offers.

// The host list is hand-written text; a larger one is no host list.
inline constexpr size_t MaxHostListBytes = 1 << 20;

enum class ReadResult { Ok, Missing, Refused };

// Reads `path` into *text when it is a regular file of at most `cap` bytes (a link to
// one is fine). A FIFO is opened without waiting for a writer and, like a device or a
// folder, refused by name; so is a larger file, before anything is read. *why says
// what went wrong. Missing: it cannot be opened at all (absent, not permitted), which
// callers treat as "none configured", as before.
ReadResult readRegularFile(const std::string& path, size_t cap, std::string* text,
                           std::string* why);

struct FileToWrite {
    const char* name;
    std::string bytes;
};

// Replaces each file in `folder`, in order: written to a new file of an unpredictable
// name, created exclusively in the folder, then renamed over the name. A link or file
// someone planted at either name is never opened, only replaced. The folder is opened
// once and used by its descriptor, so it cannot be swapped under the writes. Run as
// root, a folder another user can change is refused before anything is written.
bool writeFilesReplacing(const std::string& folder, const std::vector<FileToWrite>& files,
                         std::string* error);

#ifndef _WIN32
// Why root must not write into the folder open as `fd`, or empty: another user owns
// it, or can write it (group or world) without the sticky bit that keeps them from
// removing or renaming root's files there.
std::string sharedFolderProblem(int fd);
#endif

// A reply or entry as the terminal may see it: \r, \n, \t, \\ and \xNN for other
// control and non-ASCII bytes, at most `limit` input bytes.
std::string escaped(std::string_view bytes, size_t limit = 64);
