#pragma once

#include <QStringList>

// Each subcommand takes the arguments after its name and gives the exit status.
int runSearch(const QStringList& arguments);
int runSettings(const QStringList& arguments);
int runGet(const QStringList& arguments);
int runSet(const QStringList& arguments);
int runSend(const QStringList& arguments);
int runBackup(const QStringList& arguments);
int runRestore(const QStringList& arguments);
int runWall(const QStringList& arguments);
