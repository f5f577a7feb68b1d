#include "client/restore.h"
#include "ctl/cli.h"
#include "ctl/commands.h"
#include "link/devicelink.h"
#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"

#include <QDateTime>
#include <QHostAddress>
#include <QTextStream>

using protocol::Setting;

int runBackup(const QStringList& arguments) {
    Cli cli(QStringLiteral("backup"),
            QStringLiteral("Reads every readable setting of each target, in parallel, into a "
                           "settings file."),
            Cli::Targets | Cli::Timeout);
    const QCommandLineOption output(QStringList{QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The settings file to write."),
                                    QStringLiteral("FILE.json"));
    cli.parser.addOption(output);
    if (!cli.parse(arguments))
        return Usage;
    if (!cli.parser.isSet(output))
        return cli.usage(QStringLiteral("name the file with -o FILE.json"));
    const auto targets = cli.targets();
    if (!targets)
        return Usage;
    Progress progress(QStringLiteral("backup"), targets->size(), true);
    QStringList failures;
    const QList<Values> values = client::readSettings(
        runner(*targets, cli, &progress), targets->size(), readableSettings(true), &failures);
    QList<settingsfile::Controller> done;
    for (qsizetype i = 0; i < targets->size(); ++i)
        if (failures[i].isEmpty())
            done << settingsfile::Controller{
                (*targets)[i].mac, (*targets)[i].address,
                settingsfile::firmwareText(values[i].value(QStringLiteral("firmware"))),
                QDateTime::currentDateTimeUtc(), values[i]};
    QString error;
    if (!done.isEmpty() &&
        !jsonfile::write(cli.parser.value(output), settingsfile::toJson(done), &error)) {
        QTextStream(stderr) << "panomat-ctl backup: " << error << '\n';
        return SomeFailed;
    }
    return report(*targets, failures);
}

namespace {

int printDryRun(const QList<client::RestorePlan>& plans, const QList<Values>& now,
                const QStringList& unread) {
    QTextStream out(stdout);
    QList<Target> targets;
    for (qsizetype i = 0; i < plans.size(); ++i) {
        targets << plans[i].target;
        if (!unread[i].isEmpty())
            continue;
        const QList<Change> all = plans[i].writes.changes() + plans[i].network.changes();
        out << plans[i].target.address << ": "
            << (all.isEmpty() ? "nothing to change" : "would change") << '\n';
        for (const Change& change : all)
            out << "  " << describeChange(change, now[i]) << '\n';
    }
    return report(targets, unread);
}

} // namespace

int runRestore(const QStringList& arguments) {
    Cli cli(QStringLiteral("restore"),
            QStringLiteral("Writes a settings file back to its controllers, or with --to onto "
                           "another one, and compares what reads back."),
            Cli::Timeout | Cli::Json);
    const QCommandLineOption to(QStringLiteral("to"),
                                QStringLiteral("Restore the file's one controller onto ADDR."),
                                QStringLiteral("ADDR"));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"),
                                    QStringLiteral("Print what would change; send no writes."));
    const QCommandLineOption network(QStringLiteral("include-network"),
                                     QStringLiteral("Also write the network settings and restart "
                                                    "the controller's network with them."));
    cli.parser.addOptions({to, dryRun, network});
    cli.parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A settings file."),
                                     QStringLiteral("FILE.json"));
    if (!cli.parse(arguments))
        return Usage;
    if (cli.parser.positionalArguments().size() != 1)
        return cli.usage(QStringLiteral("name one FILE.json"));
    QString error;
    const auto object =
        jsonfile::read(cli.parser.positionalArguments().first(), settingsfile::Format, &error);
    auto file = object ? settingsfile::fromJson(*object, &error) : std::nullopt;
    if (!file)
        return cli.usage(error);
    if (cli.parser.isSet(to)) {
        if (file->size() != 1)
            return cli.usage(
                QStringLiteral("--to needs a file of one controller; this one holds %1")
                    .arg(file->size()));
        QHostAddress address;
        if (!isControllerAddress(cli.parser.value(to), &address))
            return cli.usage(QStringLiteral("--to: \"%1\" is not a dotted IPv4 address")
                                 .arg(cli.parser.value(to)));
        (*file)[0].address = cli.parser.value(to);
    }
    QList<Target> targets;
    for (const settingsfile::Controller& c : *file)
        targets.append({c.address, c.mac});
    const bool withNetwork = cli.parser.isSet(network);
    const client::Runner run = runner(targets, cli);

    QStringList unread;
    const QList<Values> now =
        client::readSettings(run, targets.size(), readableSettings(withNetwork), &unread);
    QList<client::RestoreTarget> wanted;
    for (qsizetype i = 0; i < targets.size(); ++i)
        wanted.append({targets[i], (*file)[i].values, now[i], unread[i]});
    auto plans = client::planRestore(wanted, withNetwork, &error);
    if (!plans)
        return cli.usage(error);
    if (cli.parser.isSet(dryRun))
        return printDryRun(*plans, now, unread);
    return printReport(client::restore(run, *plans, run), cli.json());
}
