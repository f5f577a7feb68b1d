#pragma once

#include "controllerstate.h"
#include "faults.h"

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>

class QTcpServer;
class QTimer;

namespace sim {

// One simulated controller: a TCP server on its own address that accepts any number
// of connections, reads command lines (ended by CR, LF or both) and answers each
// with one chunk, as the real controller does. All connections share the settings.
class VirtualController : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 DefaultPort = 23;

    VirtualController(int number, QObject* parent = nullptr);
    ~VirtualController() override;

    // Starts serving on address:port with the factory settings for that address.
    bool listen(const QHostAddress& address, quint16 port = DefaultPort);
    void stop(); // closes the server and every connection
    QString errorString() const { return error_; }

    int number() const { return state_.number; }
    bool isListening() const;
    QHostAddress address() const { return address_; }
    quint16 port() const { return port_; }
    QString name() const; // "#2 127.0.0.3" for the log
    int connectionCount() const { return int(connections_.size()); }
    int acceptedCount() const { return accepted_; } // connections accepted so far

    const ControllerState& state() const { return state_; }
    void setState(const ControllerState& state) { state_ = state; }

    Faults faults() const { return faults_; }
    // The connections count their commands for dropAfter from here.
    void setFaults(const Faults& faults);

    // Every command line received, oldest first (bounded in lines and bytes; for
    // tests and the log).
    QList<QByteArray> received() const { return received_; }
    void clearReceived() {
        received_.clear();
        receivedBytes_ = 0;
    }

    // For tests: decides what goes back for a command line, given the reply the controller
    // would send (with its line end; empty when it stays silent). The faults apply to what
    // it returns, and a silent keyword stays silent.
    using ReplyHook = std::function<QByteArray(const QByteArray& line, const QByteArray& reply)>;
    void setReplyHook(ReplyHook hook) { replyHook_ = std::move(hook); }
    // Sends bytes on every connection now, past the faults: an unasked or a late reply.
    void push(const QByteArray& bytes);

signals:
    void logLine(const QString& line);
    // The controller restarted its network ("SREL", "SDEF") and now serves here.
    void restarted(const QHostAddress& address);

private:
    class Connection;
    friend class Connection;

    void accept();
    void takeServer(QTcpServer* server);
    static void starveAll();
    void resumeAccepting();
    static bool descriptorFree();
    void dropConnection(Connection* c);
    void process(Connection* c, const QByteArray& line);
    void restart(bool factory);
    void dropAll();
    bool moveTo(const QHostAddress& address);
    void log(const QString& text);

    ControllerState state_;
    Faults faults_;
    QTcpServer* server_ = nullptr;
    // Accepting paused: the process has no descriptor left for a new connection.
    bool starved_ = false;
    QTimer* retry_ = nullptr;
    QHostAddress address_;
    quint16 port_ = DefaultPort;
    QString error_;
    QList<Connection*> connections_;
    QList<QByteArray> received_;
    qsizetype receivedBytes_ = 0;
    int accepted_ = 0;
    ReplyHook replyHook_;
};

// Text for a failed listen, with the hint that matters on Linux.
QString listenErrorText(const QHostAddress& address, quint16 port, const QTcpServer& server);

} // namespace sim
