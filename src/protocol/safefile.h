#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// Files the programs read and write: settings backups, wall plans, the monitor's
// saves. They may lie in folders other users share, and a file named on the command
// line may be anything. Reading never waits on a FIFO nor takes more than the cap;
// writing never opens a name another user could have planted.
namespace safefile {

// The bytes of path when it is a regular file (a link to one is fine) of at most cap
// bytes, read in chunks. A FIFO, a device or a folder is refused by name without
// reading or waiting; so is a larger file. *error says why, without the path.
std::optional<QByteArray> readRegularFile(const QString& path, qint64 cap, QString* error);

// Replaces path with bytes as a whole: written to a new file of an unpredictable name
// created exclusively in path's folder, synced, then renamed over path. Whatever sits
// at path (a link included) is replaced, never followed; an existing regular file's
// permissions are kept. On failure path is as it was and *error says why.
bool writeFileReplacing(const QString& path, const QByteArray& bytes, QString* error);

} // namespace safefile
