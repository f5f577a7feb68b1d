#include "ctl/cli.h"
#include "ctl/commands.h"
#include "link/settingsio.h"
#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"

#include <QDateTime>
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
    const QList<const Setting*> settings = readableSettings(true);
    QList<settingsfile::Controller> read(targets->size());
    Progress progress(QStringLiteral("backup"), targets->size(), true);
    const QStringList failures = runAll(
        *targets, cli.timeoutMs(),
        [&](ControllerClient& client, qsizetype i) {
            read[i] = {(*targets)[i].mac, (*targets)[i].address, {}, {}, {}};
            queueReads(client, settings, &read[i].values);
        },
        &progress);
    QList<settingsfile::Controller> done;
    for (qsizetype i = 0; i < targets->size(); ++i)
        if (failures[i].isEmpty()) {
            read[i].time = QDateTime::currentDateTimeUtc();
            read[i].firmware =
                settingsfile::firmwareText(read[i].values.value(QStringLiteral("firmware")));
            done << read[i];
        }
    QString error;
    if (!done.isEmpty() &&
        !jsonfile::write(cli.parser.value(output), settingsfile::toJson(done), &error)) {
        QTextStream(stderr) << "panomat-ctl backup: " << error << '\n';
        return SomeFailed;
    }
    return report(*targets, failures);
}

int runRestore(const QStringList& arguments) {
    Cli cli(QStringLiteral("restore"),
            QStringLiteral("Writes a settings file back to its controllers, or with --to onto "
                           "another one, and compares what reads back."),
            Cli::Timeout);
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
        (*file)[0].address = cli.parser.value(to);
    }
    QList<Target> targets;
    for (const settingsfile::Controller& c : *file)
        targets.append({c.address, c.mac});
    const bool withNetwork = cli.parser.isSet(network);

    QList<Values> now(targets.size());
    QList<QList<Change>> changes(targets.size());
    QList<QList<Change>> networkChanges(targets.size());
    QList<Values> after(targets.size());
    const bool dry = cli.parser.isSet(dryRun);
    QStringList failures =
        runAll(targets, cli.timeoutMs(), [&](ControllerClient& client, qsizetype i) {
            queueReads(client, readableSettings(withNetwork), &now[i]);
            client.then([&, i, &c = client] {
                changes[i] = restoreChanges((*file)[i].values, now[i], false);
                if (withNetwork)
                    networkChanges[i] = restoreChanges((*file)[i].values, now[i], true);
                networkChanges[i].removeIf(
                    [](const Change& ch) { return ch.first->group != protocol::Group::Network; });
                if (dry)
                    return;
                queueWrites(c, changes[i]);
                queueReads(c, readableSettings(false), &after[i]);
                // Last, as they restart the controller's network and end the connection.
                queueWrites(c, networkChanges[i]);
                if (!networkChanges[i].isEmpty())
                    c.exchange(QByteArrayLiteral("SREL\r\n"), QByteArrayLiteral("RELI"));
            });
        });
    QTextStream out(stdout);
    for (qsizetype i = 0; i < targets.size(); ++i) {
        if (!failures[i].isEmpty())
            continue;
        const QList<Change> all = changes[i] + networkChanges[i];
        if (dry) {
            out << targets[i].address << ": "
                << (all.isEmpty() ? "nothing to change" : "would change") << '\n';
            for (const Change& change : all)
                out << "  " << describeChange(change, now[i]) << '\n';
            continue;
        }
        const QStringList different = differences(changes[i], after[i]);
        if (!different.isEmpty()) {
            failures[i] = QStringLiteral("%1: %2").arg(targets[i].address,
                                                       different.join(QLatin1String("; ")));
            continue;
        }
        out << targets[i].address << ": wrote " << all.size() << " settings, read back equal";
        if (!networkChanges[i].isEmpty())
            out << "; the network restarts with the new settings";
        out << '\n';
    }
    return report(targets, failures);
}
