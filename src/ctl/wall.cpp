#include "client/wallapply.h"
#include "ctl/cli.h"
#include "ctl/commands.h"
#include "protocol/catalogue.h"
#include "protocol/jsonfile.h"
#include "protocol/wallplan.h"

#include <QJsonDocument>
#include <QTextStream>

namespace {

QString tiles(const QList<int>& list) {
    QStringList text;
    for (int tile : list)
        text << QString::number(tile);
    return text.join(QLatin1String(", "));
}

void printCoverage(const wallplan::Plan& plan) {
    const wallplan::Coverage c = wallplan::coverage(plan);
    QTextStream err(stderr);
    if (!c.unassigned.isEmpty())
        err << "panomat-ctl wall: tiles without an output: " << tiles(c.unassigned) << '\n';
    if (!c.doubled.isEmpty())
        err << "panomat-ctl wall: tiles shown by two or more outputs: " << tiles(c.doubled) << '\n';
}

int plan(const QStringList& arguments) {
    Cli cli(QStringLiteral("wall plan"),
            QStringLiteral("Assigns the targets' outputs A-D, in order, to tiles 1..rows x cols."),
            Cli::Targets | Cli::Json);
    const QCommandLineOption rows(QStringLiteral("rows"),
                                  QStringLiteral("Rows of displays, 1..15."), QStringLiteral("R"));
    const QCommandLineOption cols(
        QStringLiteral("cols"), QStringLiteral("Columns of displays, 1..15."), QStringLiteral("C"));
    const QCommandLineOption output(QStringList{QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("Write the plan to FILE.json."),
                                    QStringLiteral("FILE.json"));
    cli.parser.addOptions({rows, cols, output});
    if (!cli.parse(arguments))
        return Usage;
    const int r = cli.parser.value(rows).toInt();
    const int c = cli.parser.value(cols).toInt();
    if (r < 1 || r > wallplan::MaxSide || c < 1 || c > wallplan::MaxSide)
        return cli.usage(
            QStringLiteral("--rows and --cols each take 1..%1").arg(wallplan::MaxSide));
    const auto targets = cli.targets();
    if (!targets)
        return Usage;
    QList<wallplan::Controller> controllers;
    for (const Target& t : *targets)
        controllers.append({t.mac, t.address});
    const wallplan::Plan p = wallplan::autoFill(r, c, controllers);
    if (cli.parser.isSet(output)) {
        QString error;
        if (!jsonfile::write(cli.parser.value(output), wallplan::toJson(p), &error)) {
            QTextStream(stderr) << "panomat-ctl wall plan: " << error << '\n';
            return SomeFailed;
        }
    } else if (cli.json()) {
        QTextStream(stdout) << QJsonDocument(wallplan::toJson(p)).toJson(QJsonDocument::Indented);
    } else {
        QList<QStringList> table;
        for (const wallplan::Assignment& a : p.assignments)
            table.append({QString::number(a.tile), a.address,
                          QStringLiteral("Out ") + wallplan::outputName(a.output)});
        printTable({QStringLiteral("TILE"), QStringLiteral("ADDRESS"), QStringLiteral("OUTPUT")},
                   table);
    }
    printCoverage(p);
    return Ok;
}

int apply(const QStringList& arguments) {
    Cli cli(
        QStringLiteral("wall apply"),
        QStringLiteral("Sends each controller its outputs' rows, columns and tiles from a plan."),
        Cli::Timeout | Cli::Json);
    cli.parser.addPositionalArgument(QStringLiteral("plan"), QStringLiteral("A wall plan file."),
                                     QStringLiteral("PLAN.json"));
    if (!cli.parse(arguments))
        return Usage;
    if (cli.parser.positionalArguments().size() != 1)
        return cli.usage(QStringLiteral("name one PLAN.json"));
    QString error;
    const auto object =
        jsonfile::read(cli.parser.positionalArguments().first(), wallplan::Format, &error);
    const auto p = object ? wallplan::fromJson(*object, &error) : std::nullopt;
    if (!p)
        return cli.usage(error);
    printCoverage(*p);
    auto placements = client::placements(*p, &error);
    if (!placements)
        return cli.usage(error + QStringLiteral("; nothing was sent"));
    QList<Target> targets;
    for (const client::Placement& placement : *placements)
        targets << placement.target;
    return printReport(client::applyPlan(runner(targets, cli), *placements), cli.json());
}

} // namespace

int runWall(const QStringList& arguments) {
    const QString action = arguments.value(0);
    if (action == QLatin1String("plan"))
        return plan(arguments.mid(1));
    if (action == QLatin1String("apply"))
        return apply(arguments.mid(1));
    QTextStream(stderr) << "panomat-ctl wall: say \"wall plan\" or \"wall apply\"\n";
    return Usage;
}
