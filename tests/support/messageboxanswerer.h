#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QTimer>

class ReportDialog;

// Watches for modal message boxes, records what each showed and presses a button:
// the chosen answer when the box offers it, else its first button. A procedure's
// report counts as a box whose text is the whole report.
class MessageBoxAnswerer : public QObject {
    Q_OBJECT
public:
    struct Seen {
        QString title;
        QString text;
        QMessageBox::Icon icon;
        QMessageBox::StandardButtons buttons;
        QString owner; // objectName of the window the box belongs to
    };

    explicit MessageBoxAnswerer(QObject* parent = nullptr);

    void answerWith(QMessageBox::StandardButton button) { answer_ = button; }
    // Leaves boxes open, for tests that look at the window while a box is up.
    void hold(bool on) { held_ = on; }
    // Presses the answer on the box that is open now, if any.
    void pressNow() { poll(true); }

    QList<Seen> seen() const { return seen_; }
    QStringList texts() const;
    void clear() {
        seen_.clear();
        reports_.clear();
    }
    // The reports among them.
    QStringList reports() const { return reports_; }

private:
    void poll(bool force = false);
    void answerReport(ReportDialog* report, bool force);

    QTimer timer_;
    QMessageBox::StandardButton answer_ = QMessageBox::Yes;
    QList<Seen> seen_;
    QWidget* recorded_ = nullptr;
    QStringList reports_;
    bool held_ = false;
};
