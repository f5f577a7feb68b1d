#pragma once

#include "ctl/fleet.h"

#include <QCommandLineParser>
#include <QStringList>
#include <optional>

// Exit statuses: every target done, some failed (the others still done), usage errors.
enum Exit { Ok = 0, SomeFailed = 1, Usage = 2 };

// One subcommand's command line: its own options, and those for targets, time-out and
// JSON output where it takes them.
class Cli {
public:
    enum Takes { Nothing = 0, Targets = 1, Timeout = 2, Json = 4 };

    Cli(const QString& command, const QString& description, int takes);

    QCommandLineParser parser;

    // False after printing the problem: the caller exits with Usage. --help prints the
    // subcommand's help and exits.
    bool parse(const QStringList& arguments);
    std::optional<QList<Target>> targets();
    int timeoutMs() const { return timeoutMs_; }
    bool json() const { return parser.isSet(json_); }
    // Prints a usage error and gives Usage.
    int usage(const QString& message) const;

private:
    QString command_;
    int takes_;
    QCommandLineOption host_;
    QCommandLineOption all_;
    QCommandLineOption timeout_;
    QCommandLineOption json_;
    int timeoutMs_ = 0;
};

// Prints rows as columns, each as wide as its widest cell, on stdout.
void printTable(const QStringList& header, const QList<QStringList>& rows);
// Prints each failure on stderr and gives the exit status.
int report(const QList<Target>& targets, const QStringList& failures);
