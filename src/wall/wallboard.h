#pragma once

#include "protocol/wallplan.h"

#include <QList>
#include <QString>
#include <QWidget>

// One output of one listed controller, as the planner shows it: "MAC / Out A".
struct OutputChip {
    QString mac;
    QString address;
    int output = 1; // 1..4
    QString label() const;
    // On a chip: the second half of the MAC and the output; on a tile, one over the other.
    QString shortLabel() const;
    QString tileLabel() const;
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
    QSize minimumSizeHint() const override { return {320, 160}; }

signals:
    void dropped(int chip, int tile);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QRect wallRect() const;
    int chipWidth() const;
    int chipsPerColumn() const;
    QStringList labelsOn(int tile) const;
    QString fitted(const QStringList& labels, const QRect& room) const;

    wallplan::Plan plan_;
    QList<OutputChip> chips_;
    int dragged_ = -1;
    QPoint dragAt_;
};
