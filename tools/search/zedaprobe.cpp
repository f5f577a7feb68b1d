#include "zedaprobe.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <memory>

Prober::Prober(const Settings& settings, QObject* parent) : QObject(parent), settings_(settings) {
    // A connect that fails at once (no route) reports inside connectToHost(). Hosts are
    // launched from this timer only, so such a failure never launches the next host
    // inside itself, however many fail so, and finished() never comes from start(),
    // before the caller's event loop runs.
    launcher_.setSingleShot(true);
    launcher_.setInterval(0);
    connect(&launcher_, &QTimer::timeout, this, &Prober::launchMore);
}

void Prober::start(const QList<quint32>& hosts) {
    hosts_ = hosts;
    next_ = running_ = done_ = 0;
    found_.clear();
    if (hosts_.isEmpty()) {
        QTimer::singleShot(0, this, &Prober::finished);
        return;
    }
    launcher_.start();
}

QList<Prober::Found> Prober::found() const {
    QList<Found> sorted = found_;
    std::sort(sorted.begin(), sorted.end(),
              [](const Found& a, const Found& b) { return a.address < b.address; });
    return sorted;
}

// At most `parallel` launches a turn, also when they fail at once: the sockets of
// failed hosts are deleted between turns.
void Prober::launchMore() {
    for (int n = 0;
         n < settings_.parallel && running_ < settings_.parallel && next_ < hosts_.size(); ++n)
        launch(hosts_[next_++]);
}

void Prober::launch(quint32 address) {
    ++running_;
    auto* socket = new QTcpSocket(this);
    auto* timer = new QTimer(socket);
    const auto reply = std::make_shared<QByteArray>(); // lives as long as the handlers
    timer->setSingleShot(true);
    socket->setReadBufferSize(MaxReplyBytes + 1);

    // Every path ends in finish() exactly once: the socket is disconnected from all
    // handlers there before it goes.
    connect(timer, &QTimer::timeout, socket, [=, this] { finish(socket, timer, address, *reply); });
    connect(socket, &QTcpSocket::errorOccurred, socket,
            [=, this] { finish(socket, timer, address, *reply); });
    connect(socket, &QTcpSocket::connected, socket, [=, this] {
        socket->write("RVER\r\n");
        timer->start(settings_.replyTimeoutMs);
    });
    connect(socket, &QTcpSocket::readyRead, socket,
            [=, this] { receive(socket, timer, address, reply.get()); });

    timer->start(settings_.connectTimeoutMs);
    socket->connectToHost(QHostAddress(address), settings_.port);
}

void Prober::receive(QTcpSocket* socket, QTimer* timer, quint32 address, QByteArray* reply) {
    *reply += socket->read(MaxReplyBytes + 1 - reply->size());
    if (reply->startsWith("VERS") && reply->contains('\n'))
        finish(socket, timer, address, *reply);
    else if (reply->size() > MaxReplyBytes || (reply->size() >= 4 && !reply->startsWith("VERS")))
        finish(socket, timer, address, {});
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
        launcher_.start();
}
