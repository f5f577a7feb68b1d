// The search program: its host configuration, and the real ZEDA.exe run against
// virtual controllers on 127.21.0.0/16, port 23, or in a network namespace of its
// own where no host can be reached.

#include "simulator.h"
#include "zedahosts.h"
#include "zedaresults.h"

#include "support/datalimit.h"
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// ZEDA.exe copied into a folder of its own, as the tool keeps it.
struct SearchFolder {
    QTemporaryDir dir;
    QString exe = dir.filePath("ZEDA.exe");
    bool ready = QFile::copy(ZEDA_EXE, exe);
};

struct Run {
    int exitCode = -1;
    QByteArray said; // stderr
};

// Runs the folder's ZEDA.exe with hosts from the environment (none: its ZEDA.conf),
// turning this process's event loop meanwhile so servers here can answer.
Run runSearch(const SearchFolder& folder, const QByteArray& hosts,
              const QStringList& arguments = {}, const std::function<void()>& inChild = {}) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("ZEDA_HOSTS");
    if (!hosts.isEmpty())
        env.insert("ZEDA_HOSTS", QString::fromLatin1(hosts));
    p.setProcessEnvironment(env);
    p.setChildProcessModifier([inChild] {
        // Far more than the search needs: what a file offers must not decide its memory.
        if (!limitData(64 << 20))
            _exit(125);
        if (inChild)
            inChild();
    });
    p.start(folder.exe, arguments);
    if (!QTest::qWaitFor([&] { return p.state() == QProcess::NotRunning; }, 20000)) {
        p.kill();
        p.waitForFinished();
        return {-1, "did not end"};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardError()};
}

} // namespace

