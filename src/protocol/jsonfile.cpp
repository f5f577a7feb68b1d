#include "protocol/jsonfile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>

namespace jsonfile {

namespace {

// A file larger than this is no settings file or plan.
constexpr qint64 MaxBytes = 16 * 1024 * 1024;

QString lineAndColumn(const QByteArray& text, qsizetype offset) {
    const QByteArray before = text.left(offset);
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = offset - (before.lastIndexOf('\n') + 1) + 1;
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

} // namespace

std::optional<QJsonObject> read(const QString& path, const QString& expected, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    if (file.size() > MaxBytes) {
        *error = QStringLiteral("%1: larger than %2 MiB").arg(path).arg(MaxBytes >> 20);
        return std::nullopt;
    }
    const QByteArray text = file.readAll();
    QJsonParseError parse;
    const QJsonDocument document = QJsonDocument::fromJson(text, &parse);
    if (parse.error != QJsonParseError::NoError) {
        *error = QStringLiteral("%1: %2 at %3")
                     .arg(path, parse.errorString(), lineAndColumn(text, parse.offset));
        return std::nullopt;
    }
    if (!document.isObject()) {
        *error = QStringLiteral("%1: not a JSON object").arg(path);
        return std::nullopt;
    }
    const QString format = document.object().value(QLatin1String("format")).toString();
    if (format != expected) {
        *error = QStringLiteral("%1: format is \"%2\", expected \"%3\"")
                     .arg(path, format.isEmpty() ? QStringLiteral("(none)") : format, expected);
        return std::nullopt;
    }
    return document.object();
}

bool write(const QString& path, const QJsonObject& object, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(object).toJson(QJsonDocument::Indented)) < 0 || !file.commit()) {
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace jsonfile
