#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTimer>

class QTcpSocket;

// Asks every host at once (up to `parallel` at a time) whether it is a controller:
// connect to the port, send "RVER\r\n", and a reply beginning with "VERS" within the
// time-out says yes. Absent hosts on a LAN never answer the connect, so the
// time-outs bound the whole search. finished() always comes from the event loop,
// never from within start().
class Prober : public QObject {
    Q_OBJECT
public:
    struct Settings {
        quint16 port = 23;
        // On a LAN a host that is there connects within milliseconds and a controller
        // answers RVER at once, so a whole /24 is done in about a second: absent hosts
        // are given up at the connect time-out, silent listeners at the reply one.
        int connectTimeoutMs = 1000;
        int replyTimeoutMs = 1000;
        int parallel = 256;
    };
    // "VERS102\r\n" is nine bytes; a host that runs on longer is not a controller.
    static constexpr qsizetype MaxReplyBytes = 64;

    struct Found {
        quint32 address;
        QByteArray version; // the "VERS..." reply without its line end
    };

    explicit Prober(const Settings& settings, QObject* parent = nullptr);

    void start(const QList<quint32>& hosts);
    QList<Found> found() const; // in address order
    int probed() const { return done_; }

signals:
    void controllerFound(quint32 address, const QByteArray& version);
    void finished();

private:
    void launchMore();
    void launch(quint32 address);
    void receive(QTcpSocket* socket, QTimer* timer, quint32 address, QByteArray* reply);
    void finish(QTcpSocket* socket, QTimer* timer, quint32 address, const QByteArray& reply);

    Settings settings_;
    QTimer launcher_;
    QList<quint32> hosts_;
    int next_ = 0;
    int running_ = 0;
    int done_ = 0;
    QList<Found> found_;
};
