#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class QLabel;
class WindowServices;

// Names in the status bar what the running procedure waits for and for how long:
// "Status read: waiting for BYPA from 127.0.0.2 for 12 s". A wait for a reply has no
// time-out; after HintAfterS seconds the text points at the way out. A wait shorter
// than ShowAfterMs is never shown: a refresh answers every few hundred microseconds, and
// text that changes that fast is flicker nobody can read, and costs the refresh.
class WaitStatus : public QObject {
    Q_OBJECT
public:
    static constexpr int HintAfterS = 5;
    static constexpr int ShowAfterMs = 250;

    WaitStatus(WindowServices& session, QLabel* label);

    // What the running wait waits for, shown yet or not; empty when none runs.
    QString current() const { return waitingFor_; }

private:
    void begin(const QString& text, const QString& wayOut);
    void update();
    void show(const QString& text);

    QLabel* label_;
    QString waitingFor_;
    QString wayOut_;
    QElapsedTimer since_;
    QTimer tick_;
    QTimer show_;
};
