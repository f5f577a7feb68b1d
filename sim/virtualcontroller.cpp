#include "virtualcontroller.h"

#include "commandhandler.h"
#include "protocol/catalogue.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#ifndef Q_OS_WIN
#include <fcntl.h>
#include <unistd.h>
#endif

namespace sim {

namespace {

// The controllers of this process: they share its descriptors.
QList<VirtualController*>& everyController() {
    static QList<VirtualController*> all;
    return all;
}

} // namespace

namespace {

// What received() keeps: lines and bytes.
constexpr int MaxReceivedKept = 10000;
constexpr qsizetype MaxReceivedBytes = 1 << 20;
// Nothing the tool sends comes near this; a longer line is dropped whole.
constexpr qsizetype MaxLineLength = 4096;
// A connection holds at most this much unread input and this much unsent output,
// and serves at most so many lines before other connections get their turn.
constexpr qint64 MaxInputBytes = 64 * 1024;
constexpr qint64 MaxOutputBytes = 64 * 1024;
constexpr int LinesPerTurn = 64;

QString printable(const QByteArray& bytes) {
    QString out;
    for (char c : bytes) {
        const auto u = uchar(c);
        if (u >= 0x20 && u < 0x7F)
            out += QChar(u);
        else if (c == '\r')
            out += QStringLiteral("\\r");
        else if (c == '\n')
            out += QStringLiteral("\\n");
        else
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QChar('0'));
    }
    return out;
}

} // namespace

// One accepted connection: its line buffer and its outgoing replies, which faults
// may delay, hold back or cut in two.
class VirtualController::Connection : public QObject {
public:
    struct Item {
        QByteArray bytes;
        qint64 due = 0;
        std::function<void()> after; // runs once the bytes are written
        bool tail = false;           // second half of a split reply
    };

    Connection(VirtualController* owner, QTcpSocket* socket)
        : QObject(owner), owner_(owner), socket_(socket) {
        socket_->setParent(this);
        clock_.start();
        sendTimer_.setSingleShot(true);
        sendTimer_.setTimerType(Qt::PreciseTimer);
        holdTimer_.setSingleShot(true);
        holdTimer_.setTimerType(Qt::PreciseTimer);
        turnTimer_.setSingleShot(true);
        connect(&sendTimer_, &QTimer::timeout, this, [this] { pump(); });
        connect(&holdTimer_, &QTimer::timeout, this, [this] { releaseHeld(); });
        connect(&turnTimer_, &QTimer::timeout, this, [this] { serve(); });
        // Qt stops reading the socket when its buffer is full, so a client that sends
        // faster than it is served is held back by TCP itself.
        socket_->setReadBufferSize(MaxInputBytes);
        connect(socket_, &QTcpSocket::readyRead, this, [this] { serve(); });
        // Not served from here: bytesWritten comes from within a reply's own write.
        connect(socket_, &QTcpSocket::bytesWritten, this, [this] { turnTimer_.start(); });
        connect(socket_, &QTcpSocket::disconnected, this, [this] { owner_->dropConnection(this); });
        peer_ =
            QStringLiteral("%1:%2").arg(socket_->peerAddress().toString()).arg(socket_->peerPort());
    }

    QString peer() const { return peer_; }
    int commands = 0;
    int writes = 0;

    void push(const QByteArray& bytes) { write(bytes); }

    void enqueue(const QByteArray& bytes, std::function<void()> after) {
        if (bytes.isEmpty() && !after)
            return;
        put({bytes, clock_.elapsed() + owner_->faults_.latencyMs, std::move(after)});
        pump();
    }

    // Stop reading; what is queued still goes out, then the connection closes.
    void closeAfterQueue() {
        closing_ = true;
        enqueue({}, [this] { socket_->disconnectFromHost(); });
    }

    // Closes at once, dropping queued replies (network restart).
    void closeNow() {
        closing_ = true;
        queue_.clear();
        queuedBytes_ = 0;
        held_.reset();
        sendTimer_.stop();
        holdTimer_.stop();
        socket_->disconnectFromHost();
    }

private:
    // Serves a turn of lines, then yields to the event loop. While the client has not
    // taken what was answered, nothing more is read; its taking resumes the serving.
    void serve() {
        for (int n = 0; n < LinesPerTurn; ++n) {
            QByteArray line;
            if (closing_ || socket_->state() != QAbstractSocket::ConnectedState ||
                pendingOutput() > MaxOutputBytes || !nextLine(&line))
                return;
            if (!line.trimmed().isEmpty())
                owner_->process(this, line);
        }
        turnTimer_.start();
    }

