#include "support/messageboxanswerer.h"

#include "services/reportdialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>

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
    if (auto* report = qobject_cast<ReportDialog*>(QApplication::activeModalWidget())) {
        answerReport(report, force);
        return;
    }
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    if (box != recorded_) {
        recorded_ = box;
        seen_ << Seen{box->windowTitle(), box->text(), box->icon(), box->standardButtons(),
                      box->parentWidget() ? box->parentWidget()->window()->objectName()
                                          : QString()};
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

// A procedure's report is recorded as its text, head first, with the icon it shows.
void MessageBoxAnswerer::answerReport(ReportDialog* report, bool force) {
    if (!report->isVisible())
        return;
    if (report != recorded_) {
        recorded_ = report;
        seen_ << Seen{report->windowTitle(), report->text(),
                      report->done() ? QMessageBox::Information : QMessageBox::Warning,
                      QMessageBox::Ok, report->parentWidget()->window()->objectName()};
        reports_ << report->text();
    }
    if (held_ && !force)
        return;
    recorded_ = nullptr;
    report->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
}
