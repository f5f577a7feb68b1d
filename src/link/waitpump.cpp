#include "link/waitpump.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

WaitPump::WaitPump(QObject* parent) : QObject(parent) {
    // quit() does not end a hand-written loop: notice the Quit event ourselves.
    if (QCoreApplication* app = QCoreApplication::instance())
        app->installEventFilter(this);
}

bool WaitPump::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance())
        cancelled_ = true;
    return QObject::eventFilter(watched, event);
}

bool WaitPump::until(const std::function<bool()>& done) {
    while (!cancelled_ && !done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return !cancelled_;
}

bool WaitPump::untilConnected(const std::function<bool()>& connected) {
    // The ticking timer bounds each pass to about 1 ms without spinning.
    QTimer tick;
    tick.setInterval(1);
    tick.start();
    int passes = 0;
    while (!cancelled_ && !connected()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (passes > ConnectPassLimit)
            return false;
        ++passes;
    }
    return !cancelled_;
}
