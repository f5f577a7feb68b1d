#include "services/waits.h"

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

void WaitPump::stop() {
    if (depth_ > 0)
        stopping_ = true;
}

void WaitPump::enter() {
    if (depth_++ == 0)
        emit waitingChanged(true);
}

// While stopping, no wait pumps and no message box is shown, so the first events
// processed after the last wait has ended are those of the application's own loop:
// by then every stopped handler has returned.
void WaitPump::leave() {
    if (--depth_ > 0)
        return;
    emit waitingChanged(false);
    if (stopping_)
        QTimer::singleShot(0, this, [this] { stopping_ = depth_ > 0; });
}

bool WaitPump::until(const std::function<bool()>& done) {
    enter();
    while (!cancelled() && !done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    leave();
    return !cancelled();
}

bool WaitPump::untilConnected(const std::function<bool()>& connected) {
    // The ticking timer bounds each pass to about 1 ms without spinning.
    QTimer tick;
    tick.setInterval(1);
    tick.start();
    enter();
    int passes = 0;
    bool failed = false;
    while (!cancelled() && !connected()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (passes > ConnectPassLimit) {
            failed = true;
            break;
        }
        ++passes;
    }
    leave();
    return !failed && !cancelled();
}
