#include "simulator.h"

namespace sim {

Simulator::Simulator(QObject* parent) : QObject(parent) {}

Simulator::~Simulator() {
    stop();
}

bool Simulator::start(const QHostAddress& first, int count, quint16 port, Addresses addresses) {
    stop();
    const quint32 base = first.toIPv4Address();
    const bool loopback = (base >> 24) == 127;
    if (first.protocol() != QHostAddress::IPv4Protocol ||
        (addresses == Addresses::LoopbackOnly && !loopback)) {
        error_ = QStringLiteral("%1 is not a loopback address (127.0.0.0/8)").arg(first.toString());
        return false;
    }
    // Loopback ends below 127.255.255.255, its broadcast address; other unicast below
    // the multicast range 224.0.0.0/4.
    const quint64 end = loopback ? 0x7FFFFFFFu : 0xE0000000u;
    const quint64 last = quint64(base) + quint64(qMax(count, 1)) - 1;
    if (!loopback && (base >> 24) == 0) {
        error_ = QStringLiteral("%1 is no address to listen on").arg(first.toString());
        return false;
    }
    if (count < 1 || last >= end || (!loopback && (last >> 24) == 127)) {
        error_ = QStringLiteral("%1 controllers from %2 do not fit in %3")
                     .arg(count)
                     .arg(first.toString(),
                          loopback ? QStringLiteral("127.0.0.0/8")
                                   : QStringLiteral("the unicast addresses outside 127.0.0.0/8"));
        return false;
    }
    for (int i = 0; i < count; ++i) {
        auto* c = new VirtualController(i + 1, this);
        connect(c, &VirtualController::logLine, this, &Simulator::logLine);
        if (!c->listen(QHostAddress(base + quint32(i)), port)) {
            error_ = c->errorString();
            delete c;
            stop();
            return false;
        }
        controllers_.append(c);
    }
    error_.clear();
    return true;
}

void Simulator::stop() {
    qDeleteAll(controllers_);
    controllers_.clear();
}

VirtualController* Simulator::controller(int number) const {
    return number >= 1 && number <= controllers_.size() ? controllers_[number - 1] : nullptr;
}

void Simulator::setFaults(int number, const Faults& faults) {
    for (VirtualController* c : controllers_)
        if (number == 0 || c->number() == number)
            c->setFaults(faults);
}

} // namespace sim
