#pragma once

#include <QByteArray>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QTimer>
#include <functional>

class QTcpSocket;

// One framed connection to one controller, for programs without a window. Each
// exchange sends one command line and, where the controller answers it, collects bytes
// until the reply line is complete ("\r\n") and checks its key. Exchanges run in the
// order they were queued, each only after the one before has ended; a callback may
// queue more. Any failure ends the connection with a message that names the host and
// the command. Many clients run side by side in one event loop.
class ControllerClient : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultTimeoutMs = 2000;
    // A reply longer than this without its line end is garbage, not a reply.
    static constexpr qsizetype MaxReplyBytes = 1024;

    using Answer = std::function<void(const QByteArray& reply)>;

    ControllerClient(const QString& host, int timeoutMs, QObject* parent = nullptr);
    // Works on a connection that someone else owns and keeps open (DeviceLink::lend).
    ControllerClient(QTcpSocket* lent, const QString& host, int timeoutMs,
                     QObject* parent = nullptr);
    ~ControllerClient() override;

    QString host() const { return host_; }

    // replyKey: characters 1-4 of the awaited reply; empty when the controller stays
    // silent, and then answer gets an empty reply once the line is written.
    void exchange(const QByteArray& line, const QByteArray& replyKey, Answer answer = {});
    // Sends a line and hands over every byte that arrives within waitMs, unframed.
    void sendRaw(const QByteArray& line, int waitMs, Answer answer);
    // Runs step once every exchange queued before it has ended; it may queue more.
    void then(std::function<void()> step);
    // Ends the connection with a failure, for an answer that did not make sense.
    void fail(const QString& why);
    // A client given nothing to do ends at once, well.
    void endIfIdle();
    // Ended, and not by a failure.
    bool succeeded() const { return finished_ && !failed_; }

signals:
    // Every queued exchange has ended well.
    void finished();
    void failed(const QString& message);

private:
    struct Exchange {
        QByteArray line;
        QByteArray replyKey;
        int rawWaitMs = -1; // >= 0: unframed, collect for this long
        Answer answer;
    };

    void watch();
    void start();
    void next();
    void onReadyRead();
    void onTimeout();
    void complete(const QByteArray& reply);
    QString command() const;

    QString host_;
    int timeoutMs_;
    QTcpSocket* socket_;
    bool owned_;
    QTimer timer_;
    QQueue<Exchange> queue_;
    QByteArray buffer_;
    bool running_ = false;  // an exchange is out
    bool finished_ = false; // failed, or the queue ran dry
    bool failed_ = false;
};

// Shows a line's control bytes: "\r", "\n", "\t" and "\xNN" for the others.
QString visibleText(const QByteArray& bytes);
