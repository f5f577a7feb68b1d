#include "wall/wallplanner.h"

#include "protocol/catalogue.h"
#include "protocol/jsonfile.h"
#include "services/filedialogs.h"
#include "services/windowservices.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>

namespace {

QString tileText(int tile) {
    return QStringLiteral("Tile %1").arg(tile);
}

QString tileList(const QList<int>& tiles) {
    QStringList texts;
    for (const int t : tiles)
        texts << QString::number(t);
    return texts.join(QLatin1String(", "));
}

} // namespace

WallPlanner::WallPlanner(WindowServices& session, std::function<void()> refresh, QWidget* parent)
    : QWidget(parent, Qt::Window), s(session), refresh_(std::move(refresh)) {
    setObjectName(QStringLiteral("wall_planner"));
    setWindowTitle(QStringLiteral("Wall planner - %1").arg(WindowServices::Title));
    build();
    setWallSize(2, 2);
}

void WallPlanner::build() {
    auto* layout = new QVBoxLayout(this);

    auto* size = new QHBoxLayout;
    rows_ = new QSpinBox;
    rows_->setObjectName(QStringLiteral("planner_rows"));
    cols_ = new QSpinBox;
    cols_->setObjectName(QStringLiteral("planner_cols"));
    for (QSpinBox* box : {rows_, cols_}) {
        box->setRange(1, wallplan::MaxSide);
        box->setValue(2);
    }
    auto* rowsLabel = new QLabel(QStringLiteral("&Rows"));
    rowsLabel->setBuddy(rows_);
    auto* colsLabel = new QLabel(QStringLiteral("&Columns"));
    colsLabel->setBuddy(cols_);
    auto* fill = new QPushButton(QStringLiteral("Auto-&fill"));
    fill->setObjectName(QStringLiteral("planner_autofill"));
    fill->setToolTip(QStringLiteral("Outputs A-D of each listed controller in turn, tile by tile"));
    size->addWidget(rowsLabel);
    size->addWidget(rows_);
    size->addWidget(colsLabel);
    size->addWidget(cols_);
    size->addWidget(fill);
    size->addStretch();
    layout->addLayout(size);

    board_ = new WallBoard;
    layout->addWidget(board_, 1);

    // The keyboard's way: a tile and an output from lists.
    auto* pick = new QHBoxLayout;
    tileBox_ = new QComboBox;
    tileBox_->setObjectName(QStringLiteral("planner_tile"));
    outputBox_ = new QComboBox;
    outputBox_->setObjectName(QStringLiteral("planner_output"));
    auto* tileLabel = new QLabel(QStringLiteral("&Tile"));
    tileLabel->setBuddy(tileBox_);
    auto* outputLabel = new QLabel(QStringLiteral("&Output"));
    outputLabel->setBuddy(outputBox_);
    auto* placeButton = new QPushButton(QStringLiteral("&Place"));
    placeButton->setObjectName(QStringLiteral("planner_place"));
    auto* removeButton = new QPushButton(QStringLiteral("Re&move output"));
    removeButton->setObjectName(QStringLiteral("planner_remove"));
    pick->addWidget(tileLabel);
    pick->addWidget(tileBox_);
    pick->addWidget(outputLabel);
    pick->addWidget(outputBox_, 1);
    pick->addWidget(placeButton);
    pick->addWidget(removeButton);
    layout->addLayout(pick);

    coverage_ = new QLabel;
    coverage_->setObjectName(QStringLiteral("planner_coverage"));
    coverage_->setWordWrap(true);
    layout->addWidget(coverage_);

    auto* actions = new QHBoxLayout;
    auto* openButton = new QPushButton(QStringLiteral("Op&en..."));
    openButton->setObjectName(QStringLiteral("planner_open"));
    auto* saveButton = new QPushButton(QStringLiteral("&Save..."));
    saveButton->setObjectName(QStringLiteral("planner_save"));
    applyButton_ = new QPushButton(QStringLiteral("&Apply"));
    applyButton_->setObjectName(QStringLiteral("planner_apply"));
    applyButton_->setToolTip(QStringLiteral("Send each controller its wall size and tiles"));
    progress_ = new QProgressBar;
    progress_->setObjectName(QStringLiteral("planner_progress"));
    progress_->setVisible(false);
    actions->addWidget(openButton);
    actions->addWidget(saveButton);
    actions->addWidget(progress_, 1);
    actions->addStretch();
    actions->addWidget(applyButton_);
    layout->addLayout(actions);

    connect(rows_, &QSpinBox::valueChanged, this, [this](int r) { setWallSize(r, plan_.cols); });
    connect(cols_, &QSpinBox::valueChanged, this, [this](int c) { setWallSize(plan_.rows, c); });
    connect(fill, &QPushButton::clicked, this, &WallPlanner::autoFill);
    connect(board_, &WallBoard::dropped, this, &WallPlanner::place);
    connect(placeButton, &QPushButton::clicked, this,
            [this] { place(outputBox_->currentIndex(), tileBox_->currentIndex() + 1); });
    connect(removeButton, &QPushButton::clicked, this,
            [this] { place(outputBox_->currentIndex(), 0); });
    connect(openButton, &QPushButton::clicked, this, [this] {
        const QString path = askFileToOpen(this, QStringLiteral("Open wall plan"),
                                           QStringLiteral("Wall plans (*.json)"));
        if (!path.isEmpty())
            open(path);
    });
    connect(saveButton, &QPushButton::clicked, this, [this] {
        const QString path =
            askFileToSave(this, QStringLiteral("Save wall plan"), QStringLiteral("wall.json"),
                          QStringLiteral("Wall plans (*.json)"));
        if (!path.isEmpty())
            save(path);
    });
    connect(applyButton_, &QPushButton::clicked, this, &WallPlanner::apply);
}

