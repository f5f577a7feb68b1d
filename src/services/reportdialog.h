#pragma once

#include "client/report.h"

#include <QDialog>

class QTableWidget;

// A procedure's report: its head ("Restored the settings of 1 of 2 controllers."),
// then a table of every setting of every controller: what was wanted, what reads back
// and what became of it. "Copy" puts the whole report on the clipboard as text.
class ReportDialog : public QDialog {
    Q_OBJECT
public:
    ReportDialog(const QString& head, const client::Report& report, QWidget* parent = nullptr);

    QString head() const { return head_; }
    // The head and the report as text, as copied.
    QString text() const;
    bool done() const { return done_; }
    QTableWidget* table() const { return table_; }

private:
    void fill(const client::Report& report);

    QString head_;
    QString body_;
    bool done_;
    QTableWidget* table_;
};
