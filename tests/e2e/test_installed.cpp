#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTest>

// Not run by CTest: scripts/check-install puts a copy beside an installed panomat-set (or in a
// copied folder), where it is the same window in the same place, and runs it as a normal user and
// as root. The script starts two virtual controllers on 127.23.0.1 and .2, writes a host list that
// names them, and says in PANOMAT_RESULTS where the search's result files must appear.
class TestInstalled : public QObject {
    Q_OBJECT
private slots:
    void searchFindsTheControllers() {
        const QString expected = qEnvironmentVariable("PANOMAT_RESULTS");
        QVERIFY2(!expected.isEmpty(), "PANOMAT_RESULTS is not set");
        const QDir results(expected);
        QVERIFY(!results.exists(QStringLiteral("IP.txt")));

        MessageBoxAnswerer boxes;
        Form1 form;
        driver::click(driver::find<QPushButton>(form, QStringLiteral("btn_sys_search")), 60);
        QCOMPARE(boxes.texts().value(0), QStringLiteral("Search MAC completed !"));
        QCOMPARE(form.services().addresses(), (QStringList{"127.23.0.1", "127.23.0.2"}));

        QFile ip(results.filePath(QStringLiteral("IP.txt")));
        QVERIFY2(ip.open(QIODevice::ReadOnly), qPrintable(ip.fileName()));
        QCOMPARE(ip.readAll(), QByteArray("127.023.000.001127.023.000.002\r\n"));
        QVERIFY(results.exists(QStringLiteral("MAC.txt")));
    }
};

QTEST_MAIN(TestInstalled)

#include "test_installed.moc"
