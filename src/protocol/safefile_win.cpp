// Windows has no FIFOs or devices among ordinary file names, no links a user can plant
// without privilege, and QSaveFile already writes a fresh temporary in the folder and
// moves it over the name as a whole: Qt's own file classes keep the same promises.
#include "protocol/safefile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace safefile {

namespace {

QString sizeText(qint64 bytes) {
    if (bytes % (1 << 20) == 0)
        return QStringLiteral("%1 MiB").arg(bytes >> 20);
    if (bytes % 1024 == 0)
        return QStringLiteral("%1 KiB").arg(bytes >> 10);
    return QStringLiteral("%1 bytes").arg(bytes);
}

} // namespace

std::optional<QByteArray> readRegularFile(const QString& path, qint64 cap, QString* error) {
    const QFileInfo info(path);
    if (info.isDir()) {
        *error = QStringLiteral("it is a folder");
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return std::nullopt;
    }
    // Console and device names (CON, NUL, \\.\...) open but are no files.
    if (file.isSequential()) {
        *error = QStringLiteral("it is not a regular file");
        return std::nullopt;
    }
    const QString tooLarge = QStringLiteral("larger than %1").arg(sizeText(cap));
    if (file.size() > cap) {
        *error = tooLarge;
        return std::nullopt;
    }
    // The size said is not trusted: a file may grow while it is read.
    QByteArray bytes;
    char chunk[64 * 1024];
    for (;;) {
        const qint64 n = file.read(chunk, sizeof chunk);
        if (n < 0) {
            *error = file.errorString();
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
    QSaveFile file(path);
    // A folder that forbids replacing the file fails instead of writing in place.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

} // namespace safefile
