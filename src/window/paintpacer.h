#pragma once

#include <QObject>
#include <QTimer>

class QWidget;

// Paints the window at most once a frame. A refresh handles a reply every few hundred
// microseconds, and each reply changes a control or two; painting every change before
// the next request leaves makes the refresh wait for the display instead of the
// controller. Update requests that come within a frame are held, and at the frame's end
// the window paints once everything that changed meanwhile. A frame is shorter than
// anything a person can follow, so nothing visible is lost: on a slow link every step
// is still painted, on a fast one only the last.
class PaintPacer : public QObject {
public:
    static constexpr int FrameMs = 16;

    explicit PaintPacer(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void paintNow();

    QWidget* window_;
    QTimer frame_;
    bool painting_ = false;
};
