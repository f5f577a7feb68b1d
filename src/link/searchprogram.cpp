#include "link/searchprogram.h"

#include "protocol/legacytext.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTextStream>

namespace search {

namespace {

constexpr int AddressField = 15;

QString besideProgram(const QString& name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

} // namespace

QString program() {
    const QString beside = besideProgram(Program);
    if (QFileInfo(beside).isFile())
        return beside;
    const QString installed =
        QDir::cleanPath(besideProgram(QStringLiteral(PANOMAT_HELPER_DIR "/") + Program));
    return QFileInfo(installed).isFile() ? installed : beside;
}

QString resultFolder(const QString& program) {
    const QString folder = QCoreApplication::applicationDirPath();
    if (QFileInfo(program).absolutePath() == folder && QFileInfo(folder).isWritable())
        return folder;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("panomat-set"));
}

QStringList arguments(const QString& folder) {
    if (folder == QCoreApplication::applicationDirPath())
        return {};
    return {QStringLiteral("--output-dir"), folder};
}

std::optional<QStringList> readLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Latin1);
    QStringList lines;
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

QStringList macs(const QStringList& macLines) {
    QStringList result;
    for (const QString& line : macLines)
        result << line.left(MacLength);
    return result;
}

} // namespace search

QString addressFromLine(const QString& line, int index) {
    QStringList octets;
    for (int offset : {1, 5, 9, 13}) {
        const QString field = legacy::mid(line, search::AddressField * index + offset, 3);
        octets << QString::number(legacy::roundHalfEven(legacy::val(field)));
    }
    return octets.join(u'.');
}
