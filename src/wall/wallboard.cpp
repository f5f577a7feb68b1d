#include "wall/wallboard.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

namespace {

constexpr int ChipHeight = 24;
constexpr int ChipGap = 4;
constexpr int Margin = 8;

} // namespace

QString OutputChip::label() const {
    return QStringLiteral("%1 / Out %2").arg(mac, wallplan::outputName(output));
}

// The controllers of one wall share the first half of their MACs, the maker's; the
// second half tells them apart where there is room for little.
QString OutputChip::shortLabel() const {
    return QStringLiteral("%1 Out %2").arg(mac.right(8), wallplan::outputName(output));
}

QString OutputChip::tileLabel() const {
    return QStringLiteral("%1\nOut %2").arg(mac.right(8), wallplan::outputName(output));
}

WallBoard::WallBoard(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("wall_board"));
    setMouseTracking(false);
}

void WallBoard::setContent(const wallplan::Plan& plan, const QList<OutputChip>& chips) {
    plan_ = plan;
    chips_ = chips;
    update();
}

// A chip is as wide as its short label and its tile: the wall takes the rest.
int WallBoard::chipWidth() const {
    const QFontMetrics metrics(font());
    return metrics.horizontalAdvance(QStringLiteral("00-00-00 Out A")) +
           metrics.horizontalAdvance(QStringLiteral("tile 225")) + 24;
}

// The chips stand in columns as high as the board.
int WallBoard::chipsPerColumn() const {
    return std::max(1, (height() - Margin * 2 + ChipGap) / (ChipHeight + ChipGap));
}

QRect WallBoard::chipRect(int chip) const {
    const int column = chip / chipsPerColumn();
    const int row = chip % chipsPerColumn();
    return {Margin + column * (chipWidth() + Margin), Margin + row * (ChipHeight + ChipGap),
            chipWidth(), ChipHeight};
}

QRect WallBoard::wallRect() const {
    const int columns =
        std::max<qsizetype>(1, (chips_.size() + chipsPerColumn() - 1) / chipsPerColumn());
    const int chipsWidth = columns * (chipWidth() + Margin);
    const QRect area(Margin * 3 + chipsWidth, Margin, width() - chipsWidth - Margin * 4,
                     height() - Margin * 2);
    // Tiles keep a screen's 16:9 shape.
    const double tileW = std::min(area.width() / double(plan_.cols),
                                  area.height() / double(plan_.rows) * 16.0 / 9.0);
    const double tileH = tileW * 9.0 / 16.0;
    return {area.left(), area.top(), int(tileW * plan_.cols), int(tileH * plan_.rows)};
}

QRect WallBoard::tileRect(int tile) const {
    const QRect wall = wallRect();
    const int row = (tile - 1) / plan_.cols;
    const int col = (tile - 1) % plan_.cols;
    const int left = wall.left() + wall.width() * col / plan_.cols;
    const int right = wall.left() + wall.width() * (col + 1) / plan_.cols;
    const int top = wall.top() + wall.height() * row / plan_.rows;
    const int bottom = wall.top() + wall.height() * (row + 1) / plan_.rows;
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1));
}

int WallBoard::tileAt(QPoint point) const {
    for (int t = 1; t <= plan_.rows * plan_.cols; ++t)
        if (tileRect(t).contains(point))
            return t;
    return 0;
}

QStringList WallBoard::labelsOn(int tile) const {
    QStringList labels;
    for (const wallplan::Assignment& a : plan_.assignments)
        if (a.tile == tile)
            labels << OutputChip{a.mac, a.address, a.output}.tileLabel();
    return labels;
}

// The outputs on a tile, a line each, cut to the tile's width; on a tile too low for
// all of them, the second half of each MAC and its output on one line.
QString WallBoard::fitted(const QStringList& labels, const QRect& room) const {
    const QFontMetrics metrics(font());
    QStringList lines;
    for (const QString& label : labels)
        lines << label.split(QLatin1Char('\n'));
    if (lines.size() * metrics.height() > room.height()) {
        lines.clear();
        for (const QString& label : labels)
            lines << label.right(label.size() - 3).replace(QStringLiteral("\nOut"), QString());
    }
    for (QString& line : lines)
        line = metrics.elidedText(line, Qt::ElideRight, room.width());
    return lines.join(QLatin1Char('\n'));
}

