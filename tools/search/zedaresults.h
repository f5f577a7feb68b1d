#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

struct FoundDevice {
    quint32 address;
    QString mac; // "XX-XX-XX-XX-XX-XX"
};

// MAC addresses the kernel's neighbour table knows, from the text of /proc/net/arp.
// Incomplete entries (flags 0x0) and all-zero addresses are left out.
QHash<quint32, QString> parseNeighbourTable(const QByteArray& text);

// Hosts on loopback have no neighbour entry; they get a locally administered
// address made from the IPv4 address, 02-00-a-b-c-d, the same on every search.
QString derivedMac(quint32 address);

// The result files the tool reads: MAC.txt has one MAC per line; IP.txt is a single
// line of 15-character zero-padded addresses. Lines end with CRLF; no devices gives
// empty files.
QByteArray macFileBytes(const QList<FoundDevice>& devices);
QByteArray ipFileBytes(const QList<FoundDevice>& devices);

// Replaces both files in `folder` as a whole; false with *error set on failure.
bool writeResultFiles(const QString& folder, const QList<FoundDevice>& devices, QString* error);
