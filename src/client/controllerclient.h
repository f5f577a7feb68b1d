#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QTimer>
#include <functional>

class QTcpSocket;

// One framed connection to one controller, for procedures that work without the
// window's reply handlers. Each exchange sends one command line and, where the
// controller answers it, collects bytes until the reply line is complete ("\r\n") and
// checks its key. Exchanges are queued first and run once begin() is called, in the
// order they were queued, each only after the one before has ended; an answer may
// queue more. Any failure ends the client with a message that names the host and the
// command. Many clients run side by side in one event loop.
class ControllerClient : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultTimeoutMs = 2000;
    // A reply longer than this without its line end is garbage, not a reply.
    static constexpr qsizetype MaxReplyBytes = 1024;

    using Answer = std::function<void(const QByteArray& reply)>;
    // Puts a line on the wire; by default straight to the socket.
    using Writer = std::function<void(const QByteArray& line)>;

    ControllerClient(const QString& host, int timeoutMs, QObject* parent = nullptr);
    // Works on a connection that someone else owns and keeps open (DeviceLink::lend),
    // writing through writer so that the owner sees every line.
    ControllerClient(QTcpSocket* lent, Writer writer, const QString& host, int timeoutMs,
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
    // Connects (or, lent, starts at once) and runs the queue; a client given nothing to
    // do ends at once, well.
    void begin();
    // Ends the client with a failure: an answer that did not make sense, a deadline.
    void fail(const QString& why);
    bool ended() const { return finished_; }
    // Ended, and not by a failure.
    bool succeeded() const { return finished_ && !failed_; }

signals:
    // Every queued exchange has ended well.
    void finished();
    void failed(const QString& message);
    // A reply has come. The controller takes its lines in order, so a reply also
    // confirms every line written before the one it answers.
    void replied();
    // Every line as it is written and every chunk as it arrives, for a traffic log.
    void wrote(const QByteArray& line);
    void arrived(const QByteArray& bytes);

private:
    struct Exchange {
        QByteArray line;
        QByteArray replyKey;
        int rawWaitMs = -1; // >= 0: unframed, collect for this long
        Answer answer;
    };

    void watch();
    void next();
    void arm(int ms);
    void onReadyRead();
    void onTimeout();
    void onError();
    void complete(const QByteArray& reply);
    QString command() const;

    QString host_;
    int timeoutMs_;
    QTcpSocket* socket_;
    bool owned_;
    Writer writer_;
    QTimer timer_;
    QElapsedTimer armed_; // when the timer was started, so that it never fires early
    int armedMs_ = 0;
    QQueue<Exchange> queue_;
    QByteArray buffer_;
    bool begun_ = false;
    bool running_ = false;  // an exchange is out
    bool finished_ = false; // failed, or the queue ran dry
    bool failed_ = false;
};
