#include "window/form1.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLockFile>
#include <QStandardPaths>
#include <cstdio>

namespace {

// Without a display Qt gives up with an abort; the operator deserves a sentence.
bool displayNamed(const QStringList& arguments) {
#ifdef Q_OS_WIN
    // A Windows session always has its desktop.
    Q_UNUSED(arguments);
    return true;
#endif
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (!qEnvironmentVariableIsEmpty(variable))
            return true;
    return arguments.contains(QLatin1String("-platform")) ||
           arguments.contains(QLatin1String("-display"));
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication::setApplicationName(QStringLiteral("Panomat Set"));
    QApplication::setApplicationVersion(QStringLiteral(PANOMAT_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(PANOMAT_APP_ID));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Finds the video-wall controllers on the local network and configures them."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();

    // --help and --version answer without a display. Anything else waits until
    // QApplication has taken its own options (-platform, -style, ...) out of argv.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    if (parser.parse(arguments) && (parser.isSet(help) || parser.isSet(version))) {
        QCoreApplication app(argc, argv);
        parser.process(app); // prints and exits
    }

    if (!displayNamed(arguments)) {
        std::fprintf(stderr, "panomat-set: there is no display to open the window on (DISPLAY "
                             "and WAYLAND_DISPLAY are not set). Start it in a desktop session, "
                             "or name a display or platform (-display, -platform).\n");
        return 1;
    }
    QApplication app(argc, argv);
    parser.process(app);
    // A second copy would hold its own connections to the same controllers: allowed,
    // but said.
    QLockFile lock(QDir(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation))
                       .filePath(QStringLiteral("panomat-set.lock")));
    qint64 other = 0;
    const bool alone = lock.tryLock(0) || !lock.getLockInfo(&other, nullptr, nullptr);
    Form1 window;
    window.show();
    if (!alone) {
        const QString text =
            QStringLiteral("Another Panomat Set runs on this computer (process %1); both "
                           "connect to the same controllers.")
                .arg(other);
        std::fprintf(stderr, "panomat-set: %s\n", qPrintable(text));
        emit window.services().notice().hint(text);
    }
    return app.exec();
}
