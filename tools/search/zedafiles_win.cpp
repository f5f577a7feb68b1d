// Files on Windows: the same promises as on Linux, through the Win32 calls. Names are
// in the process's code page, as the command line and the environment give them.
#include "zedafiles.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

std::string sizeText(size_t bytes) {
    if (bytes % (1 << 20) == 0)
        return std::to_string(bytes >> 20) + " MiB";
    if (bytes % 1024 == 0)
        return std::to_string(bytes >> 10) + " KiB";
    return std::to_string(bytes) + " bytes";
}

std::string systemMessage(DWORD code) {
    char* text = nullptr;
    const DWORD n = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                       FORMAT_MESSAGE_IGNORE_INSERTS,
                                   nullptr, code, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string out = n && text ? std::string(text, n) : "error " + std::to_string(code);
    if (text)
        LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == '.'))
        out.pop_back();
    return out;
}

// Closes on every path out.
struct Handle {
    HANDLE h;
    explicit Handle(HANDLE handle) : h(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (h != INVALID_HANDLE_VALUE)
            CloseHandle(h);
    }
};

// Twelve hex digits nobody can guess in advance.
std::string randomSuffix() {
    std::random_device device; // the system's generator (rand_s) on MinGW-w64
    char text[13];
    for (int i = 0; i < 6; ++i)
        std::snprintf(text + 2 * i, 3, "%02x", unsigned(device() & 0xFF));
    return text;
}

bool writeAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD wrote = 0;
        const DWORD chunk = DWORD(std::min<size_t>(bytes.size(), 1 << 20));
        if (!WriteFile(file, bytes.data(), chunk, &wrote, nullptr) || wrote == 0)
            return false;
        bytes.remove_prefix(wrote);
    }
    return true;
}

// One file into `folder`; false with GetLastError() set.
bool replaceOne(const std::string& folder, const char* name, std::string_view bytes) {
    const std::string final = folder + '\\' + name;
    std::string scratch;
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int attempt = 0; file == INVALID_HANDLE_VALUE && attempt < 100; ++attempt) {
        scratch = folder + "\\." + name + '.' + randomSuffix();
        // CREATE_NEW: whatever sits at the name already, a link included, fails the create.
        file = CreateFileA(scratch.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS)
            return false;
    }
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const bool written = writeAll(file, bytes);
    DWORD saved = GetLastError();
    CloseHandle(file);
    // The move replaces the entry at the final name as a whole; a link there is not
    // followed.
    if (written && MoveFileExA(scratch.c_str(), final.c_str(), MOVEFILE_REPLACE_EXISTING))
        return true;
    if (written)
        saved = GetLastError();
    DeleteFileA(scratch.c_str());
    SetLastError(saved);
    return false;
}

} // namespace

ReadResult readRegularFile(const std::string& path, size_t cap, std::string* text,
                           std::string* why) {
    text->clear();
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        *why = "it is a folder";
        return ReadResult::Refused;
    }
    const Handle file(CreateFileA(path.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.h == INVALID_HANDLE_VALUE) {
        *why = systemMessage(GetLastError());
        return ReadResult::Missing;
    }
    // Pipes, consoles and devices (NUL, COM1, \\.\pipe\...) are no host lists.
    if (GetFileType(file.h) != FILE_TYPE_DISK) {
        *why = "it is not a regular file";
        return ReadResult::Refused;
    }
    const std::string tooLarge = "it is larger than " + sizeText(cap);
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file.h, &size) && uint64_t(size.QuadPart) > cap) {
        *why = tooLarge;
        return ReadResult::Refused;
    }
    // A file may grow while it is read: the cap is kept by the reads themselves.
    char chunk[64 * 1024];
    for (;;) {
        DWORD n = 0;
        if (!ReadFile(file.h, chunk, sizeof chunk, &n, nullptr)) {
            *why = systemMessage(GetLastError());
            text->clear();
            return ReadResult::Refused;
        }
        if (n == 0)
            return ReadResult::Ok;
        if (text->size() + n > cap) {
            *why = tooLarge;
            text->clear();
            return ReadResult::Refused;
        }
        text->append(chunk, n);
    }
}

bool writeFilesReplacing(const std::string& folder, const std::vector<FileToWrite>& files,
                         std::string* error) {
    const DWORD attributes = GetFileAttributesA(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        *error = "cannot write into " + folder + ": " +
                 (attributes == INVALID_FILE_ATTRIBUTES ? systemMessage(GetLastError())
                                                        : std::string("it is not a folder"));
        return false;
    }
    for (const FileToWrite& f : files)
        if (!replaceOne(folder, f.name, f.bytes)) {
            *error = "cannot write " + folder + '\\' + f.name + ": " + systemMessage(GetLastError());
            return false;
        }
    return true;
}