void WallBoard::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    // The screens, with the bezel drawn as the gap between them.
    p.fillRect(wallRect().adjusted(-3, -3, 3, 3), QColor(40, 40, 40));
    for (int t = 1; t <= plan_.rows * plan_.cols; ++t) {
        const QRect r = tileRect(t).adjusted(2, 2, -2, -2);
        const QStringList labels = labelsOn(t);
        QColor fill(70, 110, 160);
        QString mark;
        if (labels.isEmpty()) {
            fill = QColor(120, 120, 120);
            mark = QStringLiteral("NO OUTPUT");
        } else if (labels.size() > 1) {
            fill = QColor(190, 80, 60);
            mark = QStringLiteral("DOUBLED");
        }
        p.fillRect(r, fill);
        p.setPen(Qt::white);
        // The number and the mark share the first line, so neither covers the other.
        QFont bold = font();
        bold.setBold(true);
        p.setFont(bold);
        const QRect text = r.adjusted(4, 2, -4, -2);
        const QString head =
            mark.isEmpty() ? QString::number(t) : QStringLiteral("%1  %2").arg(t).arg(mark);
        p.drawText(text, Qt::AlignTop | Qt::AlignLeft,
                   QFontMetrics(bold).elidedText(head, Qt::ElideRight, text.width()));
        p.setFont(font());
        const QRect below = text.adjusted(0, QFontMetrics(bold).height(), 0, 0);
        p.drawText(below, Qt::AlignCenter, fitted(labels, below));
    }
    for (int i = 0; i < chips_.size(); ++i) {
        const QRect r = chipRect(i);
        int tile = 0;
        for (const wallplan::Assignment& a : plan_.assignments)
            if (a.address == chips_[i].address && a.output == chips_[i].output)
                tile = a.tile;
        p.setPen(palette().text().color());
        p.setBrush(tile ? palette().button() : palette().base());
        p.drawRoundedRect(r, 6, 6);
        p.drawText(r.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft,
                   chips_[i].shortLabel());
        if (tile)
            p.drawText(r.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignRight,
                       QStringLiteral("tile %1").arg(tile));
    }
    if (dragged_ >= 0) {
        QRect r = chipRect(dragged_);
        r.moveCenter(dragAt_);
        p.setOpacity(0.8);
        p.setBrush(palette().highlight());
        p.drawRoundedRect(r, 6, 6);
        p.setPen(palette().highlightedText().color());
        p.drawText(r.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft,
                   chips_[dragged_].shortLabel());
    }
}

// A chip's whole MAC, as the device list shows it, in its tooltip.
bool WallBoard::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    for (int i = 0; i < chips_.size(); ++i)
        if (chipRect(i).contains(help->pos())) {
            QToolTip::showText(help->globalPos(), chips_[i].label(), this);
            return true;
        }
    QToolTip::hideText();
    event->ignore();
    return true;
}

void WallBoard::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    for (int i = 0; i < chips_.size(); ++i)
        if (chipRect(i).contains(event->position().toPoint())) {
            dragged_ = i;
            dragAt_ = event->position().toPoint();
            update();
            return;
        }
}

void WallBoard::mouseMoveEvent(QMouseEvent* event) {
    if (dragged_ < 0)
        return;
    dragAt_ = event->position().toPoint();
    update();
}

void WallBoard::mouseReleaseEvent(QMouseEvent* event) {
    if (dragged_ < 0 || event->button() != Qt::LeftButton)
        return;
    const int chip = dragged_;
    dragged_ = -1;
    update();
    // Released where it was picked up, the chip stays where it is.
    if (chipRect(chip).contains(event->position().toPoint()))
        return;
    emit dropped(chip, tileAt(event->position().toPoint()));
}
