#include "link/sendline.h"

#include <QTcpSocket>
#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

void sendLine(QTcpSocket* socket, const QByteArray& line) {
    qint64 sent = 0;
    if (socket->bytesToWrite() == 0 && socket->socketDescriptor() >= 0) {
#ifdef Q_OS_WIN
        // Qt keeps its Winsock sockets non-blocking, and Windows raises no signal on a
        // closed peer: a plain send. SOCKET_ERROR (a full buffer included) sends nothing.
        const int n = ::send(static_cast<SOCKET>(socket->socketDescriptor()), line.constData(),
                             static_cast<int>(line.size()), 0);
#else
        const ssize_t n = ::send(static_cast<int>(socket->socketDescriptor()), line.constData(),
                                 static_cast<size_t>(line.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
#endif
        sent = n > 0 ? n : 0;
    }
    if (sent < line.size())
        socket->write(line.constData() + sent, line.size() - sent);
}
