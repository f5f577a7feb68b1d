#include "window/form1.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Panomat Set"));
    Form1 window;
    window.show();
    return app.exec();
}