void WallPlanner::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !applying_)
        close();
    else
        QWidget::keyPressEvent(event);
}

void WallPlanner::present() {
    chips_.clear();
    for (int i = 0; i < s.deviceCount(); ++i)
        for (int output = 1; output <= 4; ++output)
            chips_.append({s.ui().cbo_ipaddr->itemText(i), s.address(i), output});
    {
        const QSignalBlocker blocker(outputBox_);
        outputBox_->clear();
        for (const OutputChip& chip : chips_)
            outputBox_->addItem(chip.label());
    }
    showPlan();
    if (!isVisible())
        resize(sizeHint().boundedTo(screen()->availableGeometry().size() * 9 / 10));
    show();
    raise();
    activateWindow();
}

// A smaller wall drops the outputs placed on tiles it no longer has.
void WallPlanner::setWallSize(int rows, int cols) {
    plan_.rows = rows;
    plan_.cols = cols;
    plan_.assignments.removeIf([&](const wallplan::Assignment& a) { return a.tile > rows * cols; });
    showPlan();
}

void WallPlanner::showPlan() {
    {
        const QSignalBlocker r(rows_), c(cols_);
        rows_->setValue(plan_.rows);
        cols_->setValue(plan_.cols);
    }
    const int keep = tileBox_->currentIndex();
    {
        const QSignalBlocker blocker(tileBox_);
        tileBox_->clear();
        for (int t = 1; t <= plan_.rows * plan_.cols; ++t)
            tileBox_->addItem(tileText(t));
        tileBox_->setCurrentIndex(qBound(0, keep, tileBox_->count() - 1));
    }
    board_->setContent(plan_, chips_);
    const wallplan::Coverage c = wallplan::coverage(plan_);
    QStringList notes;
    if (!c.unassigned.isEmpty())
        notes << QStringLiteral("No output shows tile %1.").arg(tileList(c.unassigned));
    if (!c.doubled.isEmpty())
        notes << QStringLiteral("More than one output shows tile %1.").arg(tileList(c.doubled));
    coverage_->setText(notes.isEmpty() ? QStringLiteral("Every tile is shown by one output.")
                                       : notes.join(QLatin1Char(' ')));
}

void WallPlanner::autoFill() {
    QList<wallplan::Controller> controllers;
    for (int i = 0; i < s.deviceCount(); ++i)
        controllers.append({s.ui().cbo_ipaddr->itemText(i), s.address(i)});
    plan_ = wallplan::autoFill(plan_.rows, plan_.cols, controllers);
    showPlan();
}

// An output shows one tile: placing it again moves it.
void WallPlanner::place(int chip, int tile) {
    if (chip < 0 || chip >= chips_.size())
        return;
    const OutputChip& c = chips_[chip];
    plan_.assignments.removeIf([&](const wallplan::Assignment& a) {
        return a.address == c.address && a.output == c.output;
    });
    if (tile >= 1 && tile <= plan_.rows * plan_.cols)
        plan_.assignments.append({c.mac, c.address, c.output, tile});
    showPlan();
}

