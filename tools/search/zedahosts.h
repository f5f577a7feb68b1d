#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Which hosts the search probes. One entry per line (or separated by commas or blanks
// in the environment variable), '#' starts a comment:
//   127.0.0.2             one address
//   127.0.0.2-127.0.0.5   a range, both ends included
//   127.0.0.2-5           the same, the end given as its last octet
//   127.0.0.0/24          a network; its network and broadcast addresses are left out
//                         for prefixes up to /30
struct HostList {
    // A /16. Larger entries are refused; a list that names more hosts in all is cut
    // to the first this many, counted before anything is expanded.
    static constexpr int MaxHosts = 65536;

    QList<quint32> hosts; // sorted, no duplicates
    QStringList errors;   // one text per refused entry, with its line number
};

HostList parseHostList(const QString& text);
QString ipv4Text(quint32 address);
