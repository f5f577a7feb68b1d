#include "ctl/cli.h"

#include "client/controllerclient.h"
#include "client/report.h"
#include "ctl/targets.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>

Cli::Cli(const QString& command, const QString& description, int takes)
    : command_(command), takes_(takes),
      host_(QStringLiteral("host"),
            QStringLiteral("Controller address; several separated by commas, or repeated."),
            QStringLiteral("ADDR")),
      all_(QStringLiteral("all"), QStringLiteral("Every controller the last search found.")),
      timeout_(QStringLiteral("timeout"),
               QStringLiteral("Wait at most MS milliseconds for each reply (default %1).")
                   .arg(ControllerClient::DefaultTimeoutMs),
               QStringLiteral("MS"), QString::number(ControllerClient::DefaultTimeoutMs)),
      deadline_(QStringLiteral("deadline"),
                QStringLiteral("End the whole run after SECONDS; what was not done by then is "
                               "reported as such (default: no deadline)."),
                QStringLiteral("SECONDS")),
      json_(QStringLiteral("json"), QStringLiteral("Print JSON for scripts.")) {
    parser.setApplicationDescription(description);
    parser.addHelpOption();
    if (takes & Targets)
        parser.addOptions({host_, all_});
    if (takes & Timeout)
        parser.addOptions({timeout_, deadline_});
    if (takes & Json)
        parser.addOption(json_);
}

bool Cli::parse(const QStringList& arguments) {
    QStringList argv = arguments;
    argv.prepend(QStringLiteral("panomat-ctl %1").arg(command_));
    if (!parser.parse(argv)) {
        usage(parser.errorText());
        return false;
    }
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(Ok);
    if (takes_ & Timeout) {
        bool number = false;
        timeoutMs_ = parser.value(timeout_).toInt(&number);
        if (!number || timeoutMs_ < 1 || timeoutMs_ > 600000) {
            usage(QStringLiteral("--timeout takes 1..600000 milliseconds"));
            return false;
        }
        if (parser.isSet(deadline_)) {
            const double seconds = parser.value(deadline_).toDouble(&number);
            if (!number || seconds <= 0 || seconds > 86400) {
                usage(QStringLiteral("--deadline takes 0.001..86400 seconds"));
                return false;
            }
            deadlineMs_ = qMax(1, qRound(seconds * 1000));
        }
    }
    return true;
}

std::optional<QList<Target>> Cli::targets() {
    QString error;
    auto chosen = chooseTargets(parser.values(host_), parser.isSet(all_), &error);
    if (!chosen)
        usage(error);
    return chosen;
}

int Cli::usage(const QString& message) const {
    QTextStream(stderr) << "panomat-ctl " << command_ << ": " << message << '\n';
    return Usage;
}

void printTable(const QStringList& header, const QList<QStringList>& rows) {
    QList<qsizetype> widths;
    for (const QString& cell : header)
        widths << cell.size();
    for (const QStringList& row : rows)
        for (qsizetype i = 0; i < row.size() && i < widths.size(); ++i)
            widths[i] = qMax(widths[i], row[i].size());
    QTextStream out(stdout);
    auto print = [&](const QStringList& row) {
        QString line;
        for (qsizetype i = 0; i < row.size(); ++i)
            line += i + 1 < row.size() ? row[i].leftJustified(widths[i] + 2) : row[i];
        out << line << '\n';
    };
    print(header);
    for (const QStringList& row : rows)
        print(row);
}

int printReport(const client::Report& report, bool json) {
    QTextStream out(stdout);
    if (json)
        out << QJsonDocument(report.json()).toJson(QJsonDocument::Indented);
    else if (!report.controllers.isEmpty())
        out << report.text() << '\n';
    if (report.done())
        return Ok;
    QTextStream(stderr) << "panomat-ctl " << report.procedure << ": "
                        << report.controllers.size() - report.doneCount() << " of "
                        << report.controllers.size()
                        << " controllers not done as wanted; see the report\n";
    return SomeFailed;
}

int report(const QList<Target>& targets, const QStringList& failures) {
    QTextStream err(stderr);
    int failed = 0;
    for (qsizetype i = 0; i < targets.size(); ++i)
        if (!failures[i].isEmpty()) {
            err << "panomat-ctl: " << failures[i] << '\n';
            ++failed;
        }
    if (failed > 0 && failed < targets.size())
        err << "panomat-ctl: " << failed << " of " << targets.size()
            << " controllers failed; the others are done\n";
    return failed ? SomeFailed : Ok;
}
