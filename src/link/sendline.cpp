#include "link/sendline.h"

#include <QTcpSocket>
#include <sys/socket.h>

void sendLine(QTcpSocket* socket, const QByteArray& line) {
    qint64 sent = 0;
    if (socket->bytesToWrite() == 0 && socket->socketDescriptor() >= 0) {
        const ssize_t n = ::send(static_cast<int>(socket->socketDescriptor()), line.constData(),
                                 static_cast<size_t>(line.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
        sent = n > 0 ? n : 0;
    }
    if (sent < line.size())
        socket->write(line.constData() + sent, line.size() - sent);
}