    // The next line without its end (CR, LF or both); false until one is complete.
    bool nextLine(QByteArray* line) {
        for (;;) {
            const auto begin = buffer_.cbegin() + head_;
            const auto end =
                std::find_if(begin, buffer_.cend(), [](char c) { return c == '\r' || c == '\n'; });
            if (end == buffer_.cend()) {
                if (!readMore())
                    return false;
                continue;
            }
            head_ = end - buffer_.cbegin() + 1;
            if (!std::exchange(overlong_, false) && end - begin <= MaxLineLength) {
                *line = QByteArray(begin, end - begin);
                return true;
            }
            owner_->log(QStringLiteral("line of more than %1 bytes from %2 ignored")
                            .arg(MaxLineLength)
                            .arg(peer_));
        }
    }

    // Keeps what is not served yet and reads on; false when nothing more has come.
    // Served lines are cut off here, a few KiB at once rather than line by line, and a
    // line that runs past the limit is dropped as it comes.
    bool readMore() {
        buffer_.remove(0, head_);
        head_ = 0;
        if (buffer_.size() > MaxLineLength) {
            buffer_.clear();
            overlong_ = true;
        }
        if (socket_->bytesAvailable() == 0)
            return false;
        buffer_ += socket_->read(MaxLineLength);
        return true;
    }

    qint64 pendingOutput() const {
        return queuedBytes_ + (held_ ? held_->bytes.size() : 0) + socket_->bytesToWrite();
    }

    void put(Item item, bool front = false) {
        queuedBytes_ += item.bytes.size();
        if (front)
            queue_.push_front(std::move(item));
        else
            queue_.push_back(std::move(item));
    }

    Item take() {
        Item item = std::move(queue_.front());
        queue_.pop_front();
        queuedBytes_ -= item.bytes.size();
        return item;
    }

    void pump() {
        while (!queue_.empty() && queue_.front().due <= clock_.elapsed())
            deliver(take());
        if (!queue_.empty())
            sendTimer_.start(int(qMax<qint64>(0, queue_.front().due - clock_.elapsed())));
    }

    void deliver(Item item) {
        if (item.tail || !owner_->faults_.join) {
            send(std::move(item));
            return;
        }
        if (item.bytes.isEmpty()) { // close or restart: a held reply goes first
            releaseHeld();
            if (item.after)
                item.after();
            return;
        }
        if (!held_) {
            held_ = std::move(item);
            holdTimer_.start(owner_->faults_.joinHoldMs);
            return;
        }
        holdTimer_.stop();
        Item joined = std::move(*held_);
        held_.reset();
        joined.bytes += item.bytes;
        auto first = std::move(joined.after);
        auto second = std::move(item.after);
        joined.after = [first, second] {
            if (first)
                first();
            if (second)
                second();
        };
        send(std::move(joined));
    }

    void releaseHeld() {
        if (!held_)
            return;
        Item item = std::move(*held_);
        held_.reset();
        holdTimer_.stop();
        send(std::move(item));
        pump();
    }

    void send(Item item) {
        const Faults& f = owner_->faults_;
        if (!item.tail && f.splitAt > 0 && item.bytes.size() > f.splitAt) {
            write(item.bytes.left(f.splitAt));
            put({item.bytes.mid(f.splitAt), clock_.elapsed() + f.splitGapMs, std::move(item.after),
                 true},
                true);
            return;
        }
        if (!item.bytes.isEmpty())
            write(item.bytes);
        if (item.after)
            item.after();
    }

    // flush() hands each reply to the kernel on its own, so replies written one
    // after the other are not merged in the socket's buffer. A client that has gone
    // gets nothing (Qt would warn for every write).
    void write(const QByteArray& bytes) {
        if (socket_->state() != QAbstractSocket::ConnectedState)
            return;
        socket_->write(bytes);
        socket_->flush();
    }

    VirtualController* owner_;
    QTcpSocket* socket_;
    QString peer_;
    QByteArray buffer_; // input; lines before head_ are served
    qsizetype head_ = 0;
    bool overlong_ = false; // the line being read is already too long
    QElapsedTimer clock_;
    QTimer sendTimer_;
    QTimer holdTimer_;
    QTimer turnTimer_;
    std::deque<Item> queue_;
    qint64 queuedBytes_ = 0;
    std::optional<Item> held_;
    bool closing_ = false;
};

