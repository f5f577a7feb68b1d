#pragma once

#include "ctl/fleet.h"

#include <QList>
#include <QStringList>
#include <optional>

// The controllers the last search found, from its result files: MAC and address.
// Empty with *error set when there are no readable results.
std::optional<QList<Target>> lastSearch(QString* error);

// --host ADDR[,ADDR...] (repeatable) or --all. Each address must be a dotted IPv4
// address; a MAC comes from the last search where it names the address.
std::optional<QList<Target>> chooseTargets(const QStringList& hosts, bool all, QString* error);
