#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <functional>

class QTcpServer;
class QTcpSocket;

// A scripted controller on a loopback address, port 23. It records every byte it
// receives and answers each complete command line from its script, keyed by the
// command's keyword. Faults: replies split in two chunks, two replies joined in one
// chunk, silence, and dropping the connection.
class FakeController : public QObject {
    Q_OBJECT
public:
    using Responder = std::function<QByteArray(const QString& line)>;

    explicit FakeController(const QString& address, QObject* parent = nullptr);
    ~FakeController() override;

    bool isListening() const;
    QString address() const { return address_; }

    // Answers every read the full refresh makes with plausible values.
    void answerLikeController();
    // Answer a keyword with a fixed reply ("\r\n" is added) or from a function.
    void reply(const QString& keyword, const QString& answer);
    void reply(const QString& keyword, Responder responder);
    void silence(const QString& keyword) { silent_.insert(keyword); }
    void speak(const QString& keyword) { silent_.remove(keyword); }
    void silenceAll(bool on) { allSilent_ = on; }

    // The next reply goes out in two chunks, the first holding firstBytes bytes.
    void splitNextReply(int firstBytes) { splitAt_ = firstBytes; }
    // The next reply is held back and sent together with the one after it.
    void joinNextTwoReplies() { joinNext_ = true; }
    // Sends raw bytes to every connection now.
    void push(const QByteArray& bytes);
    // Closes every connection now; stopListening also refuses new ones.
    void dropConnections();
    void stopListening();

    QByteArray received() const { return received_; }
    QStringList lines() const { return lines_; } // complete lines, without "\r\n"
    void clear();
    int connectionCount() const { return static_cast<int>(clients_.size()); }
    int acceptedCount() const { return accepted_; }

signals:
    void lineReceived(const QString& line);

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket* client);
    void answer(QTcpSocket* client, const QString& line);
    void transmit(QTcpSocket* client, const QByteArray& bytes);

    QString address_;
    QTcpServer* server_;
    QList<QTcpSocket*> clients_;
    QHash<QTcpSocket*, QByteArray> pending_;
    QHash<QString, Responder> script_;
    QSet<QString> silent_;
    bool allSilent_ = false;
    int splitAt_ = 0;
    bool joinNext_ = false;
    QByteArray held_;
    QByteArray received_;
    QStringList lines_;
    int accepted_ = 0;
};