class TestSearch : public QObject {
    Q_OBJECT

private slots:
    void hostConfiguration_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::vector<uint32_t>>("hosts");
        QTest::addColumn<int>("errors");
        // Text, then `count` consecutive hosts from `first`, and how many entries are refused.
        auto row = [](const char* text, const char* first, int count, int errors = 0) {
            std::vector<uint32_t> hosts;
            for (int i = 0; i < count; ++i)
                hosts.push_back(QHostAddress(first).toIPv4Address() + uint32_t(i));
            QTest::newRow(QByteArray(text).simplified()) << QString(text) << hosts << errors;
        };
        row("127.21.0.7-9", "127.21.0.7", 3);
        row("127.21.0.255-127.21.1.0", "127.21.0.255", 2);
        row("127.21.0.0/30", "127.21.0.1", 2); // no network, no broadcast
        row("127.21.0.5/31 127.21.0.6/32", "127.21.0.4", 3);
        row("127.21.0.0-127.21.255.255", "127.21.0.0", 65536); // a /16 at most
        row("127.0.0.0/15", "127.0.0.0", 0, 1);
        row("# demo\n\n 127.21.0.9 # trailing\r\n127.21.0.8,127.21.0.9;127.021.000.010",
            "127.21.0.8", 3); // sorted, once each; "021" is decimal
        row("127.21.0.300\n127.21.0.9-3\n127.21.0.0/33\nhost\n127.21.0.1-x\n127.21.0.4",
            "127.21.0.4", 1, 5);
    }
    void hostConfiguration() {
        QFETCH(QString, text);
        QFETCH(std::vector<uint32_t>, hosts);
        QFETCH(int, errors);
        const HostList list = parseHostList(text.toStdString());
        QVERIFY(list.hosts == hosts);
        QCOMPARE(int(list.errors.size()), errors);
    }

    // Only complete entries with a real address count.
    void macAddressesFromTheNeighbourTable() {
        QCOMPARE(parseNeighbourTable("IP address HW type Flags HW address Mask Device\n"
                                     "127.21.9.1 0x1 0x2 52:54:00:ab:cd:0e * eth0\n"
                                     "127.21.9.2 0x1 0x0 52:54:00:ab:cd:0f * eth0\n"
                                     "127.21.9.3 0x1 0x6 00:00:00:00:00:00 * eth0\n"),
                 (std::unordered_map<uint32_t, std::string>{
                     {0x7F150901u, "52-54-00-AB-CD-0E"}})); // 127.21.9.1
    }

    // ZEDA.conf (none if empty) and ZEDA_HOSTS (unset if empty) -> IP.txt and MAC.txt.
    void search_data() {
        for (const char* column : {"conf", "env", "ipFile", "macFile"})
            QTest::addColumn<QByteArray>(column);
        for (auto [n, c, e, i, m] :
             {std::array{"environment wins; found among other hosts", "127.21.42.4\n",
                         "127.21.42.1-127.21.42.7", "127.021.042.003127.021.042.004\r\n",
                         "02-00-7F-15-2A-03\r\n02-00-7F-15-2A-04\r\n"},
              {"blank environment: conf", "# lab\n127.21.42.3\nnot-a-host\n", " ",
               "127.021.042.003\r\n", "02-00-7F-15-2A-03\r\n"},
              {"nothing configured: empty files", "", "", "", ""}})
            QTest::newRow(n) << QByteArray(c) << QByteArray(e) << QByteArray(i) << QByteArray(m);
    }
    void search() {
        QFETCH(QByteArray, conf);
        QFETCH(QByteArray, env);
        QFETCH(QByteArray, ipFile);
        QFETCH(QByteArray, macFile);
        sim::Simulator s; // .2 never answers "RVER", .3 and .4 are controllers
        QVERIFY(s.start(QHostAddress("127.21.42.2"), 3));
        s.setFaults(1, sim::Faults{.silent = {"RVER"}});
        QTcpServer other; // .5 another service; .1 and .7 absent
        QVERIFY(other.listen(QHostAddress("127.21.42.5"), 23));
        connect(&other, &QTcpServer::newConnection, this,
                [&] { other.nextPendingConnection()->write("login: "); });
        QTcpServer talker; // .6 begins like a controller and never ends its line
        QVERIFY(talker.listen(QHostAddress("127.21.42.6"), 23));
        connect(&talker, &QTcpServer::newConnection, this, [&] {
            QTcpSocket* s = talker.nextPendingConnection();
            s->write("VERS");
            connect(s, &QTcpSocket::bytesWritten, s, [s] {
                if (s->state() == QAbstractSocket::ConnectedState && s->bytesToWrite() == 0)
                    s->write(QByteArray(64 * 1024, '1'));
            });
        });

        // An old, longer MAC.txt beside the program must be replaced whole.
        SearchFolder folder;
        QVERIFY(folder.ready && QFile::copy(ZEDA_EXE, folder.dir.filePath("MAC.txt")));
        QFile confFile(folder.dir.filePath("ZEDA.conf"));
        QVERIFY(conf.isEmpty() || (confFile.open(QIODevice::WriteOnly) &&
                                   confFile.write(conf) == conf.size() && confFile.flush()));
        env.isEmpty() ? qunsetenv("ZEDA_HOSTS") : qputenv("ZEDA_HOSTS", env);
        QProcess p;
        p.setWorkingDirectory(QDir::tempPath()); // the program's own folder is what counts
        p.start(folder.exe, {});
        // The event loop turns meanwhile, so the controllers in this process answer.
        QVERIFY(QTest::qWaitFor([&] { return p.state() == QProcess::NotRunning; }, 30000) &&
                p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0);
        for (auto [name, bytes] : {std::pair{"IP.txt", ipFile}, {"MAC.txt", macFile}}) {
            QFile f(folder.dir.filePath(name));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), bytes);
        }
    }

    // The search ends and reports whatever the network does. Without a route every
    // connect fails inside connectToHost(); the namespace has not even loopback up.
    // The host list must not take memory in proportion to what its text names.
    void searchEndsInEveryNetworkState_data() {
        QTest::addColumn<QByteArray>("hosts");
        QTest::addColumn<bool>("isolated");
        QTest::addColumn<int>("count");
        QTest::newRow("no route to the hosts") << QByteArray("192.0.2.1-2") << true << 2;
        QTest::newRow("no route to 16382 hosts") << QByteArray("198.18.0.0/18") << true << 16382;
        QTest::newRow("one network 4000 times")
            << QByteArray("127.21.64.0/18 ").repeated(4000) << false << 16382;
    }
    void searchEndsInEveryNetworkState() {
        QFETCH(QByteArray, hosts);
        QFETCH(bool, isolated);
        QFETCH(int, count);
        SearchFolder folder;
        QVERIFY(folder.ready);
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("ZEDA_HOSTS", QString::fromLatin1(hosts));
        p.setProcessEnvironment(env);
        p.setChildProcessModifier([isolated] {
            // The search needs a fraction of this.
            if (!limitData(64 << 20) || (isolated && unshare(CLONE_NEWNET) != 0))
                _exit(125); // a namespace needs root, as port 23 does
        });
        p.start(folder.exe, {});
        QVERIFY2(p.waitForFinished(20000), "the search did not end");
        const QByteArray said = p.readAllStandardError();
        QVERIFY2(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0, said.constData());
        QVERIFY2(said.contains(
                     QStringLiteral("0 controllers found among %1 hosts").arg(count).toLatin1()),
                 said.constData());
    }

    // A host list that is no list ends the search with a clear message and status 2,
    // in bounded memory and without waiting for a writer; nothing is written.
    void hostListThatIsNoList_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("FIFO") << "fifo" << QByteArray("it is a FIFO, not a regular file");
        QTest::newRow("/dev/zero") << "zero" << QByteArray("it is a character device");
        QTest::newRow("folder") << "folder" << QByteArray("it is a folder");
        QTest::newRow("200 MB") << "large" << QByteArray("it is larger than 1 MiB");
    }
    void hostListThatIsNoList() {
        QFETCH(QString, kind);
        QFETCH(QByteArray, message);
        SearchFolder folder;
        QVERIFY(folder.ready);
        const QByteArray conf = QFile::encodeName(folder.dir.filePath("ZEDA.conf"));
        if (kind == "fifo") {
            QCOMPARE(mkfifo(conf.constData(), 0600), 0);
        } else if (kind == "zero") {
            QVERIFY(QFile::link("/dev/zero", conf));
        } else if (kind == "folder") {
            QVERIFY(QDir(folder.dir.path()).mkdir("ZEDA.conf"));
        } else {
            QFile f(conf); // garbage, then a sparse tail: nothing reaches the disk
            QVERIFY(f.open(QIODevice::WriteOnly) && f.write("no-host\n") > 0 &&
                    f.resize(200 << 20));
        }
        const Run run = runSearch(folder, {});
        QVERIFY2(run.exitCode == 2, run.said.constData());
        QVERIFY2(run.said.contains("cannot read the host list " + conf + ": " + message),
                 run.said.constData());
        QVERIFY(!QFile::exists(folder.dir.filePath("MAC.txt")));
    }

    // A megabyte of entries that are no hosts gives a screenful of messages, not one
    // for each.
    void garbageHostListIsReportedBriefly() {
        SearchFolder folder;
        QFile conf(folder.dir.filePath("ZEDA.conf"));
        QVERIFY(folder.ready && conf.open(QIODevice::WriteOnly) &&
                conf.write(QByteArray("\x1b[2Jx ").repeated(100000)) > 0 && conf.flush());
        const Run run = runSearch(folder, {});
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY2(run.said.size() < 4096, run.said.left(4096).constData());
        QVERIFY(run.said.contains("ignored 99980 more entries that are not hosts"));
        QVERIFY(!run.said.contains('\x1b'));
    }

    // Another local user plants links where the result files are written; the files
    // they point to stay as they were, and the results are written in their place.
    void plantedLinksAreReplaced_data() {
        QTest::addColumn<QStringList>("names"); // "%1" is the search program's pid
        QTest::newRow("final names") << QStringList{"MAC.txt", "IP.txt"};
        QTest::newRow("temporary names as before")
            << QStringList{"MAC.txt.%1.new", "IP.txt.%1.new"};
    }
    void plantedLinksAreReplaced() {
        QFETCH(QStringList, names);
        SearchFolder folder;
        QTemporaryDir elsewhere;
        const QString secret = elsewhere.filePath("shadow");
        QFile target(secret);
        QVERIFY(folder.ready && target.open(QIODevice::WriteOnly) && target.write("root:x") == 6);
        target.close();
        QVERIFY(target.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        const QByteArray link = QFile::encodeName(secret);
        // Made here: the child between fork and exec must not allocate.
        std::vector<QByteArray> paths;
        for (QString name : names)
            paths.push_back(QFile::encodeName(folder.dir.filePath(name.replace("%1", "%d"))));
        const Run run = runSearch(folder, "127.21.43.1", {}, [paths, link] {
            for (const QByteArray& pattern : paths) {
                char path[4096];
                std::snprintf(path, sizeof path, pattern.constData(), int(getpid()));
                if (symlink(link.constData(), path) != 0)
                    _exit(126);
            }
        });
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY(target.open(QIODevice::ReadOnly));
        QCOMPARE(target.readAll(), QByteArray("root:x"));
        QCOMPARE(target.permissions() & (QFile::ReadOther | QFile::ReadGroup),
                 QFile::Permissions());
        for (const char* name : {"MAC.txt", "IP.txt"}) {
            const QFileInfo result(folder.dir.filePath(name));
            QVERIFY(result.isFile() && !result.isSymLink() && result.size() == 0);
        }
        // No temporary file is left behind; the planted links may stay.
        const QStringList kept{"ZEDA.exe", "MAC.txt", "IP.txt"};
        for (const QString& name :
             QDir(folder.dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System))
            QVERIFY2(kept.contains(name) || name.endsWith(".new"), qPrintable(name));
    }

    // Run as root, the search writes into no folder another user can change.
    void sharedFolderRefusedAsRoot_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("owner");
        QTest::addColumn<bool>("refused");
        QTest::newRow("world-writable") << 0777 << 0 << true;
        QTest::newRow("group-writable, other group") << 0775 << 0 << true;
        QTest::newRow("another user's") << 0755 << 4242 << true;
        QTest::newRow("world-writable with sticky bit") << 01777 << 0 << false;
        QTest::newRow("root's own") << 0755 << 0 << false;
    }
    void sharedFolderRefusedAsRoot() {
        QFETCH(int, mode);
        QFETCH(int, owner);
        QFETCH(bool, refused);
        if (geteuid() != 0)
            QSKIP("needs root, as port 23 does");
        SearchFolder folder;
        const QByteArray out = QFile::encodeName(folder.dir.filePath("out"));
        QVERIFY(folder.ready && mkdir(out.constData(), 0700) == 0);
        QCOMPARE(chown(out.constData(), uid_t(owner), mode == 0775 ? 4242 : 0), 0);
        QCOMPARE(chmod(out.constData(), mode_t(mode)), 0);
        const Run run = runSearch(folder, "127.21.43.1", {"--output-dir", QFile::decodeName(out)});
        QVERIFY2((run.exitCode != 0) == refused, run.said.constData());
        QCOMPARE(run.said.contains("refusing to write into " + out + " as root"), refused);
        QCOMPARE(QFile::exists(out + "/MAC.txt"), !refused);
    }

    // Whatever a host answers reaches the operator's terminal escaped.
    void repliesAreEscaped() {
        QTcpServer hostile;
        QVERIFY(hostile.listen(QHostAddress("127.21.44.1"), 23));
        connect(&hostile, &QTcpServer::newConnection, this, [&] {
            hostile.nextPendingConnection()->write("VERS1\x1b]2;owned\x07\x1b[2J\\\r\n");
        });
        SearchFolder folder;
        QVERIFY(folder.ready);
        const Run run = runSearch(folder, "127.21.44.1");
        QVERIFY2(run.exitCode == 0, run.said.constData());
        QVERIFY2(
            run.said.contains("controller at 127.21.44.1 (VERS1\\x1b]2;owned\\x07\\x1b[2J\\\\)"),
            run.said.constData());
        QVERIFY(!run.said.contains('\x1b') && !run.said.contains('\x07'));
    }
};

QTEST_GUILESS_MAIN(TestSearch)
#include "test_search.moc"
