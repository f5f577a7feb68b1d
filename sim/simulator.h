#pragma once

#include "faults.h"
#include "virtualcontroller.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>

namespace sim {

// N controllers in one process on consecutive loopback addresses, one port.
class Simulator : public QObject {
    Q_OBJECT
public:
    // Virtual controllers answer anyone who reaches them and change their settings on
    // request: on a real network that is a foreign device. Other addresses are for a
    // simulated LAN inside a network namespace, and only when asked for.
    enum class Addresses { LoopbackOnly, Any };

    explicit Simulator(QObject* parent = nullptr);
    ~Simulator() override;

    // Controllers 1..count on first, first + 1, ...; all addresses must lie in
    // 127.0.0.0/8, or with Any in one unicast range (no 0.0.0.0, no multicast or
    // broadcast). On failure nothing keeps running and errorString() says why.
    bool start(const QHostAddress& first, int count, quint16 port = VirtualController::DefaultPort,
               Addresses addresses = Addresses::LoopbackOnly);
    void stop();
    QString errorString() const { return error_; }

    int count() const { return int(controllers_.size()); }
    VirtualController* controller(int number) const; // 1-based, nullptr outside
    QList<VirtualController*> controllers() const { return controllers_; }

    // number 0 = every controller.
    void setFaults(int number, const Faults& faults);

signals:
    void logLine(const QString& line);

private:
    QList<VirtualController*> controllers_;
    QString error_;
};

} // namespace sim
