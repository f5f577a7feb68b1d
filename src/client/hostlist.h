#pragma once

#include <QString>
#include <QStringList>

// Where the search program takes the hosts it probes from, looked up in its order: the
// environment variable ZEDA_HOSTS, the user's panomat-set/ZEDA.conf (~/.config), the
// system's (/etc/xdg), the list beside the program. On Windows the lists are in
// %APPDATA% (the user's) and %PROGRAMDATA% (the machine's). A list without one entry counts as
// none. With none, it probes the networks of this machine's interfaces.
namespace search {

struct HostList {
    enum class Source { Environment, User, System, Beside, Automatic };
    Source source = Source::Automatic;
    QString path;        // the file, where the list is one
    QStringList entries; // addresses, ranges, networks; for Automatic, the networks
};

HostList hostListInForce();
QString userHostListPath();
// "the environment variable ZEDA_HOSTS", "your list ~/.config/...", ...
QString sourceText(const HostList& list);
// The entries of a host list's text: what is left of each line without its comment.
QStringList hostEntries(const QString& text);
// The networks an automatic search probes, as the search program takes them: each
// interface that is up, not loopback, with an IPv4 address: its network up to a /22,
// else the /24 around its address.
QStringList automaticNetworks();

} // namespace search
