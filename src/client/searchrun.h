#pragma once

#include "client/run.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// The device search program and the two result files it leaves: MAC.txt, one MAC a
// line, and IP.txt, whose last line holds every address in a field of fifteen
// characters. The window and panomat-ctl run the same program the same way, through
// search::Run.
namespace search {

inline const QString Program = QStringLiteral("ZEDA.exe");
inline const QString MacFile = QStringLiteral("MAC.txt");
inline const QString IpFile = QStringLiteral("IP.txt");
constexpr int MacLength = 17;

// Beside the running program (a build tree, a copy of the tool's folder); else where an
// installation keeps its private programs. The path beside when neither exists.
QString program();

// The result files stay beside the running program when the search program is there
// too and the folder can be written. Otherwise (installed, or a read-only copy) they
// go to the user's data folder, ~/.local/share/panomat-set.
QString resultFolder(const QString& program);

// The arguments that send the results to folder.
QStringList arguments(const QString& folder);

// One run of the search program. The result files of an earlier run must never pass
// for this one's: they go before the program starts, and what a failed program leaves
// is not to be read. Each step that fails says why in message(), in the words the
// operator is shown.
class Run {
public:
    // A line of the program's standard output, as it comes.
    using LineHandler = std::function<void(const QString& line)>;
    // The program says what it probes in short lines ("probing 192.0.2.0/24 on eth0
    // (253 hosts)"); longer ones are cut to this many characters.
    static constexpr int MaxLineChars = 200;

    Run(); // finds the program and where its results go
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    bool found() const; // the program is there
    // Probe these hosts instead of the configured lists: the program's ZEDA_HOSTS, in
    // its words (addresses, ranges a.b.c.d-e, networks a.b.c.d/n, separated by commas
    // or blanks). Empty: as configured, the machine's own networks when nothing is.
    // Before start().
    void setHosts(const QString& list) { hosts_ = list; }
    // Called with each line the program prints on its standard output while it runs,
    // and with the last unfinished one when it ends: which host list or networks it
    // probes. Control and non-ASCII bytes come escaped as \xNN, the line end taken off,
    // at most MaxLineChars characters. Called from the event loop that the wait turns
    // (the window's pump, or wait()'s own), never after wait() returned. Before start().
    void setLineHandler(LineHandler handler) { onLine_ = std::move(handler); }
    // Makes the result folder, removes the last run's results and starts the program,
    // minimised without focus where windows have that. Its own messages go to our
    // error output; its standard output goes to the line handler, or nowhere.
    bool start();
    // Until the program has ended: through wait (the window's pump) or an event loop of
    // its own, for at most timeoutMs (below zero: no limit). False when the wait was
    // stopped or the time ran out; the program is then killed.
    bool wait(const client::Wait& wait = {}, int timeoutMs = -1);
    // The program ended well, so its result files may be read.
    bool endedWell();

    QString folder() const { return folder_; }
    QString message() const { return message_; }

private:
    // Hands over the complete lines read so far; at the end, the rest too.
    void readLines(bool atEnd);

    QString program_;
    QString folder_;
    QString message_;
    QString hosts_;
    LineHandler onLine_;
    QByteArray partial_; // of the line being read, at most MaxLineChars bytes kept
    QProcess process_;
    QMetaObject::Connection reading_;
};

// A result file larger than this is not the search program's: 65 536 controllers, the
// most it probes, take 1.2 MB of MAC.txt.
constexpr qint64 MaxResultBytes = 4 * 1024 * 1024;

// All lines of a result file, or nothing when it is not a regular file of at most
// MaxResultBytes that can be read.
std::optional<QStringList> readLines(const QString& path);

// The MAC texts of MAC.txt's lines.
QStringList macs(const QStringList& macLines);

} // namespace search

// The dotted address of device index from the address line: fifteen characters a
// device, octets at offsets 1, 5, 9 and 13 of its field, each by numeric value.
QString addressFromLine(const QString& line, int index);
