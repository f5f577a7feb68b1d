#include "ctl/cli.h"
#include "ctl/commands.h"

#include <QCoreApplication>
#include <QTextStream>
#include <functional>
#include <map>

namespace {

const char* const Overview = R"(Usage: panomat-ctl COMMAND [OPTIONS]

Reads and changes video-wall controllers from the command line.

Commands:
  search          find the controllers on the local network
  settings        list every setting with its range, unit and access
  get             read settings            (--host ADDR[,ADDR...] or --all)
  set             write settings, then read them back
  backup          save every readable setting to a file
  restore         write a settings file back, or onto another controller
  wall plan       assign outputs to the tiles of a wall
  wall apply      send a wall plan to its controllers
  send            send one raw line and show the answer

"panomat-ctl COMMAND --help" describes each one. Exit status: 0 all done, 1 some
controllers failed (the others are done), 2 usage errors.
)";

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("panomat-ctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PANOMAT_VERSION));
    const std::map<QString, std::function<int(const QStringList&)>> commands = {
        {QStringLiteral("search"), runSearch}, {QStringLiteral("settings"), runSettings},
        {QStringLiteral("get"), runGet},       {QStringLiteral("set"), runSet},
        {QStringLiteral("backup"), runBackup}, {QStringLiteral("restore"), runRestore},
        {QStringLiteral("wall"), runWall},     {QStringLiteral("send"), runSend}};
    const QStringList arguments = app.arguments().mid(1);
    const QString command = arguments.value(0);
    if (command == QLatin1String("--help") || command == QLatin1String("-h")) {
        QTextStream(stdout) << Overview;
        return Ok;
    }
    if (command == QLatin1String("--version")) {
        QTextStream(stdout) << "panomat-ctl " << PANOMAT_VERSION << '\n';
        return Ok;
    }
    const auto found = commands.find(command);
    if (found == commands.end()) {
        QTextStream(stderr)
            << (command.isEmpty()
                    ? QStringLiteral("panomat-ctl: name a command\n")
                    : QStringLiteral("panomat-ctl: unknown command \"%1\"\n").arg(command))
            << Overview;
        return Usage;
    }
    return found->second(arguments.mid(1));
}
