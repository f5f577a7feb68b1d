// The link connects to dotted IPv4 addresses only, and what it writes arrives whole
// and in order. The test runs in a network namespace of its own with only loopback
// up: should an address slip through, neither its lookup nor its connect leaves the
// test.

#include "link/devicelink.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <cstdio>
#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

bool loopbackUp() {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request{};
    std::snprintf(request.ifr_name, IFNAMSIZ, "lo");
    request.ifr_flags = IFF_UP;
    const bool up = fd >= 0 && ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    if (fd >= 0)
        close(fd);
    return up;
}

} // namespace
#endif

class TestLink : public QObject {
    Q_OBJECT
private slots:
    void onlyAddressesAreTried_data() {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("tried");
        QTest::newRow("address") << "127.0.0.1" << true;
        QTest::newRow("empty or garbage IP.txt line") << "0.0.0.0" << false;
        QTest::newRow("octets over 255") << "999.999.999.999" << false;
        QTest::newRow("one octet over 255") << "127.0.0.256" << false;
        QTest::newRow("short form") << "127.1" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("name") << "localhost" << false;
    }
    void onlyAddressesAreTried() {
        QFETCH(QString, host);
        QFETCH(bool, tried);
        DeviceLink link;
        link.connectTo(0, QStringLiteral("127.0.0.1"));
        auto* socket = link.findChild<QTcpSocket*>();
        QVERIFY(socket);
        bool left = false; // the socket left the unconnected state: a lookup or a connect
        connect(socket, &QAbstractSocket::stateChanged, this,
                [&](QAbstractSocket::SocketState state) {
                    left = left || state != QAbstractSocket::UnconnectedState;
                });
        link.connectTo(0, host);
        QCOMPARE(left, tried);
        QVERIFY(!link.isConnected(0));
    }

    // Lines go to the system at once while it takes them; once its buffers are full
    // (a controller that does not read), the rest waits in the socket. Either way
    // every byte arrives, once and in order.
    void linesArriveWholeAndInOrderPastFullBuffers() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress(QStringLiteral("127.0.0.1")), 23));
        const int small = 4096; // the system's buffers on both ends, inherited on accept
#ifdef Q_OS_WIN
        setsockopt(SOCKET(server.socketDescriptor()), SOL_SOCKET, SO_RCVBUF,
                   reinterpret_cast<const char*>(&small), sizeof small);
#else
        setsockopt(int(server.socketDescriptor()), SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
#endif
        DeviceLink link;
        link.connectTo(0, QStringLiteral("127.0.0.1"));
        QVERIFY(
            QTest::qWaitFor([&] { return link.isConnected(0) && server.hasPendingConnections(); }));
        auto* socket = link.findChild<QTcpSocket*>();
        socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, small);
        QTcpSocket* peer = server.nextPendingConnection();
        QByteArray received, expected;
        connect(peer, &QTcpSocket::readyRead, this, [&] { received += peer->readAll(); });

        // 256 KiB with no event loop turning: far more than those buffers hold.
        constexpr int Lines = 1 << 13;
        for (int i = 0; i < Lines; ++i) {
            const QByteArray line =
                "RBRI " + QByteArray::number(i).rightJustified(24, '0') + "\r\n";
            link.write(0, line);
            expected += line;
        }
#ifndef Q_OS_WIN // Winsock may take every line at once, whatever the buffer sizes
        QVERIFY2(socket->bytesToWrite() > 0, "the buffers never filled");
#endif
        QVERIFY(QTest::qWaitFor([&] { return received.size() >= expected.size(); }, 60000));
        QVERIFY(received == expected);
    }
};

int main(int argc, char* argv[]) {
#ifndef Q_OS_WIN // Windows has no network namespaces: loopback is all the test uses there
    if (unshare(CLONE_NEWNET) != 0) {
        std::perror("test_link: a network namespace of its own needs root");
        return 1;
    }
    if (!loopbackUp()) {
        std::perror("test_link: loopback in the namespace");
        return 1;
    }
#endif
    QCoreApplication app(argc, argv);
    TestLink test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_link.moc"
