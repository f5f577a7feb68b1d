#pragma once

#include <QObject>
#include <functional>

// Runs the event loop inside a handler until a reply has been handled. Replies are
// delivered by the events this pump processes, so the condition is tested after every
// event. The pump blocks for the next event instead of spinning.
//
// Once cancelled (the window closed or the application is quitting) every wait ends at
// once and returns false; the caller then stops without sending or showing anything.
class WaitPump : public QObject {
    Q_OBJECT
public:
    // A controller that does not connect within this many passes has failed.
    static constexpr int ConnectPassLimit = 3000;

    explicit WaitPump(QObject* parent = nullptr);

    // Pump until done() holds. No time-out: only cancel() ends it early.
    bool until(const std::function<bool()>& done);

    // Pump one pass at a time (at most about 1 ms each) until connected() holds;
    // false after more than ConnectPassLimit passes or when cancelled.
    bool untilConnected(const std::function<bool()>& connected);

    void cancel() { cancelled_ = true; }
    bool cancelled() const { return cancelled_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool cancelled_ = false;
};
