#include "window/form1.h"

#include <QApplication>
#include <QCommandLineParser>

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

    QApplication app(argc, argv);
    parser.process(app);
    Form1 window;
    window.show();
    return app.exec();
}