QStringList WallPlanner::unlisted(const wallplan::Plan& plan) const {
    QStringList missing;
    for (const wallplan::Assignment& a : plan.assignments) {
        const QString who = QStringLiteral("%1 (%2)").arg(a.address, a.mac);
        if (!s.addresses().contains(a.address) && !missing.contains(who))
            missing << who;
    }
    return missing;
}

QStringList WallPlanner::unconnected(const QList<client::Placement>& placements) const {
    QStringList down;
    for (const client::Placement& p : placements)
        if (!s.link().isConnected(int(s.addresses().indexOf(p.target.address))))
            down << QStringLiteral("%1 (%2)").arg(p.target.address, p.target.mac);
    return down;
}

bool WallPlanner::open(const QString& path) {
    QString error;
    const auto object = jsonfile::read(path, wallplan::Format, &error);
    const auto plan = object ? wallplan::fromJson(*object, &error) : std::nullopt;
    if (!plan) {
        warn(QStringLiteral("The wall plan cannot be opened:\n%1").arg(error));
        return false;
    }
    const QStringList missing = unlisted(*plan);
    if (!missing.isEmpty()) {
        warn(QStringLiteral("The wall plan names controllers that are not listed:\n%1\n"
                            "Search for them first.")
                 .arg(missing.join(QLatin1Char('\n'))));
        return false;
    }
    plan_ = *plan;
    showPlan();
    return true;
}

bool WallPlanner::save(const QString& path) {
    QString error;
    if (!jsonfile::write(path, wallplan::toJson(plan_), &error)) {
        warn(QStringLiteral("The wall plan was not saved:\n%1").arg(error));
        return false;
    }
    return true;
}

void WallPlanner::apply() {
    if (applying_)
        return;
    if (s.pump().waiting()) {
        warn(QStringLiteral("The window waits for a controller's reply: apply the plan "
                            "once it has come."));
        return;
    }
    if (!s.isConnected()) {
        warn(QStringLiteral("Connect to the controllers before applying the plan."));
        return;
    }
    if (plan_.assignments.isEmpty()) {
        warn(QStringLiteral("The plan places no output: there is nothing to apply."));
        return;
    }
    const QStringList missing = unlisted(plan_);
    if (!missing.isEmpty()) {
        warn(QStringLiteral("The plan names controllers that are not listed:\n%1\n"
                            "Nothing was sent.")
                 .arg(missing.join(QLatin1Char('\n'))));
        return;
    }

    QString error;
    auto placements = client::placements(plan_, &error);
    if (!placements) {
        warn(QStringLiteral("The plan cannot be applied:\n%1\nNothing was sent.").arg(error));
        return;
    }
    if (const QStringList down = unconnected(*placements); !down.isEmpty()) {
        warn(QStringLiteral("These controllers of the plan are not connected:\n%1\n"
                            "Nothing was sent.")
                 .arg(down.join(QLatin1Char('\n'))));
        return;
    }
    QList<client::LentTarget> targets;
    for (const client::Placement& p : *placements)
        targets.append({int(s.addresses().indexOf(p.target.address)), p.target.address});

    applying_ = true;
    applyButton_->setEnabled(false);
    s.LockPanels();
    progress_->setRange(0, int(targets.size()));
    progress_->setValue(0);
    progress_->setVisible(true);
    const client::Report report =
        client::applyPlan(s.lentRunner("Wall apply", targets, TimeoutMs,
                                       [this](qsizetype done) { progress_->setValue(int(done)); }),
                          *placements);
    progress_->setVisible(false);
    applyButton_->setEnabled(true);
    applying_ = false;
    if (!s.cancelled()) {
        s.UnlockPanels();
        if (refresh_)
            refresh_();
    }
    qsizetype placed = 0;
    for (const client::ControllerReport& c : report.controllers)
        for (const client::SettingReport& setting : c.settings)
            placed += setting.name.startsWith(QLatin1String("wall.position")) &&
                      setting.outcome == client::Outcome::Written;
    s.showReport(QStringLiteral("Applied the wall plan to %1 of %2 controllers: %3 of %4 "
                                "outputs placed.")
                     .arg(report.doneCount())
                     .arg(report.controllers.size())
                     .arg(placed)
                     .arg(plan_.assignments.size()),
                 report, this);
}

// The planner's messages belong to it: shown over it, they give it back the focus.
void WallPlanner::warn(const QString& text) {
    s.message(QMessageBox::Warning, text, QMessageBox::Ok, this);
}
