#include "ctl/cli.h"
#include "ctl/commands.h"
#include "ctl/targets.h"
#include "link/searchprogram.h"
#include "link/settingsio.h"
#include "protocol/settingsfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTextStream>

namespace {

// A search of a large network ends well within this.
constexpr int SearchTimeoutMs = 120000;

bool runProgram(QString* error) {
    const QString program = search::program();
    if (!QFileInfo(program).isFile()) {
        *error = QStringLiteral("cannot find %1 in %2")
                     .arg(search::Program, QDir::toNativeSeparators(QFileInfo(program).path()));
        return false;
    }
    const QDir results(search::resultFolder(program));
    if (!results.mkpath(QStringLiteral("."))) {
        *error = QStringLiteral("cannot create %1").arg(results.path());
        return false;
    }
    for (const QString& name : {search::MacFile, search::IpFile})
        QFile::remove(results.filePath(name));
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tool.setStandardOutputFile(QProcess::nullDevice());
    tool.start(program, search::arguments(results.path()));
    if (!tool.waitForStarted(-1) || !tool.waitForFinished(SearchTimeoutMs)) {
        *error = QStringLiteral("%1: %2").arg(search::Program, tool.errorString());
        tool.kill();
        return false;
    }
    if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        *error =
            QStringLiteral("%1 failed with exit code %2").arg(search::Program).arg(tool.exitCode());
        return false;
    }
    return true;
}

} // namespace

int runSearch(const QStringList& arguments) {
    Cli cli(QStringLiteral("search"),
            QStringLiteral("Finds the controllers on the local network with the search program "
                           "and reads each one's firmware."),
            Cli::Json);
    if (!cli.parse(arguments))
        return Usage;
    QString error;
    if (!runProgram(&error)) {
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
    const QStringList failures = runAll(
        *found, ControllerClient::DefaultTimeoutMs,
        [&](ControllerClient& client, qsizetype i) { queueReads(client, {firmware}, &values[i]); });
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
