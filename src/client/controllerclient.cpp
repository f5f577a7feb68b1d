#include "client/controllerclient.h"

#include "link/devicelink.h"
#include "link/sendline.h"
#include "protocol/command.h"

#include <QHostAddress>
#include <QTcpSocket>

ControllerClient::ControllerClient(const QString& host, int timeoutMs, QObject* parent)
    : QObject(parent), host_(host), timeoutMs_(timeoutMs), socket_(new QTcpSocket(this)),
      owned_(true), writer_([this](const QByteArray& line) { sendLine(socket_, line); }) {
    watch();
}

ControllerClient::ControllerClient(QTcpSocket* lent, Writer writer, const QString& host,
                                   int timeoutMs, QObject* parent)
    : QObject(parent), host_(host), timeoutMs_(timeoutMs), socket_(lent), owned_(false),
      writer_(std::move(writer)) {
    watch();
}

ControllerClient::~ControllerClient() = default;

void ControllerClient::watch() {
    // A coarse timer may fire up to 5 % early; a time-out must never be shorter than
    // the one asked for.
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &ControllerClient::onTimeout);
    connect(socket_, &QTcpSocket::connected, this, &ControllerClient::next);
    connect(socket_, &QTcpSocket::readyRead, this, &ControllerClient::onReadyRead);
    connect(socket_, &QTcpSocket::errorOccurred, this, &ControllerClient::onError);
}

void ControllerClient::exchange(const QByteArray& line, const QByteArray& replyKey, Answer answer) {
    if (!finished_)
        queue_.enqueue({line, replyKey, -1, std::move(answer)});
}

void ControllerClient::sendRaw(const QByteArray& line, int waitMs, Answer answer) {
    if (!finished_)
        queue_.enqueue({line, {}, qMax(0, waitMs), std::move(answer)});
}

void ControllerClient::then(std::function<void()> step) {
    exchange({}, {}, [step = std::move(step)](const QByteArray&) { step(); });
}

// Nothing goes out before this: a line that needs no reply would otherwise end a
// lent client's run before the rest of its sequence is queued.
void ControllerClient::begin() {
    if (begun_ || finished_)
        return;
    begun_ = true;
    if (queue_.isEmpty()) {
        finished_ = true;
        emit finished();
        return;
    }
    if (!owned_) {
        if (socket_->state() == QAbstractSocket::ConnectedState)
            next();
        else
            fail(QStringLiteral("not connected"));
        return;
    }
    QHostAddress address;
    if (!isControllerAddress(host_, &address)) {
        fail(QStringLiteral("not a controller address"));
        return;
    }
    arm(timeoutMs_);
    socket_->connectToHost(address, DeviceLink::ControllerPort);
}

QString ControllerClient::command() const {
    return queue_.isEmpty() ? QString() : QString::fromLatin1(queue_.head().line).trimmed();
}

void ControllerClient::arm(int ms) {
    armed_.start();
    armedMs_ = ms;
    timer_.start(ms);
}

void ControllerClient::next() {
    timer_.stop();
    if (!begun_ || finished_ || running_ || socket_->state() != QAbstractSocket::ConnectedState)
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
    if (!e.line.isEmpty()) {
        writer_(e.line);
        emit wrote(e.line);
    }
    if (e.rawWaitMs >= 0)
        arm(e.rawWaitMs);
    else if (e.replyKey.isEmpty())
        complete({});
    else
        arm(timeoutMs_);
}

void ControllerClient::onReadyRead() {
    if (finished_)
        return; // a lent socket's late bytes belong to its owner again
    const QByteArray chunk = socket_->readAll();
    emit arrived(chunk);
    buffer_ += chunk;
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
    const qint64 left = armedMs_ - armed_.elapsed();
    if (left > 0) {
        timer_.start(int(left));
        return;
    }
    if (running_ && queue_.head().rawWaitMs >= 0)
        complete(buffer_);
    else if (running_)
        fail(QStringLiteral("no reply to %1 within %2 ms").arg(command()).arg(timeoutMs_));
    else
        fail(QStringLiteral("no connection within %1 ms").arg(timeoutMs_));
}

void ControllerClient::onError() {
    if (finished_)
        return;
    if (socket_->error() != QAbstractSocket::RemoteHostClosedError)
        fail(socket_->errorString());
    else if (running_ && queue_.head().rawWaitMs >= 0)
        complete(buffer_); // a raw line may restart the controller
    else if (running_)
        fail(QStringLiteral("closed the connection while waiting for the reply to %1")
                 .arg(command()));
    else
        fail(QStringLiteral("closed the connection"));
}

void ControllerClient::complete(const QByteArray& reply) {
    timer_.stop();
    const Exchange e = queue_.dequeue();
    running_ = false;
    if (!reply.isEmpty())
        emit replied();
    if (e.answer)
        e.answer(reply);
    next();
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
    else if (socket_->isOpen())
        socket_->readAll(); // what is left of a reply that did not make sense
    emit failed(QStringLiteral("%1: %2").arg(host_, why));
}
