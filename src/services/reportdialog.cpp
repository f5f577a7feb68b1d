#include "services/reportdialog.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTableWidget>
#include <QVBoxLayout>

using client::Outcome;

ReportDialog::ReportDialog(const QString& head, const client::Report& report, QWidget* parent)
    : QDialog(parent), head_(head), body_(report.text()), done_(report.done()),
      table_(new QTableWidget(this)) {
    setObjectName(QStringLiteral("procedure_report"));
    setWindowTitle(QCoreApplication::applicationName());
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    auto* icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(
        style()
            ->standardIcon(done_ ? QStyle::SP_MessageBoxInformation : QStyle::SP_MessageBoxWarning)
            .pixmap(size, size));
    top->addWidget(icon, 0, Qt::AlignTop);
    auto* label = new QLabel(head);
    label->setObjectName(QStringLiteral("report_head"));
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    top->addWidget(label, 1);
    layout->addLayout(top);

    table_->setObjectName(QStringLiteral("report_table"));
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->verticalHeader()->hide();
    fill(report);
    layout->addWidget(table_, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QPushButton* copy = buttons->addButton(QStringLiteral("&Copy"), QDialogButtonBox::ActionRole);
    copy->setToolTip(QStringLiteral("Copy the whole report as text"));
    connect(copy, &QPushButton::clicked, this,
            [this] { QApplication::clipboard()->setText(text()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    resize(720, 420);
}

QString ReportDialog::text() const {
    return body_.isEmpty() ? head_ : head_ + QStringLiteral("\n\n") + body_;
}

// A row a setting; a controller without settings gets one row of its own, so that
// its failure or note is seen.
void ReportDialog::fill(const client::Report& report) {
    const QStringList header{QStringLiteral("Controller"), QStringLiteral("Setting"),
                             QStringLiteral("Wanted"), QStringLiteral("Reads back"),
                             QStringLiteral("Outcome")};
    table_->setColumnCount(int(header.size()));
    table_->setHorizontalHeaderLabels(header);
    QList<QStringList> rows;
    for (const client::ControllerReport& c : report.controllers) {
        const QString who = c.target.mac.isEmpty()
                                ? c.target.address
                                : QStringLiteral("%1 (%2)").arg(c.target.address, c.target.mac);
        if (c.settings.isEmpty())
            rows.append({who, {}, {}, {}, c.failure.isEmpty() ? c.note : c.failure});
        for (const client::SettingReport& s : c.settings) {
            QString outcome = client::outcomeText(s.outcome);
            if (!s.why.isEmpty())
                outcome += QStringLiteral(": ") + s.why;
            rows.append({who, s.name, s.wanted, s.readBack, outcome});
        }
    }
    table_->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < rows[r].size(); ++c)
            table_->setItem(r, c, new QTableWidgetItem(rows[r][c]));
    table_->resizeColumnsToContents();
    table_->horizontalHeader()->setStretchLastSection(true);
}
