#include "link/devicelink.h"

#include "link/sendline.h"
#include "protocol/address.h"

#include <QHostAddress>
#include <QTcpSocket>

bool isControllerAddress(const QString& host, QHostAddress* address) {
    return protocol::isControllerAddressText(host) && address->setAddress(host) &&
           address->protocol() == QAbstractSocket::IPv4Protocol;
}

DeviceLink::DeviceLink(QObject* parent) : QObject(parent) {}

DeviceLink::~DeviceLink() = default;

QTcpSocket* DeviceLink::socket(int index) const {
    if (index < 0 || index >= static_cast<int>(entries_.size()))
        return nullptr;
    return entries_[static_cast<size_t>(index)].socket;
}

void DeviceLink::grow(int index) {
    while (static_cast<int>(entries_.size()) <= index) {
        const int i = static_cast<int>(entries_.size());
        auto* s = new QTcpSocket(this);
        // Only the selected controller's socket is read: what another one sends stays
        // in the system's buffers beyond this, and the sender is held back.
        s->setReadBufferSize(ReadBufferBytes);
        connect(s, &QTcpSocket::readyRead, this, [this, i] { onReadyRead(i); });
        connect(s, &QTcpSocket::stateChanged, this, [this, i] { onSocketState(i); });
        entries_.push_back({s});
    }
}

void DeviceLink::onReadyRead(int index) {
    Entry& e = entries_[static_cast<size_t>(index)];
    const qint64 waiting = e.socket->bytesAvailable();
    if (waiting > e.shown) {
        emit received(index, e.socket->peek(waiting).mid(e.shown));
        // A borrower reads everything as it comes; the tool reads only when asked.
        e.shown = e.lent ? 0 : waiting;
    }
    if (!e.lent)
        emit dataArrived(index);
}

void DeviceLink::onSocketState(int index) {
    Entry& e = entries_[static_cast<size_t>(index)];
    State now = State::NotConnected;
    switch (e.socket->state()) {
    case QAbstractSocket::ConnectedState:
        now = State::Connected;
        break;
    case QAbstractSocket::UnconnectedState:
        now = e.state == State::Connected && !e.closing ? State::Lost : State::NotConnected;
        break;
    case QAbstractSocket::ClosingState:
        return;
    default:
        now = State::Connecting;
    }
    if (now != e.state) {
        e.state = now;
        emit stateChanged(index);
    }
}

DeviceLink::State DeviceLink::state(int index) const {
    if (index < 0 || index >= static_cast<int>(entries_.size()))
        return State::NotConnected;
    return entries_[static_cast<size_t>(index)].state;
}

void DeviceLink::connectTo(int index, const QString& host) {
    if (index < 0)
        return;
    grow(index);
    Entry& e = entries_[static_cast<size_t>(index)];
    e.closing = true;
    e.socket->abort();
    e.closing = false;
    e.shown = 0;
    QHostAddress address;
    if (isControllerAddress(host, &address))
        e.socket->connectToHost(address, ControllerPort);
}

void DeviceLink::close(int index) {
    if (QTcpSocket* s = socket(index)) {
        Entry& e = entries_[static_cast<size_t>(index)];
        e.closing = true;
        s->abort();
        e.closing = false;
        e.shown = 0;
    }
}

bool DeviceLink::isConnected(int index) const {
    const QTcpSocket* s = socket(index);
    return s && s->state() == QAbstractSocket::ConnectedState;
}

void DeviceLink::write(int index, const QByteArray& line) {
    if (isConnected(index)) {
        sendLine(socket(index), line);
        emit written(index, line);
    }
}

void DeviceLink::tap(int index, bool sent, const QByteArray& bytes) {
    if (sent)
        emit written(index, bytes);
    else
        emit received(index, bytes);
}

QString DeviceLink::readAll(int index) {
    QTcpSocket* s = socket(index);
    if (!s)
        return {};
    entries_[static_cast<size_t>(index)].shown = 0;
    return QString::fromLatin1(s->readAll());
}

QTcpSocket* DeviceLink::lend(int index) {
    if (!isConnected(index) || entries_[static_cast<size_t>(index)].lent)
        return nullptr;
    entries_[static_cast<size_t>(index)].lent = true;
    return socket(index);
}

void DeviceLink::giveBack(int index) {
    if (QTcpSocket* s = socket(index)) {
        Entry& e = entries_[static_cast<size_t>(index)];
        e.lent = false;
        e.shown = s->bytesAvailable();
    }
}
