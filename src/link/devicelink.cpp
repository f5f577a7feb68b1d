#include "link/devicelink.h"

#include <QHostAddress>
#include <QTcpSocket>

bool isControllerAddress(const QString& host, QHostAddress* address) {
    return address->setAddress(host) && address->protocol() == QAbstractSocket::IPv4Protocol &&
           address->toString() == host && *address != QHostAddress(QHostAddress::AnyIPv4);
}

DeviceLink::DeviceLink(QObject* parent) : QObject(parent) {}

DeviceLink::~DeviceLink() = default;

QTcpSocket* DeviceLink::socket(int index) const {
    if (index < 0 || index >= static_cast<int>(sockets_.size()))
        return nullptr;
    return sockets_[static_cast<size_t>(index)];
}

void DeviceLink::connectTo(int index, const QString& host) {
    if (index < 0)
        return;
    while (static_cast<int>(sockets_.size()) <= index) {
        const int i = static_cast<int>(sockets_.size());
        auto* s = new QTcpSocket(this);
        // Only the selected controller's socket is read: what another one sends stays
        // in the system's buffers beyond this, and the sender is held back.
        s->setReadBufferSize(ReadBufferBytes);
        connect(s, &QTcpSocket::readyRead, this, [this, i] {
            if (!lent_[static_cast<size_t>(i)])
                emit dataArrived(i);
        });
        sockets_.push_back(s);
        lent_.push_back(false);
    }
    QTcpSocket* s = socket(index);
    s->abort();
    QHostAddress address;
    if (isControllerAddress(host, &address))
        s->connectToHost(address, ControllerPort);
}

void DeviceLink::close(int index) {
    if (QTcpSocket* s = socket(index))
        s->abort();
}

bool DeviceLink::isConnected(int index) const {
    const QTcpSocket* s = socket(index);
    return s && s->state() == QAbstractSocket::ConnectedState;
}

void DeviceLink::write(int index, const QByteArray& line) {
    if (isConnected(index))
        socket(index)->write(line);
}

QString DeviceLink::readAll(int index) {
    QTcpSocket* s = socket(index);
    return s ? QString::fromLatin1(s->readAll()) : QString();
}

QTcpSocket* DeviceLink::lend(int index) {
    if (!isConnected(index) || lent_[static_cast<size_t>(index)])
        return nullptr;
    lent_[static_cast<size_t>(index)] = true;
    return socket(index);
}

void DeviceLink::giveBack(int index) {
    if (socket(index))
        lent_[static_cast<size_t>(index)] = false;
}
