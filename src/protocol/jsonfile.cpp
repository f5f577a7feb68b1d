#include "protocol/jsonfile.h"

#include "protocol/address.h"
#include "protocol/safefile.h"

#include <QJsonDocument>
#include <QJsonParseError>

namespace jsonfile {

namespace {

// A file larger than this is no settings file or plan (255 controllers' settings take
// well under 1 MiB).
constexpr qint64 MaxBytes = 16 * 1024 * 1024;

QString lineAndColumn(const QByteArray& text, qsizetype offset) {
    const QByteArray before = text.left(offset);
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = offset - (before.lastIndexOf('\n') + 1) + 1;
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

} // namespace

std::optional<QJsonObject> read(const QString& path, const QString& expected, QString* error) {
    QString why;
    const std::optional<QByteArray> read = safefile::readRegularFile(path, MaxBytes, &why);
    if (!read) {
        *error = QStringLiteral("%1: %2").arg(path, why);
        return std::nullopt;
    }
    const QByteArray& text = *read;
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
                     .arg(path,
                          format.isEmpty() ? QStringLiteral("(none)") : protocol::shownText(format),
                          expected);
        return std::nullopt;
    }
    return document.object();
}

bool write(const QString& path, const QJsonObject& object, QString* error) {
    QString why;
    if (!safefile::writeFileReplacing(path, QJsonDocument(object).toJson(QJsonDocument::Indented),
                                      &why)) {
        *error = QStringLiteral("%1: %2").arg(path, why);
        return false;
    }
    return true;
}

} // namespace jsonfile