VirtualController::VirtualController(int number, QObject* parent) : QObject(parent) {
    state_.number = number;
    retry_ = new QTimer(this);
    retry_->setInterval(250);
    retry_->setSingleShot(true);
    connect(retry_, &QTimer::timeout, this, &VirtualController::resumeAccepting);
    everyController().append(this);
}

VirtualController::~VirtualController() {
    everyController().removeOne(this);
    stop();
}

bool VirtualController::listen(const QHostAddress& address, quint16 port) {
    stop();
    auto* server = new QTcpServer(this);
    if (!server->listen(address, port)) {
        error_ = listenErrorText(address, port, *server);
        delete server;
        return false;
    }
    takeServer(server);
    address_ = address;
    port_ = port;
    error_.clear();
    state_ = ControllerState::factory(state_.number, address.toIPv4Address());
    return true;
}

void VirtualController::stop() {
    dropAll();
    delete server_;
    server_ = nullptr;
    starved_ = false;
    retry_->stop();
}

void VirtualController::takeServer(QTcpServer* server) {
    server_ = server;
    starved_ = false;
    connect(server_, &QTcpServer::newConnection, this, &VirtualController::accept);
    // Not every Qt reports a failed accept; where it does, it pauses this server only.
    connect(server_, &QTcpServer::acceptError, this, [this] { starveAll(); });
}

// Out of descriptors, accept() fails while the listening socket stays readable: Qt
// drops the failure and the event loop calls back at once, for ever, one core spun
// until clients went. Every controller of the process draws on the same descriptors,
// so all stop accepting; the clients wait in the system's listen queue meanwhile.
void VirtualController::starveAll() {
    for (VirtualController* c : everyController()) {
        if (!c->server_ || c->starved_)
            continue;
        c->server_->pauseAccepting();
        c->starved_ = true;
        c->retry_->start();
        c->log(QStringLiteral("no file descriptor left for another connection; accepting "
                              "again when one frees"));
    }
}

// One is freed when a connection of any controller closes; the timer covers those
// freed elsewhere.
void VirtualController::resumeAccepting() {
    if (!server_ || !starved_)
        return;
    if (!descriptorFree()) {
        retry_->start();
        return;
    }
    starved_ = false;
    server_->resumeAccepting();
}

bool VirtualController::descriptorFree() {
#ifdef Q_OS_WIN
    // Winsock sockets are handles, not descriptors of a small per-process table.
    return true;
#else
    const int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno != EMFILE && errno != ENFILE;
    ::close(fd);
    return true;
#endif
}

bool VirtualController::isListening() const {
    return server_ && server_->isListening();
}

QString VirtualController::name() const {
    return QStringLiteral("#%1 %2").arg(state_.number).arg(address_.toString());
}

void VirtualController::accept() {
    while (QTcpSocket* s = server_->nextPendingConnection()) {
        // Each reply leaves at once as a chunk of its own, not held back to join the next.
        s->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        auto* c = new Connection(this, s);
        connections_.append(c);
        ++accepted_;
        log(QStringLiteral("connected from %1").arg(c->peer()));
    }
    // That may have taken the last descriptor: stop before accept() starts failing.
    if (!descriptorFree())
        starveAll();
}

void VirtualController::dropConnection(Connection* c) {
    if (!connections_.removeOne(c))
        return;
    log(QStringLiteral("connection from %1 closed").arg(c->peer()));
    // Its descriptor is free once the connection is deleted: try again right after.
    for (VirtualController* other : everyController())
        if (other->starved_)
            connect(c, &QObject::destroyed, other, &VirtualController::resumeAccepting);
    c->deleteLater();
}

void VirtualController::dropAll() {
    const QList<Connection*> all = connections_;
    connections_.clear();
    for (Connection* c : all) {
        c->closeNow();
        c->deleteLater();
    }
}

