// The fake controller the window's tests talk to, on 127.50.0.0/16.

#include "support/fakecontroller.h"

#include <QTcpSocket>
#include <QTest>

class TestFakeController : public QObject {
    Q_OBJECT
private slots:
    // A test may drop the connection from lineReceived while later lines of the same
    // chunk are still waiting: they are not taken as received.
    void dropInsideLineReceived_data() {
        QTest::addColumn<QString>("dropOn");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("first of three") << "RPOW" << QStringList{"RPOW"};
        QTest::newRow("second of three") << "RMDN" << QStringList{"RPOW", "RMDN"};
    }
    void dropInsideLineReceived() {
        QFETCH(QString, dropOn);
        QFETCH(QStringList, lines);
        FakeController fake(QStringLiteral("127.50.1.1"));
        fake.answerLikeController();
        connect(&fake, &FakeController::lineReceived, this, [&](const QString& line) {
            if (line == dropOn)
                fake.dropConnections();
        });
        QTcpSocket client;
        client.connectToHost(QStringLiteral("127.50.1.1"), 23);
        QVERIFY(client.waitForConnected(3000));
        client.write("RPOW\r\nRMDN\r\nRBY\r\n");
        QVERIFY(QTest::qWaitFor([&] { return client.state() == QAbstractSocket::UnconnectedState; },
                                3000));
        QCOMPARE(fake.lines(), lines);
    }
};

QTEST_GUILESS_MAIN(TestFakeController)
#include "test_fakecontroller.moc"
