#include "protocol/safefile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace safefile {

namespace {

// Closes on every way out.
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

QString systemError(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

QString sizeText(qint64 bytes) {
    if (bytes % (1 << 20) == 0)
        return QStringLiteral("%1 MiB").arg(bytes >> 20);
    if (bytes % 1024 == 0)
        return QStringLiteral("%1 KiB").arg(bytes >> 10);
    return QStringLiteral("%1 bytes").arg(bytes);
}

QString notRegular(mode_t mode) {
    if (S_ISDIR(mode))
        return QStringLiteral("it is a folder");
    const char* kind = S_ISFIFO(mode)   ? "a FIFO"
                       : S_ISCHR(mode)  ? "a character device"
                       : S_ISBLK(mode)  ? "a block device"
                       : S_ISSOCK(mode) ? "a socket"
                                        : nullptr;
    return kind ? QStringLiteral("it is %1, not a regular file").arg(QLatin1String(kind))
                : QStringLiteral("it is not a regular file");
}

bool writeAll(int fd, const QByteArray& bytes) {
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        left -= n;
    }
    return true;
}

} // namespace

std::optional<QByteArray> readRegularFile(const QString& path, qint64 cap, QString* error) {
    const QByteArray name = QFile::encodeName(path);
    // O_NONBLOCK: a FIFO opened for reading would wait for a writer for ever.
    const Descriptor file(::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.fd < 0) {
        *error = systemError(errno);
        return std::nullopt;
    }
    struct stat st {};
    if (::fstat(file.fd, &st) != 0) {
        *error = systemError(errno);
        return std::nullopt;
    }
    if (!S_ISREG(st.st_mode)) {
        *error = notRegular(st.st_mode);
        return std::nullopt;
    }
    const QString tooLarge = QStringLiteral("larger than %1").arg(sizeText(cap));
    if (st.st_size > cap) {
        *error = tooLarge;
        return std::nullopt;
    }
    const int flags = ::fcntl(file.fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(file.fd, F_SETFL, flags & ~O_NONBLOCK);
    // The size said is not trusted: a file may grow while it is read.
    QByteArray bytes;
    char chunk[64 * 1024];
    for (;;) {
        const ssize_t n = ::read(file.fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            *error = systemError(errno);
            return std::nullopt;
        }
        if (n == 0)
            return bytes;
        if (bytes.size() + n > cap) {
            *error = tooLarge;
            return std::nullopt;
        }
        bytes.append(chunk, n);
    }
}

bool writeFileReplacing(const QString& path, const QByteArray& bytes, QString* error) {
    const QFileInfo info(path);
    // The folder as named, not resolved: only the last component must not be followed.
    const Descriptor dir(::open(QFile::encodeName(info.absolutePath()).constData(),
                                O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.fd < 0) {
        *error = systemError(errno);
        return false;
    }
    const QByteArray finalName = QFile::encodeName(info.fileName());
    if (finalName.isEmpty() || finalName == "." || finalName == "..") {
        *error = systemError(EISDIR);
        return false;
    }
    // A backup made private stays private; a link at the name tells nothing.
    mode_t mode = 0666;
    struct stat old {};
    if (::fstatat(dir.fd, finalName.constData(), &old, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(old.st_mode) && old.st_uid == ::geteuid())
        mode = old.st_mode & 07777;

    QByteArray scratch;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        const quint64 random = QRandomGenerator::system()->generate64();
        scratch = '.' + finalName + '.' + QByteArray::number(random, 36);
        // O_EXCL with O_NOFOLLOW: a link planted at this name fails, it is never followed.
        fd = ::openat(dir.fd, scratch.constData(),
                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (fd < 0 && errno != EEXIST) {
            *error = systemError(errno);
            return false;
        }
    }
    if (fd < 0) {
        *error = systemError(EEXIST);
        return false;
    }
    // The umask applied at creation; a kept mode is set as it was.
    bool ok = (mode == 0666 || ::fchmod(fd, mode) == 0) && writeAll(fd, bytes) && ::fsync(fd) == 0;
    int failure = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        failure = errno;
    }
    // rename() replaces whatever is at the final name as a whole, a link included.
    if (ok && ::renameat(dir.fd, scratch.constData(), dir.fd, finalName.constData()) != 0) {
        ok = false;
        failure = errno;
    }
    if (!ok) {
        ::unlinkat(dir.fd, scratch.constData(), 0);
        *error = systemError(failure);
    }
    return ok;
}

} // namespace safefile
