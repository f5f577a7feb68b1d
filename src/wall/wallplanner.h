#pragma once

#include "client/wallapply.h"
#include "protocol/wallplan.h"
#include "wall/wallboard.h"

#include <QList>
#include <QString>
#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSpinBox;
class WindowServices;

// The wall planner: plans which output of which listed controller shows which tile,
// keeps the plan in the plan file of "panomat-ctl wall", and applies it to the
// controllers over the window's own connections.
class WallPlanner : public QWidget {
    Q_OBJECT
public:
    static constexpr int TimeoutMs = 2000;

    // refresh: the window's full refresh, run once an apply has given the sockets back.
    WallPlanner(WindowServices& session, std::function<void()> refresh, QWidget* parent = nullptr);

    const wallplan::Plan& plan() const { return plan_; }
    WallBoard* board() const { return board_; }
    // The outputs of the controllers listed now, in list order.
    QList<OutputChip> chips() const { return chips_; }

    // Reads the device list again (the outputs offered) and shows the window.
    void present();
    void autoFill();
    void place(int chip, int tile); // tile 0 takes the output off the wall
    // The file seams of Open... and Save...; false, after a message, on failure.
    bool open(const QString& path);
    bool save(const QString& path);
    void apply();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void build();
    void setWallSize(int rows, int cols);
    void showPlan();
    QStringList unlisted(const wallplan::Plan& plan) const;
    QStringList unconnected(const QList<client::Placement>& placements) const;
    void warn(const QString& text);

    WindowServices& s;
    std::function<void()> refresh_;
    wallplan::Plan plan_;
    QList<OutputChip> chips_;
    bool applying_ = false;

    QSpinBox* rows_ = nullptr;
    QSpinBox* cols_ = nullptr;
    WallBoard* board_ = nullptr;
    QComboBox* tileBox_ = nullptr;
    QComboBox* outputBox_ = nullptr;
    QLabel* coverage_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPushButton* applyButton_ = nullptr;
};
