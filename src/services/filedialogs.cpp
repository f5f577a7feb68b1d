#include "services/filedialogs.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>

namespace {

QString ask(QWidget* parent, const QString& title, const QString& name, const QString& filter,
            bool save) {
    QFileDialog dialog(parent, title, {}, filter);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (!name.isEmpty())
        dialog.selectFile(name);
    const QScreen* screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    const QRect room = screen->availableGeometry().adjusted(8, 32, -8, -8); // for the frame
    const QSize size =
        dialog.sizeHint().expandedTo(dialog.minimumSizeHint()).boundedTo(room.size());
    dialog.setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, room));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace

QString askFileToOpen(QWidget* parent, const QString& title, const QString& filter) {
    return ask(parent, title, {}, filter, false);
}

QString askFileToSave(QWidget* parent, const QString& title, const QString& name,
                      const QString& filter) {
    return ask(parent, title, name, filter, true);
}
