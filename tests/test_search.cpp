// The search program: its host configuration, and the real ZEDA.exe run against
// virtual controllers on 127.21.0.0/16, port 23.

#include "simulator.h"
#include "zedahosts.h"
#include "zedaresults.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace {

quint32 ip(const char* text) {
    return QHostAddress(QString::fromLatin1(text)).toIPv4Address();
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// ZEDA.exe copied into a folder of its own, as the tool keeps it beside itself.
struct SearchFolder {
    QTemporaryDir dir;
    QString exe;

    SearchFolder() {
        exe = dir.filePath(QStringLiteral("ZEDA.exe"));
        QFile::copy(QStringLiteral(ZEDA_EXE), exe);
    }
    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }
    void write(const char* name, const QByteArray& bytes) const {
        QFile f(path(name));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    // Runs the program with the event loop turning, so in-process controllers answer.
    int run(const QByteArray& hostsEnv, bool setEnv = true) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("ZEDA_HOSTS"));
        if (setEnv)
            env.insert(QStringLiteral("ZEDA_HOSTS"), QString::fromLatin1(hostsEnv));
        p.setProcessEnvironment(env);
        p.setWorkingDirectory(QDir::tempPath()); // the program's folder is what counts
        QSignalSpy done(&p, &QProcess::finished);
        p.start(exe, {});
        if (!done.wait(30000))
            return -1;
        qInfo().noquote() << p.readAllStandardError().trimmed();
        return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    }
};

} // namespace

