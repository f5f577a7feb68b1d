#include "support/messageboxanswerer.h"

#include <QAbstractButton>
#include <QApplication>

namespace {

// The answerer finds Qt's own boxes only. Set before any test's application exists.
const bool qtDialogs = [] {
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    return true;
}();

} // namespace

MessageBoxAnswerer::MessageBoxAnswerer(QObject* parent) : QObject(parent) {
    connect(&timer_, &QTimer::timeout, this, [this] { poll(); });
    timer_.start(5);
}

QStringList MessageBoxAnswerer::texts() const {
    QStringList texts;
    for (const Seen& box : seen_)
        texts << box.text;
    return texts;
}

void MessageBoxAnswerer::poll(bool force) {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    if (box != recorded_) {
        recorded_ = box;
        seen_ << Seen{box->windowTitle(), box->text(), box->icon(), box->standardButtons()};
    }
    if (held_ && !force)
        return;
    QAbstractButton* button = box->button(answer_);
    if (!button && !box->buttons().isEmpty())
        button = box->buttons().first();
    recorded_ = nullptr;
    if (button)
        button->click();
}
