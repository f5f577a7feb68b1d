#pragma once

#include "client/wallapply.h"
#include "protocol/wallplan.h"

#include <QList>
#include <QString>
#include <QWidget>
#include <functional>

class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSpinBox;
class Session;

// One output of one listed controller, as the planner shows it: "MAC / Out A".
struct OutputChip {
    QString mac;
    QString address;
    int output = 1; // 1..4
    QString label() const;
};

// The wall drawn as rows x columns tiles beside the outputs as chips. A chip dragged
// with the mouse onto a tile places that output there; dropped off the wall, it leaves
// the wall. Tiles that no output shows and tiles two outputs show are written on; a
// placed chip carries its tile's number.
class WallBoard : public QWidget {
    Q_OBJECT
public:
    explicit WallBoard(QWidget* parent = nullptr);

    void setContent(const wallplan::Plan& plan, const QList<OutputChip>& chips);

    // Where chip i and tile t (1-based) are drawn, in the board's coordinates.
    QRect chipRect(int chip) const;
    QRect tileRect(int tile) const;
    int tileAt(QPoint point) const; // 0 off the wall

    QSize sizeHint() const override { return {900, 480}; }
    QSize minimumSizeHint() const override { return {520, 320}; }

signals:
    void dropped(int chip, int tile);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QRect wallRect() const;
    int chipsPerColumn() const;
    QStringList labelsOn(int tile) const;

    wallplan::Plan plan_;
    QList<OutputChip> chips_;
    int dragged_ = -1;
    QPoint dragAt_;
};

// The wall planner: plans which output of which listed controller shows which tile,
// keeps the plan in the plan file of "panomat-ctl wall", and applies it to the
// controllers over the window's own connections.
class WallPlanner : public QWidget {
    Q_OBJECT
public:
    static constexpr int TimeoutMs = 2000;

    // refresh: the window's full refresh, run once an apply has given the sockets back.
    WallPlanner(Session& session, std::function<void()> refresh, QWidget* parent = nullptr);

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

    Session& s;
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
