#include "zedaprobe.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <memory>

Prober::Prober(const Settings& settings, QObject* parent) : QObject(parent), settings_(settings) {}

void Prober::start(const QList<quint32>& hosts) {
    hosts_ = hosts;
    next_ = running_ = done_ = 0;
    found_.clear();
    if (hosts_.isEmpty()) {
        QTimer::singleShot(0, this, &Prober::finished);
        return;
    }
    launchMore();
}

QList<Prober::Found> Prober::found() const {
    QList<Found> sorted = found_;
    std::sort(sorted.begin(), sorted.end(),
              [](const Found& a, const Found& b) { return a.address < b.address; });
    return sorted;
}

void Prober::launchMore() {
    while (running_ < settings_.parallel && next_ < hosts_.size())
        launch(hosts_[next_++]);
}

void Prober::launch(quint32 address) {
    ++running_;
    auto* socket = new QTcpSocket(this);
    auto* timer = new QTimer(socket);
    const auto reply = std::make_shared<QByteArray>(); // lives as long as the handlers
    timer->setSingleShot(true);

    // Every path ends in finish() exactly once: the socket is disconnected from all
    // handlers there before it goes.
    connect(timer, &QTimer::timeout, socket, [=, this] { finish(socket, timer, address, *reply); });
    connect(socket, &QTcpSocket::errorOccurred, socket,
            [=, this] { finish(socket, timer, address, *reply); });
    connect(socket, &QTcpSocket::connected, socket, [=, this] {
        socket->write("RVER\r\n");
        timer->start(settings_.replyTimeoutMs);
    });
    connect(socket, &QTcpSocket::readyRead, socket, [=, this] {
        *reply += socket->readAll();
        if (reply->startsWith("VERS") && reply->contains('\n'))
            finish(socket, timer, address, *reply);
        else if (reply->size() >= 4 && !reply->startsWith("VERS"))
            finish(socket, timer, address, {});
    });

    timer->start(settings_.connectTimeoutMs);
    socket->connectToHost(QHostAddress(address), settings_.port);
}

void Prober::finish(QTcpSocket* socket, QTimer* timer, quint32 address, const QByteArray& reply) {
    timer->stop();
    socket->disconnect(); // no further handler runs for this socket
    socket->abort();
    socket->deleteLater();
    // A controller may close right after answering, so a reply that arrived before an
    // error still counts.
    if (reply.startsWith("VERS")) {
        const QByteArray version =
            reply.left(reply.indexOf('\r') >= 0 ? reply.indexOf('\r') : reply.indexOf('\n'));
        found_.append({address, version});
        emit controllerFound(address, version);
    }
    ++done_;
    --running_;
    if (done_ == hosts_.size())
        emit finished();
    else
        launchMore();
}
