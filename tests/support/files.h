#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <sys/stat.h>

// Writes `bytes` to `path`, replacing what was there. False on failure.
inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Puts at `path` what a reader must refuse by its kind: "fifo", "zero" (a link to /dev/zero),
// "folder", or "large" (a line, then a sparse tail up to `size` bytes). False on failure.
inline bool makeNoFile(const QString& kind, const QString& path, qint64 size = 200 << 20) {
    if (kind == QLatin1String("fifo"))
        return mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
    if (kind == QLatin1String("zero"))
        return QFile::link(QStringLiteral("/dev/zero"), path);
    if (kind == QLatin1String("folder"))
        return QDir().mkdir(path);
    return writeFile(path, "no-host\n") && QFile::resize(path, size);
}

// Another local user's private file, and links to it planted where results are written.
struct PlantedLink {
    QTemporaryDir elsewhere;
    QString secret = elsewhere.filePath(QStringLiteral("shadow"));
    bool made = writeFile(secret, "root:x") &&
                QFile::setPermissions(secret, QFile::ReadOwner | QFile::WriteOwner);

    bool plantAt(const QString& path) const { return made && QFile::link(secret, path); }
    // The file pointed to is as it was, and still private.
    bool untouched() const {
        return readFile(secret) == "root:x" &&
               !(QFile::permissions(secret) & (QFile::ReadOther | QFile::ReadGroup));
    }
    // The link was replaced by a file of its own.
    static bool replaced(const QString& path) {
        const QFileInfo written(path);
        return written.isFile() && !written.isSymLink();
    }
};
