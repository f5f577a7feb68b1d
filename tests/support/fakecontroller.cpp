#include "support/fakecontroller.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

FakeController::FakeController(const QString& address, QObject* parent)
    : QObject(parent), address_(address), server_(new QTcpServer(this)) {
    server_->listen(QHostAddress(address), 23);
    connect(server_, &QTcpServer::newConnection, this, &FakeController::onNewConnection);
}

FakeController::~FakeController() = default;

bool FakeController::isListening() const {
    return server_->isListening();
}

void FakeController::answerLikeController() {
    const std::pair<const char*, const char*> fixed[] = {
        {"RPOW", "POWE001"},
        {"RMDN", "MODN000"},
        {"RBY", "BYPA000"},
        {"RBEZ", "BEZE001"},
        {"RVER", "VERS102"},
        {"RIPM", "IPMD001"},
        {"RLINK",
         "IP00127IP01000IP02000IP03002MA00255MA01255MA02255MA03000GA00127GA01000GA02000GA03001"},
        {"RRES", "RESO006"},
        {"ROSDD", "OSDD000"},
        {"ROSDT", "OSDT010"},
        {"ROSDH", "OSDH005"},
        {"ROSDV", "OSDV005"},
        {"ROSDG", "OSDG002"},
        {"RMUTE", "MUTE000"}};
    for (auto [keyword, answer] : fixed)
        reply(QLatin1String(keyword), QLatin1String(answer));
    reply(QStringLiteral("RCBH"), [](const QString&) { return QByteArray("CBHV1  CBHV010"); });
    reply(QStringLiteral("RCBV"), [](const QString&) { return QByteArray("CBVV1  CBVV010"); });
}

void FakeController::reply(const QString& keyword, const QString& answer) {
    const QByteArray bytes = answer.toLatin1();
    script_[keyword] = [bytes](const QString&) { return bytes; };
}

void FakeController::reply(const QString& keyword, Responder responder) {
    script_[keyword] = std::move(responder);
}

void FakeController::push(const QByteArray& bytes) {
    for (QTcpSocket* client : clients_)
        client->write(bytes);
}

void FakeController::dropConnections() {
    const QList<QTcpSocket*> clients = clients_;
    clients_.clear();
    for (QTcpSocket* client : clients) {
        client->abort();
        client->deleteLater();
    }
}

void FakeController::stopListening() {
    server_->close();
    dropConnections();
}

void FakeController::clear() {
    received_.clear();
    lines_.clear();
}

void FakeController::onNewConnection() {
    while (QTcpSocket* client = server_->nextPendingConnection()) {
        ++accepted_;
        // Replies leave at once, so chunks arrive as the test sent them.
        client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        clients_ << client;
        connect(client, &QTcpSocket::readyRead, this, [this, client] { onReadyRead(client); });
        connect(client, &QTcpSocket::disconnected, this, [this, client] {
            clients_.removeAll(client);
            pending_.remove(client);
        });
    }
}

// A slot on lineReceived may drop the connection, and its pending bytes with it:
// the client is checked and its buffer looked up afresh after every line.
void FakeController::onReadyRead(QTcpSocket* client) {
    const QByteArray bytes = client->readAll();
    received_ += bytes;
    pending_[client] += bytes;
    const QPointer<QTcpSocket> alive(client);
    while (alive && clients_.contains(client)) {
        QByteArray& buffer = pending_[client];
        const qsizetype end = buffer.indexOf("\r\n");
        if (end < 0)
            return;
        const QString line = QString::fromLatin1(buffer.left(end));
        buffer.remove(0, end + 2);
        lines_ << line;
        emit lineReceived(line);
        if (alive && clients_.contains(client))
            answer(client, line);
    }
}

void FakeController::answer(QTcpSocket* client, const QString& line) {
    const QString keyword = line.section(u' ', 0, 0);
    if (allSilent_ || silent_.contains(keyword) || !script_.contains(keyword))
        return;
    const QByteArray reply = script_[keyword](line);
    if (reply.isNull())
        return;
    transmit(client, reply + "\r\n");
}

void FakeController::transmit(QTcpSocket* client, const QByteArray& bytes) {
    if (joinNext_) {
        joinNext_ = false;
        held_ = bytes;
        return;
    }
    const QByteArray chunk = held_ + bytes;
    held_.clear();
    if (splitAt_ > 0) {
        const int at = splitAt_;
        splitAt_ = 0;
        client->write(chunk.left(at));
        client->flush();
        // A pause long enough for the two parts to arrive as two chunks.
        QTimer::singleShot(50, client, [client, rest = chunk.mid(at)] { client->write(rest); });
        return;
    }
    client->write(chunk);
}
