#include "simulator.h"
#include "support/formdriver.h"
#include "support/messageboxanswerer.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

using driver::find;

namespace {

QStringList receivedLines(const sim::VirtualController* controller) {
    QStringList lines;
    for (const QByteArray& line : controller->received())
        lines << QString::fromLatin1(line);
    return lines;
}

QString firmwareTitle(const sim::VirtualController* controller) {
    const int firmware = int(controller->state().value("firmware"));
    return QStringLiteral("Panomat Set v1.10    FW: v%1.%2")
        .arg(firmware / 100)
        .arg(firmware % 100, 2, 10, QLatin1Char('0'));
}

} // namespace

// The tool, the real search program beside it and virtual controllers, all in
// 127.22.0.0/16.
class TestEndToEnd : public QObject {
    Q_OBJECT
private slots:
    void searchListsConnectsAndReadsBack();
};

void TestEndToEnd::searchListsConnectsAndReadsBack() {
    sim::Simulator wall;
    QVERIFY2(wall.start(QHostAddress(QStringLiteral("127.22.0.1")), 3),
             qPrintable(wall.errorString()));
    qputenv("ZEDA_HOSTS", "127.22.0.1-127.22.0.6"); // three controllers, three absent hosts
    MessageBoxAnswerer boxes;
    Form1 form;
    driver::click(find<QPushButton>(form, QStringLiteral("btn_sys_search")), 60);

    QCOMPARE(form.session().addresses(), (QStringList{"127.22.0.1", "127.22.0.2", "127.22.0.3"}));
    QCOMPARE(form.ui.cbo_ipaddr->count(), 3);
    const QRegularExpression mac(QStringLiteral("^([0-9A-F]{2}-){5}[0-9A-F]{2}$"));
    for (int i = 0; i < 3; ++i)
        QVERIFY2(mac.match(form.ui.cbo_ipaddr->itemText(i)).hasMatch(),
                 qPrintable(form.ui.cbo_ipaddr->itemText(i)));
    QCOMPARE(boxes.texts(), (QStringList{"Search MAC completed !", "Refresh completed !"}));

    // The search probed with "RVER"; then the tool's first line on the wire.
    const QStringList first = receivedLines(wall.controller(1));
    QCOMPARE(first.mid(0, 3), (QStringList{"RVER", "SOSDI", "RPOW"}));
    QCOMPARE(form.windowTitle(), firmwareTitle(wall.controller(1)));

    boxes.clear();
    driver::click(find<QPushButton>(form, QStringLiteral("btn_con")));
    QVERIFY(form.session().isConnected());
    QCOMPARE(boxes.texts(), QStringList{"Refresh completed !"});
    for (sim::VirtualController* controller : wall.controllers())
        QTRY_VERIFY(controller->connectionCount() >= 1);

    driver::pick(form.ui.cbo_ipaddr, 2);
    QCOMPARE(form.windowTitle(), firmwareTitle(wall.controller(3)));
    QCOMPARE(form.ui.cbo_model->currentIndex(), wall.controller(3)->state().value("model"));
    QCOMPARE(form.ui.txt_ip->text(), QStringLiteral("127.022.000.003"));
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestEndToEnd test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_endtoend.moc"