class TestSearch : public QObject {
    Q_OBJECT

private slots:
    void hostConfiguration_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<quint32>>("hosts");
        QTest::addColumn<int>("errors");
        const quint32 base = ip("127.21.0.0");
        QTest::newRow("address") << "127.21.0.7" << QList<quint32>{base + 7} << 0;
        QTest::newRow("range") << "127.21.0.7-127.21.0.9"
                               << QList<quint32>{base + 7, base + 8, base + 9} << 0;
        QTest::newRow("range by last octet")
            << "127.21.0.7-9" << QList<quint32>{base + 7, base + 8, base + 9} << 0;
        QTest::newRow("range over an octet")
            << "127.21.0.255-127.21.1.0" << QList<quint32>{base + 255, base + 256} << 0;
        QTest::newRow("/30 without network and broadcast")
            << "127.21.0.0/30" << QList<quint32>{base + 1, base + 2} << 0;
        QTest::newRow("/31 keeps both")
            << "127.21.0.5/31" << QList<quint32>{base + 4, base + 5} << 0;
        QTest::newRow("/32") << "127.21.0.5/32" << QList<quint32>{base + 5} << 0;
        QTest::newRow("comments, blanks, order, duplicates")
            << "# demo\n\n  127.21.0.9  # trailing\r\n127.21.0.8,127.21.0.9;127.21.0.2"
            << QList<quint32>{base + 2, base + 8, base + 9} << 0;
        QTest::newRow("zero-padded octets are decimal")
            << "127.021.000.010" << QList<quint32>{base + 10} << 0;
        QTest::newRow("bad entries skipped, good kept")
            << "127.21.0.300\n127.21.0.9-3\n127.21.0.0/33\nhost\n127.21.0.1-x\n127.21.0.4"
            << QList<quint32>{base + 4} << 5;
        QTest::newRow("larger than a /16 refused") << "127.0.0.0/15" << QList<quint32>{} << 1;
    }
    void hostConfiguration() {
        QFETCH(QString, text);
        QFETCH(QList<quint32>, hosts);
        QFETCH(int, errors);
        const HostList list = parseHostList(text);
        QCOMPARE(list.hosts, hosts);
        QCOMPARE(list.errors.size(), errors);
    }

    void slash24Size() {
        const HostList list = parseHostList(QStringLiteral("127.21.5.0/24"));
        QCOMPARE(list.hosts.size(), 254);
        QCOMPARE(list.hosts.first(), ip("127.21.5.1"));
        QCOMPARE(list.hosts.last(), ip("127.21.5.254"));
    }

    void macAddresses() {
        const QByteArray table =
            "IP address       HW type     Flags       HW address            Mask     Device\n"
            "127.21.9.1       0x1         0x2         52:54:00:ab:cd:0e     *        eth0\n"
            "127.21.9.2       0x1         0x0         00:00:00:00:00:00     *        eth0\n"
            "127.21.9.3       0x1         0x6         00:00:00:00:00:00     *        eth0\n";
        const QHash<quint32, QString> macs = parseNeighbourTable(table);
        QCOMPARE(macs.size(), 1);
        QCOMPARE(macs.value(ip("127.21.9.1")), QStringLiteral("52-54-00-AB-CD-0E"));
        QCOMPARE(derivedMac(ip("127.21.3.10")), QStringLiteral("02-00-7F-15-03-0A"));
    }

    void findsControllersAmongOtherHosts() {
        // .3 and .10 are controllers, .4 and .7 absent, .5 a different service,
        // .6 a controller that does not answer "RVER".
        sim::VirtualController a(1), b(2), mute(3);
        QVERIFY(a.listen(QHostAddress(QStringLiteral("127.21.1.10"))));
        QVERIFY(b.listen(QHostAddress(QStringLiteral("127.21.1.3"))));
        QVERIFY(mute.listen(QHostAddress(QStringLiteral("127.21.1.6"))));
        sim::Faults f;
        f.silent = {"RVER"};
        mute.setFaults(f);
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress(QStringLiteral("127.21.1.5")), 23));
        connect(&other, &QTcpServer::newConnection, &other, [&other] {
            while (QTcpSocket* s = other.nextPendingConnection())
                s->write("login: ");
        });

        SearchFolder folder;
        folder.write("MAC.txt", "an older and longer result\r\nthat must go\r\n");
        QCOMPARE(folder.run("127.21.1.3-127.21.1.7, 127.21.1.10"), 0);
        QCOMPARE(readFile(folder.path("MAC.txt")),
                 QByteArray("02-00-7F-15-01-03\r\n02-00-7F-15-01-0A\r\n"));
        QCOMPARE(readFile(folder.path("IP.txt")), QByteArray("127.021.001.003127.021.001.010\r\n"));
        QCOMPARE(a.received(), QList<QByteArray>{"RVER"});
        QCOMPARE(mute.received(), QList<QByteArray>{"RVER"});
    }

    void configurationSources_data() {
        QTest::addColumn<QByteArray>("conf"); // empty: no ZEDA.conf
        QTest::addColumn<bool>("setEnv");
        QTest::addColumn<QByteArray>("env");
        QTest::addColumn<QByteArray>("ipFile");
        QTest::newRow("conf file") << QByteArray("# lab\n127.21.2.2-3\nnot-a-host\n") << false
                                   << QByteArray() << QByteArray("127.021.002.002\r\n");
        QTest::newRow("environment wins")
            << QByteArray("127.21.2.2\n") << true << QByteArray("127.21.2.4 127.21.2.3")
            << QByteArray("127.021.002.004\r\n");
        QTest::newRow("empty environment falls back to conf")
            << QByteArray("127.21.2.2\n") << true << QByteArray(" ")
            << QByteArray("127.021.002.002\r\n");
        QTest::newRow("nothing configured: empty files")
            << QByteArray() << false << QByteArray() << QByteArray();
        QTest::newRow("nothing found: empty files")
            << QByteArray("127.21.2.3\n") << false << QByteArray() << QByteArray();
    }
    void configurationSources() {
        QFETCH(QByteArray, conf);
        QFETCH(bool, setEnv);
        QFETCH(QByteArray, env);
        QFETCH(QByteArray, ipFile);
        sim::Simulator controllers;
        QVERIFY(controllers.start(QHostAddress(QStringLiteral("127.21.2.2")), 1));
        sim::VirtualController other(2);
        QVERIFY(other.listen(QHostAddress(QStringLiteral("127.21.2.4"))));

        SearchFolder folder;
        if (!conf.isEmpty())
            folder.write("ZEDA.conf", conf);
        folder.write("IP.txt", "127.021.009.009\r\n");
        QCOMPARE(folder.run(env, setEnv), 0);
        QCOMPARE(readFile(folder.path("IP.txt")), ipFile);
        QCOMPARE(readFile(folder.path("MAC.txt")).size(), ipFile.isEmpty() ? 0 : 19);
    }
};

QTEST_GUILESS_MAIN(TestSearch)
#include "test_search.moc"
