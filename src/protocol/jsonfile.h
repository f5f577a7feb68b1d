#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

// Reading and writing the JSON files of settings backups and wall plans. Every
// failure comes back as a message for the operator that names the file and, for
// malformed text, the line and column.
namespace jsonfile {

// The top-level object of path, checked to carry "format": expected.
std::optional<QJsonObject> read(const QString& path, const QString& expected, QString* error);

// Writes the object whole, or leaves the old file as it was.
bool write(const QString& path, const QJsonObject& object, QString* error);

} // namespace jsonfile
