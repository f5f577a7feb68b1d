#include "monitor/trafficmonitor.h"

#include "link/trafficlog.h"
#include "protocol/safefile.h"
#include "services/filedialogs.h"
#include "services/windowservices.h"

#include <QBuffer>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

// Rows of one controller (or all, -1) whose text holds the filter text.
class TrafficFilter : public QSortFilterProxyModel {
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setController(int index) {
        controller_ = index;
        invalidateRowsFilter();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
        if (controller_ >= 0 &&
            sourceModel()->index(row, 0, parent).data(TrafficLog::IndexRole).toInt() != controller_)
            return false;
        return QSortFilterProxyModel::filterAcceptsRow(row, parent);
    }

private:
    int controller_ = -1;
};

void TrafficMonitor::showCounts() {
    QStringList counts;
    if (log_->dropped())
        counts << QStringLiteral("%1 older rows dropped").arg(log_->dropped());
    if (log_->skipped())
        counts << QStringLiteral("%1 rows not kept while paused").arg(log_->skipped());
    dropped_->setText(counts.join(QLatin1String("; ")));
}

TrafficMonitor::TrafficMonitor(WindowServices& session, TrafficLog& log, QWidget* parent)
    : QDockWidget(QStringLiteral("Traffic monitor"), parent), s_(session), log_(&log) {
    setObjectName(QStringLiteral("traffic_monitor"));
    filter_ = new TrafficFilter(this);
    filter_->setSourceModel(log_);
    filter_->setFilterKeyColumn(TrafficLog::Text);
    filter_->setFilterCaseSensitivity(Qt::CaseInsensitive);
    setWidget(buildControls());

    // Follow the newest row only while the view is at the bottom.
    connect(filter_, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
        const QScrollBar* bar = view_->verticalScrollBar();
        following_ = bar->value() == bar->maximum();
    });
    connect(filter_, &QAbstractItemModel::rowsInserted, this, [this] {
        if (following_)
            view_->scrollToBottom();
    });
    // Built when first shown, it opens at the newest rows.
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible && following_)
            view_->scrollToBottom();
    });
    connect(log_, &TrafficLog::droppedChanged, this, &TrafficMonitor::showCounts);
    connect(log_, &TrafficLog::skippedChanged, this, &TrafficMonitor::showCounts);
    QAbstractItemModel* devices = s_.ui().cbo_ipaddr->model();
    connect(devices, &QAbstractItemModel::rowsInserted, this,
            &TrafficMonitor::fillControllerFilter);
    connect(devices, &QAbstractItemModel::rowsRemoved, this, &TrafficMonitor::fillControllerFilter);
    connect(devices, &QAbstractItemModel::modelReset, this, &TrafficMonitor::fillControllerFilter);
    fillControllerFilter();
}

TrafficMonitor::~TrafficMonitor() = default;

QWidget* TrafficMonitor::buildControls() {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    auto* bar = new QHBoxLayout;
    controllers_ = new QComboBox;
    controllers_->setObjectName(QStringLiteral("monitor_controller"));
    controllers_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    text_ = new QLineEdit;
    text_->setObjectName(QStringLiteral("monitor_filter"));
    text_->setPlaceholderText(QStringLiteral("Filter text"));
    text_->setClearButtonEnabled(true);
    pause_ = new QPushButton(QStringLiteral("Pause"));
    pause_->setObjectName(QStringLiteral("monitor_pause"));
    pause_->setCheckable(true);
    auto* clear = new QPushButton(QStringLiteral("Clear"));
    clear->setObjectName(QStringLiteral("monitor_clear"));
    auto* save = new QPushButton(QStringLiteral("Save..."));
    save->setObjectName(QStringLiteral("monitor_save"));
    for (QWidget* w :
         {static_cast<QWidget*>(controllers_), static_cast<QWidget*>(text_),
          static_cast<QWidget*>(pause_), static_cast<QWidget*>(clear), static_cast<QWidget*>(save)})
        bar->addWidget(w, w == text_ ? 1 : 0);
    column->addLayout(bar);

    view_ = new QTableView;
    view_->setObjectName(QStringLiteral("monitor_rows"));
    view_->setModel(filter_);
    view_->setSelectionBehavior(QAbstractItemView::SelectRows);
    view_->verticalHeader()->hide();
    view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 4);
    // Widths from sample texts: measuring every row would cost more than the rows.
    const QFontMetrics metrics = view_->fontMetrics();
    const std::pair<int, const char*> samples[] = {
        {TrafficLog::Time, "00:00:00.000"},
        {TrafficLog::Controller, "00-00-00-00-00-00  000.000.000.000"},
        {TrafficLog::Direction, "received"},
        {TrafficLog::ReplyTime, "0000.0 ms"}};
    for (const auto& [column, sample] : samples)
        view_->setColumnWidth(column, metrics.horizontalAdvance(QLatin1String(sample)) + 16);
    view_->horizontalHeader()->setStretchLastSection(false);
    view_->horizontalHeader()->setSectionResizeMode(TrafficLog::Text, QHeaderView::Stretch);
    view_->setWordWrap(false);
    column->addWidget(view_, 1);
    dropped_ = new QLabel;
    dropped_->setObjectName(QStringLiteral("monitor_dropped"));
    column->addWidget(dropped_);

    connect(controllers_, &QComboBox::currentIndexChanged, this,
            [this](int i) { filter_->setController(controllers_->itemData(i).toInt()); });
    connect(text_, &QLineEdit::textChanged, filter_, &QSortFilterProxyModel::setFilterFixedString);
    connect(pause_, &QPushButton::toggled, this, [this](bool paused) {
        log_->setPaused(paused);
        pause_->setText(paused ? QStringLiteral("Resume") : QStringLiteral("Pause"));
    });
    connect(clear, &QPushButton::clicked, log_, &TrafficLog::clear);
    connect(save, &QPushButton::clicked, this, &TrafficMonitor::save);
    return content;
}

void TrafficMonitor::fillControllerFilter() {
    const int chosen =
        controllers_->currentData().isValid() ? controllers_->currentData().toInt() : -1;
    controllers_->clear();
    controllers_->addItem(QStringLiteral("All controllers"), -1);
    for (int i = 0; i < s_.deviceCount(); ++i)
        controllers_->addItem(s_.ui().cbo_ipaddr->itemText(i), i);
    controllers_->setCurrentIndex(qMax(0, controllers_->findData(chosen)));
}

void TrafficMonitor::save() {
    const QString path =
        askFileToSave(this, QStringLiteral("Save traffic"), QStringLiteral("traffic.csv"),
                      QStringLiteral("CSV (*.csv);;Text (*.txt)"));
    if (!path.isEmpty())
        saveTo(path);
}

bool TrafficMonitor::saveTo(const QString& path) {
    log_->flush();
    // The rows are bounded, so they are gathered first and the file replaced whole.
    QBuffer rows;
    rows.open(QIODevice::WriteOnly);
    QString why;
    if (writeRows(rows, *filter_, path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)) &&
        safefile::writeFileReplacing(path, rows.data(), &why))
        return true;
    s_.exclamation(QStringLiteral("Cannot save the traffic to %1: %2")
                       .arg(path, why.isEmpty() ? rows.errorString() : why));
    return false;
}
