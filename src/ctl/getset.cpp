#include "client/settingsio.h"
#include "ctl/cli.h"
#include "ctl/commands.h"
#include "protocol/command.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

using protocol::Setting;

namespace {

QJsonValue jsonValue(const Setting& s, protocol::Value v) {
    if (s.kind == protocol::Kind::Address)
        return protocol::valueText(s, v);
    return static_cast<double>(v);
}

void printValues(const Cli& cli, const QList<Target>& targets,
                 const QList<const Setting*>& settings, const QList<Values>& values,
                 const QStringList& failures) {
    if (cli.json()) {
        QJsonArray list;
        for (qsizetype i = 0; i < targets.size(); ++i) {
            QJsonObject read;
            for (const Setting* s : settings)
                if (values[i].contains(s->name))
                    read.insert(s->name, jsonValue(*s, values[i].value(s->name)));
            QJsonObject controller{{QLatin1String("address"), targets[i].address},
                                   {QLatin1String("mac"), targets[i].mac},
                                   {QLatin1String("settings"), read}};
            if (!failures[i].isEmpty())
                controller.insert(QLatin1String("error"), failures[i]);
            list.append(controller);
        }
        QTextStream(stdout) << QJsonDocument(QJsonObject{{QLatin1String("controllers"), list}})
                                   .toJson(QJsonDocument::Indented);
        return;
    }
    QList<QStringList> rows;
    for (qsizetype i = 0; i < targets.size(); ++i)
        for (const Setting* s : settings)
            if (values[i].contains(s->name))
                rows.append({targets[i].address, s->name,
                             protocol::valueText(*s, values[i].value(s->name))});
    printTable({QStringLiteral("ADDRESS"), QStringLiteral("SETTING"), QStringLiteral("VALUE")},
               rows);
}

} // namespace

int runSettings(const QStringList& arguments) {
    Cli cli(QStringLiteral("settings"),
            QStringLiteral("Lists every setting with its range, unit and access."), Cli::Json);
    if (!cli.parse(arguments))
        return Usage;
    QList<QStringList> rows;
    QJsonArray list;
    for (const Setting& s : protocol::settings()) {
        const QString access = s.readable() && s.writable() ? QStringLiteral("read/write")
                               : s.readable()               ? QStringLiteral("read")
                                                            : QStringLiteral("write");
        rows.append({s.name, protocol::rangeText(s), access});
        list.append(QJsonObject{{QLatin1String("name"), s.name},
                                {QLatin1String("min"), jsonValue(s, s.min)},
                                {QLatin1String("max"), jsonValue(s, s.max)},
                                {QLatin1String("unit"), QString::fromLatin1(s.unit)},
                                {QLatin1String("readable"), s.readable()},
                                {QLatin1String("writable"), s.writable()}});
    }
    if (cli.json())
        QTextStream(stdout) << QJsonDocument(list).toJson(QJsonDocument::Indented);
    else
        printTable({QStringLiteral("SETTING"), QStringLiteral("RANGE"), QStringLiteral("ACCESS")},
                   rows);
    return Ok;
}

int runGet(const QStringList& arguments) {
    Cli cli(QStringLiteral("get"),
            QStringLiteral("Reads the named settings, or every readable one, from each target."),
            Cli::Targets | Cli::Timeout | Cli::Json);
    cli.parser.addPositionalArgument(QStringLiteral("setting"), QStringLiteral("Setting names."),
                                     QStringLiteral("[SETTING...]"));
    if (!cli.parse(arguments))
        return Usage;
    QString error;
    const auto settings = settingsNamed(cli.parser.positionalArguments(), &error);
    if (!settings)
        return cli.usage(error);
    for (const Setting* s : *settings)
        if (!s->readable())
            return cli.usage(QStringLiteral("%1 cannot be read").arg(s->name));
    const auto targets = cli.targets();
    if (!targets)
        return Usage;
    QList<Values> values(targets->size());
    const QStringList failures = runAll(*targets, cli, [&](ControllerClient& client, qsizetype i) {
        queueReads(client, *settings, &values[i]);
    });
    printValues(cli, *targets, *settings, values, failures);
    return report(*targets, failures);
}

