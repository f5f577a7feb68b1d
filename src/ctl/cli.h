#pragma once

#include "ctl/fleet.h"

namespace client {
struct Report;
}

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
    int deadlineMs() const { return deadlineMs_; } // below zero: none
    bool json() const { return parser.isSet(json_); }
    // Prints a usage error and gives Usage.
    int usage(const QString& message) const;

private:
    QString command_;
    int takes_;
    QCommandLineOption host_;
    QCommandLineOption all_;
    QCommandLineOption timeout_;
    QCommandLineOption deadline_;
    QCommandLineOption json_;
    int timeoutMs_ = 0;
    int deadlineMs_ = -1;
};

// Prints rows as columns, each as wide as its widest cell, on stdout.
void printTable(const QStringList& header, const QList<QStringList>& rows);
// Prints a procedure's report on stdout, as text or JSON, and gives the exit status:
// SomeFailed when any controller is not done as wanted.
int printReport(const client::Report& report, bool json);
// Prints each failure on stderr and gives the exit status.
int report(const QList<Target>& targets, const QStringList& failures);
