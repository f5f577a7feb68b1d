// The link connects to dotted IPv4 addresses only. The test runs in a network
// namespace of its own with no interface up: should an address slip through,
// neither its lookup nor its connect leaves the test.

#include "link/devicelink.h"

#include <QTcpSocket>
#include <QTest>
#include <cstdio>
#include <sched.h>

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
};

int main(int argc, char* argv[]) {
    if (unshare(CLONE_NEWNET) != 0) {
        std::perror("test_link: a network namespace of its own needs root");
        return 1;
    }
    QCoreApplication app(argc, argv);
    TestLink test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_link.moc"
