#include "zedaresults.h"

#include <QDir>
#include <QHostAddress>
#include <QSaveFile>

QHash<quint32, QString> parseNeighbourTable(const QByteArray& text) {
    // IP address  HW type  Flags  HW address  Mask  Device; the first line is a header.
    QHash<quint32, QString> table;
    const QList<QByteArray> lines = text.split('\n');
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QList<QByteArray> f = lines[i].simplified().split(' ');
        if (f.size() < 4)
            continue;
        bool ok = false;
        const uint flags = f[2].toUInt(&ok, 16);
        const QHostAddress ip(QString::fromLatin1(f[0]));
        const QByteArray mac = f[3].toUpper();
        if (!ok || flags == 0 || ip.protocol() != QHostAddress::IPv4Protocol || mac.size() != 17 ||
            mac == "00:00:00:00:00:00")
            continue;
        table.insert(ip.toIPv4Address(), QString::fromLatin1(mac).replace(':', '-'));
    }
    return table;
}

QString derivedMac(quint32 a) {
    return QStringLiteral("02-00-%1-%2-%3-%4")
        .arg(a >> 24, 2, 16, QChar('0'))
        .arg((a >> 16) & 0xFF, 2, 16, QChar('0'))
        .arg((a >> 8) & 0xFF, 2, 16, QChar('0'))
        .arg(a & 0xFF, 2, 16, QChar('0'))
        .toUpper();
}

QByteArray macFileBytes(const QList<FoundDevice>& devices) {
    QByteArray out;
    for (const FoundDevice& d : devices)
        out += d.mac.toLatin1() + "\r\n";
    return out;
}

QByteArray ipFileBytes(const QList<FoundDevice>& devices) {
    if (devices.isEmpty())
        return {};
    QByteArray out;
    for (const FoundDevice& d : devices)
        for (int octet = 0; octet < 4; ++octet) {
            if (octet > 0)
                out += '.';
            out +=
                QByteArray::number((d.address >> (24 - 8 * octet)) & 0xFF).rightJustified(3, '0');
        }
    return out + "\r\n";
}

bool writeResultFiles(const QString& folder, const QList<FoundDevice>& devices, QString* error) {
    const QDir dir(folder);
    const std::pair<const char*, QByteArray> files[] = {{"MAC.txt", macFileBytes(devices)},
                                                        {"IP.txt", ipFileBytes(devices)}};
    for (const auto& [name, bytes] : files) {
        // QSaveFile writes beside the old file and renames it over: the tool never
        // sees a half-written file, and the old contents are replaced whole.
        QSaveFile file(dir.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() ||
            !file.commit()) {
            *error = QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
    }
    return true;
}
