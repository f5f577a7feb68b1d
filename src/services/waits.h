#pragma once

// The waits of the window: the pump that runs the event loop inside a handler, the step
// a procedure waits at, and the notices the status bar shows of them.

#include <QObject>
#include <QString>
#include <functional>

// Runs the event loop inside a handler until a reply has been handled. Replies are
// delivered by the events this pump processes, so the condition is tested after every
// event. The pump blocks for the next event instead of spinning.
//
// Once cancelled (the window closed or the application is quitting) every wait ends at
// once and returns false; the caller then stops without sending or showing anything.
// stop() does the same for the waits running now only: once their handlers have
// unwound to the application's own loop, waits work again.
class WaitPump : public QObject {
    Q_OBJECT
public:
    // A controller that does not connect within this many passes has failed.
    static constexpr int ConnectPassLimit = 3000;

    explicit WaitPump(QObject* parent = nullptr);

    // Pump until done() holds. No time-out: only cancel() or stop() ends it early.
    bool until(const std::function<bool()>& done);

    // Pump one pass at a time (at most about 1 ms each) until connected() holds;
    // false after more than ConnectPassLimit passes or when cancelled.
    bool untilConnected(const std::function<bool()>& connected);

    void cancel() { cancelled_ = true; }
    void stop();
    // True while closing, and while stopped handlers unwind.
    bool cancelled() const { return cancelled_ || stopping_; }
    bool waiting() const { return depth_ > 0; }
    // The window is closing or the application quitting: nothing is ever shown again.
    bool closing() const { return cancelled_; }

signals:
    // A first wait has begun, or the last running one has ended.
    void waitingChanged(bool waiting);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void enter();
    void leave();

    bool cancelled_ = false;
    bool stopping_ = false;
    int depth_ = 0; // waits running, nested in one another
};

// The hand-over between a procedure that waits for a reply and the reply handler that
// releases it. 0 is idle; a plain request goes 1 -> 2, a sequence counts the reply it
// expects next. Only WindowServices::request arms and clears a step; handlers move it on.
class WaitStep {
public:
    // procedure names it for the operator: "Status read", "Wall send".
    explicit WaitStep(const char* procedure) : procedure_(procedure) {}
    const char* procedure() const { return procedure_; }

    int value() const { return step_; }
    bool idle() const { return step_ == 0; }
    bool at(int step) const { return step_ == step; }
    void advance() { ++step_; }

private:
    friend class WindowServices; // arms and clears
    const char* procedure_;
    quint8 step_ = 0;
};

// What the running request waits for, for the operator's status bar.
class WaitNotice : public QObject {
    Q_OBJECT
signals:
    // reply: the key of the awaited reply, or the command when the controller
    // answers it with no key of its own.
    void waiting(const QString& procedure, const QString& reply, const QString& controller);
    // A wait for something other than a reply: what it does, and how to give it up.
    void working(const QString& text, const QString& wayOut);
    void ended();
    // A hint that stays until the next wait: what to do after a procedure's outcome.
    void hint(const QString& text);
};