void VirtualController::process(Connection* c, const QByteArray& line) {
    received_.append(line);
    receivedBytes_ += line.size();
    while (received_.size() > MaxReceivedKept || receivedBytes_ > MaxReceivedBytes)
        receivedBytes_ -= received_.takeFirst().size();
    ++c->commands;

    const Response r = handleCommand(state_, line);
    const bool silent = faults_.silent.contains(r.keyword);
    const QByteArray answer = silent || !replyHook_ ? r.reply : replyHook_(line, r.reply);

    QString text = printable(line);
    const QString reply = printable(answer.chopped(answer.endsWith("\r\n") ? 2 : 0));
    if (!answer.isEmpty())
        text += silent ? QStringLiteral("  ->  (silent, would be %1)").arg(reply)
                       : QStringLiteral("  ->  %1").arg(reply);
    if (!r.note.isEmpty())
        text += QStringLiteral("  [%1]").arg(r.note);
    log(text);

    std::function<void()> after;
    if (r.action != Response::Action::None) {
        const bool factory = r.action == Response::Action::FactoryRestart;
        // Queued: the restart deletes this connection, which is still in use here.
        after = [this, factory] {
            QTimer::singleShot(0, this, [this, factory] { restart(factory); });
        };
    }
    c->enqueue(silent ? QByteArray() : answer, after);

    const protocol::Command* command = protocol::findCommand(r.keyword);
    if (r.recognised && command && command->effect == protocol::Effect::Write)
        ++c->writes;
    if ((faults_.dropAfter > 0 && c->commands >= faults_.dropAfter) ||
        (faults_.dropAfterWrites > 0 && c->writes >= faults_.dropAfterWrites)) {
        log(QStringLiteral("dropping connection from %1 after %2 commands")
                .arg(c->peer())
                .arg(c->commands));
        c->closeAfterQueue();
    }
}

void VirtualController::setFaults(const Faults& faults) {
    faults_ = faults;
    for (Connection* c : connections_)
        c->commands = c->writes = 0;
}

void VirtualController::restart(bool factory) {
    dropAll();
    QHostAddress target = address_;
    if (factory || state_.value("network.mode") != 0) {
        target = QHostAddress(quint32(state_.value("network.address")));
    } else {
        // DHCP: the loopback "lease" is the address it already has.
        state_.set("network.address", address_.toIPv4Address());
        state_.set("network.mask", 0xFF000000u);
        state_.set("network.gateway", 0x7F000001u);
    }
    if (target != address_ && !moveTo(target)) {
        log(QStringLiteral("restarted, staying at %1").arg(address_.toString()));
    } else {
        log(QStringLiteral("restarted at %1").arg(address_.toString()));
    }
    emit restarted(address_);
}

bool VirtualController::moveTo(const QHostAddress& address) {
    // A simulated controller lives on loopback only; anything else would be an
    // address of a real network.
    if ((address.toIPv4Address() >> 24) != 127 ||
        address.protocol() != QHostAddress::IPv4Protocol) {
        log(QStringLiteral("new address %1 is not in 127.0.0.0/8").arg(address.toString()));
        return false;
    }
    auto* server = new QTcpServer(this);
    if (!server->listen(address, port_)) {
        log(listenErrorText(address, port_, *server));
        delete server;
        return false;
    }
    delete server_;
    takeServer(server);
    const QString old = name();
    address_ = address;
    log(QStringLiteral("moved here from %1").arg(old));
    return true;
}

void VirtualController::push(const QByteArray& bytes) {
    for (Connection* c : connections_)
        c->push(bytes);
}

void VirtualController::log(const QString& text) {
    emit logLine(
        QStringLiteral("%1 %2  %3")
            .arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")), name(), text));
}

QString listenErrorText(const QHostAddress& address, quint16 port, const QTcpServer& server) {
    QString text = QStringLiteral("cannot listen on %1 port %2: %3")
                       .arg(address.toString())
                       .arg(port)
                       .arg(server.errorString());
    switch (server.serverError()) {
    case QAbstractSocket::SocketAccessError:
        if (port < 1024)
            text += QStringLiteral(" (port %1 needs root or the CAP_NET_BIND_SERVICE capability, "
                                   "e.g. sudo setcap cap_net_bind_service=+ep panomat-sim)")
                        .arg(port);
        break;
    case QAbstractSocket::AddressInUseError:
        text += QStringLiteral(" (another program already serves this address and port)");
        break;
    case QAbstractSocket::SocketAddressNotAvailableError:
        text += QStringLiteral(" (the address is not on this machine)");
        break;
    default:
        break;
    }
    return text;
}

} // namespace sim
