#include "link/controllerclient.h"

#include "link/devicelink.h"
#include "link/sendline.h"

#include <QHostAddress>
#include <QTcpSocket>

ControllerClient::ControllerClient(const QString& host, int timeoutMs, QObject* parent)
    : QObject(parent), host_(host), timeoutMs_(timeoutMs), socket_(new QTcpSocket(this)),
      owned_(true) {
    watch();
}

ControllerClient::ControllerClient(QTcpSocket* lent, const QString& host, int timeoutMs,
                                   QObject* parent)
    : QObject(parent), host_(host), timeoutMs_(timeoutMs), socket_(lent), owned_(false) {
    watch();
}

void ControllerClient::watch() {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &ControllerClient::onTimeout);
    connect(socket_, &QTcpSocket::connected, this, &ControllerClient::next);
    connect(socket_, &QTcpSocket::readyRead, this, &ControllerClient::onReadyRead);
    connect(socket_, &QTcpSocket::errorOccurred, this, [this] {
        const bool closed = socket_->error() == QAbstractSocket::RemoteHostClosedError;
        if (closed && running_ && queue_.head().rawWaitMs >= 0)
            complete(buffer_); // a raw line may restart the controller
        else if (closed && running_)
            fail(QStringLiteral("closed the connection while waiting for the reply to %1")
                     .arg(command()));
        else if (!closed)
            fail(socket_->errorString());
    });
}

ControllerClient::~ControllerClient() = default;

void ControllerClient::exchange(const QByteArray& line, const QByteArray& replyKey, Answer answer) {
    queue_.enqueue({line, replyKey, -1, std::move(answer)});
    start();
}

void ControllerClient::sendRaw(const QByteArray& line, int waitMs, Answer answer) {
    queue_.enqueue({line, {}, qMax(0, waitMs), std::move(answer)});
    start();
}

void ControllerClient::then(std::function<void()> step) {
    queue_.enqueue({{}, {}, -1, [step = std::move(step)](const QByteArray&) { step(); }});
    start();
}

void ControllerClient::start() {
    if (!owned_ && !running_ && !finished_) {
        if (socket_->state() == QAbstractSocket::ConnectedState)
            next();
        else
            fail(QStringLiteral("not connected"));
        return;
    }
    if (socket_->state() != QAbstractSocket::UnconnectedState || finished_)
        return;
    QHostAddress address;
    if (!isControllerAddress(host_, &address)) {
        fail(QStringLiteral("not a controller address"));
        return;
    }
    timer_.start(timeoutMs_);
    socket_->connectToHost(address, DeviceLink::ControllerPort);
}

QString ControllerClient::command() const {
    return queue_.isEmpty() ? QString() : QString::fromLatin1(queue_.head().line).trimmed();
}

void ControllerClient::next() {
    timer_.stop();
    if (finished_ || running_ || socket_->state() != QAbstractSocket::ConnectedState)
        return;
    if (queue_.isEmpty()) {
        finished_ = true;
        if (owned_)
            socket_->disconnectFromHost();
        emit finished();
        return;
    }
    const Exchange& e = queue_.head();
    running_ = true;
    buffer_.clear();
    if (!e.line.isEmpty())
        sendLine(socket_, e.line);
    if (e.rawWaitMs >= 0) {
        timer_.start(e.rawWaitMs);
    } else if (e.replyKey.isEmpty()) {
        complete({});
    } else {
        timer_.start(timeoutMs_);
    }
}

void ControllerClient::onReadyRead() {
    buffer_ += socket_->readAll();
    if (!running_ || queue_.isEmpty()) {
        fail(QStringLiteral("sent %1 unasked").arg(visibleText(buffer_.left(MaxReplyBytes))));
        return;
    }
    const Exchange& e = queue_.head();
    if (e.rawWaitMs >= 0) {
        buffer_ = buffer_.left(MaxReplyBytes);
        return;
    }
    const qsizetype end = buffer_.indexOf("\r\n");
    if (end < 0) {
        if (buffer_.size() > MaxReplyBytes)
            fail(QStringLiteral("answered %1 with %2 bytes and no line end")
                     .arg(command())
                     .arg(buffer_.size()));
        return;
    }
    const QByteArray reply = buffer_.left(end);
    if (end + 2 < buffer_.size())
        fail(QStringLiteral("answered %1 with more than one line: %2")
                 .arg(command(), visibleText(buffer_.left(MaxReplyBytes))));
    else if (!reply.startsWith(e.replyKey))
        fail(QStringLiteral("answered %1 with %2, not %3")
                 .arg(command(), visibleText(reply.left(MaxReplyBytes)),
                      QString::fromLatin1(e.replyKey)));
    else
        complete(reply);
}

void ControllerClient::onTimeout() {
    if (running_ && queue_.head().rawWaitMs >= 0)
        complete(buffer_);
    else if (running_)
        fail(QStringLiteral("no reply to %1 within %2 ms").arg(command()).arg(timeoutMs_));
    else
        fail(QStringLiteral("no connection within %1 ms").arg(timeoutMs_));
}

void ControllerClient::complete(const QByteArray& reply) {
    timer_.stop();
    const Exchange e = queue_.dequeue();
    running_ = false;
    if (e.answer)
        e.answer(reply);
    next();
}

void ControllerClient::endIfIdle() {
    if (queue_.isEmpty() && !running_ && !finished_) {
        finished_ = true;
        emit finished();
    }
}

void ControllerClient::fail(const QString& why) {
    if (finished_)
        return;
    finished_ = true;
    failed_ = true;
    running_ = false;
    timer_.stop();
    queue_.clear();
    if (owned_)
        socket_->abort();
    else
        socket_->readAll(); // what is left of a reply that did not make sense
    emit failed(QStringLiteral("%1: %2").arg(host_, why));
}

QString visibleText(const QByteArray& bytes) {
    QString text;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\r')
            text += QLatin1String("\\r");
        else if (c == '\n')
            text += QLatin1String("\\n");
        else if (c == '\t')
            text += QLatin1String("\\t");
        else if (c == '\\')
            text += QLatin1String("\\\\");
        else if (u < 0x20 || u >= 0x7f)
            text += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else
            text += QLatin1Char(c);
    }
    return text;
}
