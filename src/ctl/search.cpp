#include "client/searchrun.h"
#include "client/settingsio.h"
#include "ctl/cli.h"
#include "ctl/commands.h"
#include "ctl/targets.h"
#include "protocol/settingsfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

namespace {

// A search of a large network ends well within this.
constexpr int SearchTimeoutMs = 120000;

// What the program probes goes to the error output with its other messages: standard
// output holds the table or the JSON alone.
bool runProgram(const QString& hosts, QString* error) {
    search::Run run;
    run.setHosts(hosts);
    run.setLineHandler([](const QString& line) { QTextStream(stderr) << line << '\n'; });
    if (run.start() && run.wait({}, SearchTimeoutMs) && run.endedWell())
        return true;
    *error = run.message();
    return false;
}

} // namespace

int runSearch(const QStringList& arguments) {
    Cli cli(QStringLiteral("search"),
            QStringLiteral("Finds the controllers with the search program and reads each one's "
                           "firmware. The hosts probed are those of --hosts, else the configured "
                           "host list, else the networks of this machine; which they were goes "
                           "to the error output."),
            Cli::Json | Cli::Timeout);
    const QCommandLineOption hosts(
        QStringLiteral("hosts"),
        QStringLiteral("Probe these hosts instead of the configured host list (or, with none, "
                       "the networks of this machine): addresses, ranges a.b.c.d-e and networks "
                       "a.b.c.d/n, separated by commas."),
        QStringLiteral("LIST"));
    cli.parser.addOption(hosts);
    if (!cli.parse(arguments))
        return Usage;
    if (cli.parser.isSet(hosts) && cli.parser.value(hosts).trimmed().isEmpty())
        return cli.usage(QStringLiteral("--hosts takes a list of hosts"));
    QString error;
    if (!runProgram(cli.parser.values(hosts).join(u','), &error)) {
        QTextStream(stderr) << "panomat-ctl search: " << error << '\n';
        return SomeFailed;
    }
    const auto found = lastSearch(&error);
    if (!found) {
        QTextStream(stderr) << "panomat-ctl search: " << error << '\n';
        return SomeFailed;
    }
    const protocol::Setting* firmware = protocol::find(QStringLiteral("firmware"));
    QList<Values> values(found->size());
    const QStringList failures = runAll(*found, cli, [&](ControllerClient& client, qsizetype i) {
        queueReads(client, {firmware}, &values[i]);
    });
    QList<QStringList> rows;
    QJsonArray list;
    for (qsizetype i = 0; i < found->size(); ++i) {
        const QString version = values[i].contains(firmware->name)
                                    ? settingsfile::firmwareText(values[i].value(firmware->name))
                                    : QStringLiteral("?");
        rows.append({(*found)[i].mac, (*found)[i].address, version});
        list.append(QJsonObject{{QLatin1String("mac"), (*found)[i].mac},
                                {QLatin1String("address"), (*found)[i].address},
                                {QLatin1String("firmware"), version}});
    }
    if (cli.json())
        QTextStream(stdout) << QJsonDocument(list).toJson(QJsonDocument::Indented);
    else
        printTable({QStringLiteral("MAC"), QStringLiteral("ADDRESS"), QStringLiteral("FIRMWARE")},
                   rows);
    return report(*found, failures);
}
