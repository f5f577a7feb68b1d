#pragma once

#include <QObject>
#include <QString>
#include <vector>

class QHostAddress;
class QTcpSocket;

// Four decimal octets of 0-255, written as the device list writes them, and not
// 0.0.0.0, which Linux connects to this machine. Any other text would be looked up
// by name, and QHostAddress alone also takes "127.1" and octal "010.0.0.1".
bool isControllerAddress(const QString& host, QHostAddress* address);

// One TCP client socket per listed controller; socket i belongs to list entry i.
// The array grows with the list, so every listed controller can be connected.
// An index outside the array is a socket that is not connected.
class DeviceLink : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 ControllerPort = 23;
    static constexpr qint64 ReadBufferBytes = 64 * 1024;

    explicit DeviceLink(QObject* parent = nullptr);
    ~DeviceLink() override;

    // Close socket i and start connecting it to host, port 23. A host that is not a
    // usable dotted IPv4 address is never looked up nor connected to: the socket
    // stays unconnected, as for a controller that cannot be reached.
    void connectTo(int index, const QString& host);
    void close(int index);
    bool isConnected(int index) const;
    // Writes nothing to a socket that is not connected; the caller goes on regardless.
    void write(int index, const QByteArray& line);
    // All data waiting on socket i, one byte per character.
    QString readAll(int index);

    // Lends the connected socket of entry index to a procedure of its own (the wall
    // planner's apply, a settings backup), so that no second connection is opened: until
    // it is given back, what arrives on it raises no dataArrived and no reply handler
    // sees it. Null when the entry is not connected or already lent.
    QTcpSocket* lend(int index);
    void giveBack(int index);

    // Traffic of entry index's controller on a connection the link does not own, for
    // the traffic monitor.
    void tap(int index, bool sent, const QByteArray& bytes);

    // How entry i's connection stands, for the operator: never connected or closed by
    // the tool, on its way, up, or ended by the controller or the network.
    enum class State { NotConnected, Connecting, Connected, Lost };
    State state(int index) const;

signals:
    void dataArrived(int index);
    // For the traffic monitor: every line written, and every chunk as it arrives on
    // any socket, before anyone reads it (nothing is taken from the socket).
    void written(int index, const QByteArray& bytes);
    void received(int index, const QByteArray& bytes);
    void stateChanged(int index);

private:
    struct Entry {
        QTcpSocket* socket = nullptr;
        bool lent = false;
        qint64 shown = 0;     // bytes waiting on the socket that were already reported
        bool closing = false; // the tool itself is closing or reconnecting it
        State state = State::NotConnected;
    };

    QTcpSocket* socket(int index) const;
    void grow(int index);
    void onReadyRead(int index);
    void onSocketState(int index);

    std::vector<Entry> entries_;
};