int runSet(const QStringList& arguments) {
    Cli cli(QStringLiteral("set"),
            QStringLiteral("Writes settings to each target, then reads them back and reports "
                           "any difference. Every value is checked before anything is sent."),
            Cli::Targets | Cli::Timeout);
    cli.parser.addPositionalArgument(QStringLiteral("assignment"),
                                     QStringLiteral("SETTING=VALUE, e.g. brightness.a=60."),
                                     QStringLiteral("SETTING=VALUE..."));
    if (!cli.parse(arguments))
        return Usage;
    if (cli.parser.positionalArguments().isEmpty())
        return cli.usage(QStringLiteral("name at least one SETTING=VALUE"));
    QList<Change> changes;
    for (const QString& assignment : cli.parser.positionalArguments()) {
        const qsizetype equals = assignment.indexOf(u'=');
        QString error;
        const auto named = settingsNamed({assignment.left(equals)}, &error);
        if (equals < 0)
            return cli.usage(QStringLiteral("\"%1\" is not SETTING=VALUE").arg(assignment));
        if (!named)
            return cli.usage(error);
        const Setting* s = named->first();
        if (!s->writable())
            return cli.usage(QStringLiteral("%1 cannot be written").arg(s->name));
        const protocol::Result<protocol::Value> v =
            protocol::parseValue(*s, assignment.mid(equals + 1));
        if (!v)
            return cli.usage(QStringLiteral("%1: %2").arg(s->name, v.error));
        changes.append({s, *v});
    }
    const auto targets = cli.targets();
    if (!targets)
        return Usage;
    QList<const Setting*> readBack;
    for (const auto& [s, v] : changes)
        if (s->readable())
            readBack << s;
    QList<Values> values(targets->size());
    QStringList failures = runAll(*targets, cli, [&](ControllerClient& client, qsizetype i) {
        queueWrites(client, changes);
        queueReads(client, readBack, &values[i]);
    });
    for (qsizetype i = 0; i < targets->size(); ++i) {
        const QStringList different = differences(changes, values[i]);
        if (failures[i].isEmpty() && !different.isEmpty())
            failures[i] = QStringLiteral("%1: %2").arg((*targets)[i].address,
                                                       different.join(QLatin1String("; ")));
        else if (failures[i].isEmpty())
            QTextStream(stdout) << (*targets)[i].address << ": set " << changes.size()
                                << (changes.size() == 1 ? " setting\n" : " settings\n");
    }
    return report(*targets, failures);
}

int runSend(const QStringList& arguments) {
    Cli cli(QStringLiteral("send"),
            QStringLiteral("Sends one raw line to each target and prints what comes back, "
                           "with \\r and \\n shown."),
            Cli::Targets | Cli::Timeout);
    const QCommandLineOption wait(
        QStringLiteral("wait"),
        QStringLiteral("Collect the answer for MS milliseconds (default 500)."),
        QStringLiteral("MS"), QStringLiteral("500"));
    cli.parser.addOption(wait);
    cli.parser.addPositionalArgument(QStringLiteral("line"),
                                     QStringLiteral("The command, without its line end."),
                                     QStringLiteral("LINE"));
    if (!cli.parse(arguments))
        return Usage;
    if (cli.parser.positionalArguments().size() != 1)
        return cli.usage(QStringLiteral("give exactly one LINE (quote it)"));
    bool number = false;
    const int waitMs = cli.parser.value(wait).toInt(&number);
    if (!number || waitMs < 0 || waitMs > 600000)
        return cli.usage(QStringLiteral("--wait takes 0..600000 milliseconds"));
    const QString line = cli.parser.positionalArguments().first();
    for (QChar c : line)
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return cli.usage(QStringLiteral("the line must be printable ASCII"));
    const auto targets = cli.targets();
    if (!targets)
        return Usage;
    QStringList answers(targets->size());
    QStringList failures =
        runAll(*targets, cli, [&](ControllerClient& client, qsizetype i) {
            client.sendRaw(
                line.toLatin1() + "\r\n", waitMs,
                [&answers, i](const QByteArray& reply) { answers[i] = visibleText(reply); });
        });
    // A silent controller, or one that closes without a word, answered nothing: that is
    // a failure for a script, not an empty answer.
    for (qsizetype i = 0; i < targets->size(); ++i)
        if (failures[i].isEmpty() && answers[i].isEmpty())
            failures[i] = QStringLiteral("%1: no answer to %2 within %3 ms")
                              .arg((*targets)[i].address, line)
                              .arg(waitMs);
    for (qsizetype i = 0; i < targets->size(); ++i)
        if (failures[i].isEmpty())
            QTextStream(stdout) << (*targets)[i].address << ": " << answers[i] << '\n';
    return report(*targets, failures);
}
