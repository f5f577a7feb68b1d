#include "window/paintpacer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

PaintPacer::PaintPacer(QWidget* window) : QObject(window), window_(window) {
    frame_.setSingleShot(true);
    frame_.setInterval(FrameMs);
    connect(&frame_, &QTimer::timeout, this, &PaintPacer::paintNow);
    window_->installEventFilter(this);
}

// Qt asks the window to paint with an UpdateRequest, posted after update() and sent at
// once by repaint(). Either way what is dirty stays marked, so holding the request only
// defers the painting; the frame's own request paints it all.
bool PaintPacer::eventFilter(QObject* watched, QEvent* event) {
    if (watched != window_ || event->type() != QEvent::UpdateRequest || painting_)
        return false;
    if (!frame_.isActive())
        frame_.start();
    return true;
}

void PaintPacer::paintNow() {
    painting_ = true;
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(window_, &request);
    painting_ = false;
}
