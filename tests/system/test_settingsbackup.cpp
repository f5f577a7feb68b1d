#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"
#include "support/bench.h"
#include "system/settingsbackup.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

// Four virtual controllers in 127.68.20.0/24 and up, one subnet per test function.
namespace {

struct Backup : Bench {
    explicit Backup(int subnet) : Bench(QStringLiteral("127.68.%1.1").arg(subnet), 4) {
        form.show();
        connect();
    }
    sim::VirtualController* c(int number) { return &device(number - 1); }
};

RestorePreview* openPreview() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* preview = qobject_cast<RestorePreview*>(w); preview && preview->isVisible())
            return preview;
    return nullptr;
}

} // namespace

class TestSettingsBackup : public QObject {
    Q_OBJECT
private slots:
    void backupPreviewRestoreReadsBackEqual();
    void networkIsRestoredOnlyWhenTicked();
    void badFilesAreRefusedWithTheirFault();
};

void TestSettingsBackup::backupPreviewRestoreReadsBackEqual() {
    Backup bench(20);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.json"));
    const QString shown = bench.form.ui.TextInfo->text();
    QVERIFY(bench.form.backup().save(path, true));
    QCOMPARE(bench.form.ui.TextInfo->text(), shown); // no reply handler saw the reads
    QVERIFY2(bench.boxes.texts().last().startsWith(
                 QStringLiteral("Saved the settings of 4 of 4 controllers")),
             qPrintable(bench.boxes.texts().last()));

    QString error;
    const auto file = settingsfile::fromJson(*jsonfile::read(path, settingsfile::Format, &error), &error);
    QVERIFY2(file, qPrintable(error));
    QCOMPARE(file->size(), 4);
    for (int n = 1; n <= 4; ++n) {
        QCOMPARE((*file)[n - 1].address, bench.addresses()[n - 1]);
        QCOMPARE((*file)[n - 1].mac, bench.form.ui.cbo_ipaddr->itemText(n - 1));
        QCOMPARE((*file)[n - 1].values.value("brightness.c"), bench.c(n)->state().value("brightness.c"));
        QCOMPARE((*file)[n - 1].values.value("model"), bench.c(n)->state().value("model"));
    }

    // The second controller is changed behind the window's back.
    const sim::ControllerState before = bench.c(2)->state();
    sim::ControllerState changed = before;
    changed.set("brightness.c", 80);
    changed.set("network.mode", 1 - before.value("network.mode"));
    bench.c(2)->setState(changed);
    for (sim::VirtualController* c : bench.sim.controllers())
        c->clearReceived();

    QStringList previewed;
    bool lockedDuring = false;
    driver::when(&bench.form, [] { return openPreview() != nullptr; }, [&] {
        RestorePreview* preview = openPreview();
        previewed = preview->lines();
        lockedDuring = !bench.form.ui.sys_setting->isEnabled();
        QTest::mouseClick(preview->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    bench.boxes.clear();
    QVERIFY(bench.form.backup().restore(path));
    QVERIFY(lockedDuring);
    // Only the real difference; the network setting is left alone unless ticked.
    QCOMPARE(previewed, (QStringList{"127.68.20.1: nothing to change",
                                     "127.68.20.2: brightness.c: 80 -> 50",
                                     "127.68.20.3: nothing to change",
                                     "127.68.20.4: nothing to change"}));
    QCOMPARE(bench.c(2)->state().value("brightness.c"), before.value("brightness.c"));
    QCOMPARE(bench.c(2)->state().value("network.mode"), changed.value("network.mode"));
    const QStringList texts = bench.boxes.texts();
    QCOMPARE(texts.first(), QStringLiteral("Refresh completed !"));
    QVERIFY2(texts.last().contains(QStringLiteral("127.68.20.2: wrote 1 settings, read back equal")),
             qPrintable(texts.last()));
    QVERIFY(texts.last().startsWith(QStringLiteral("Restored the settings of 4 of 4 controllers.")));
    for (int n : {1, 3, 4})
        for (const QByteArray& line : bench.c(n)->received())
            QVERIFY2(line.startsWith('R'), line.constData()); // read, never written
}

void TestSettingsBackup::networkIsRestoredOnlyWhenTicked() {
    Backup bench(22);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.json"));
    QVERIFY(bench.form.backup().save(path, true));
    sim::ControllerState changed = bench.c(2)->state();
    const protocol::Value mode = changed.value("network.mode");
    changed.set("network.mode", 1 - mode);
    bench.c(2)->setState(changed);

    QStringList before, after;
    driver::when(&bench.form, [] { return openPreview() != nullptr; }, [&] {
        RestorePreview* preview = openPreview();
        before = preview->lines();
        auto* network = preview->findChild<QCheckBox*>(QStringLiteral("restore_network"));
        QTest::mouseClick(network, Qt::LeftButton, {}, QPoint(8, network->height() / 2));
        after = preview->lines();
        QTest::mouseClick(preview->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    bench.boxes.clear();
    QVERIFY(bench.form.backup().restore(path));
    QCOMPARE(before[1], QStringLiteral("127.68.22.2: nothing to change"));
    QCOMPARE(after[1], QStringLiteral("127.68.22.2: network.mode: %1 -> %2").arg(1 - mode).arg(mode));
    QCOMPARE(bench.c(2)->state().value("network.mode"), mode);
    QVERIFY(linesOf(bench.c(2)).endsWith(QStringLiteral("SREL")));
    // The controller restarts its network: the window goes offline, as after Set IP.
    QVERIFY(!bench.form.session().isConnected());
    QVERIFY2(bench.boxes.texts().last().contains(
                 QStringLiteral("127.68.22.2: wrote 1 settings, read back equal; its network "
                                "restarts with the new settings")),
             qPrintable(bench.boxes.texts().last()));
}

void TestSettingsBackup::badFilesAreRefusedWithTheirFault() {
    Backup bench(21);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.json"));
    QVERIFY(bench.form.backup().save(path, false)); // the selected controller only
    QString error;
    auto file = settingsfile::fromJson(*jsonfile::read(path, settingsfile::Format, &error), &error);
    QCOMPARE(file->size(), 1);
    (*file)[0].address = QStringLiteral("127.68.21.9");
    QVERIFY(jsonfile::write(path, settingsfile::toJson(*file), &error));
    for (sim::VirtualController* c : bench.sim.controllers())
        c->clearReceived();

    bench.boxes.clear();
    QVERIFY(!bench.form.backup().restore(path));
    QCOMPARE(bench.boxes.texts(),
             QStringList{"The file names controllers that are not listed; they are left alone:\n"
                         "127.68.21.9 (" + bench.form.ui.cbo_ipaddr->itemText(0) + ")"});
    for (sim::VirtualController* c : bench.sim.controllers())
        QVERIFY(c->received().isEmpty());

    const std::pair<QByteArray, QString> broken[] = {
        {"{\"format\": \"panomat-settings/1\",\n  \"controllers\": [,]}", "line 2"},
        {"{\"format\": \"panomat-settings/2\", \"controllers\": []}", "\"panomat-settings/2\""},
    };
    for (const auto& [text, fault] : broken) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        file.close();
        bench.boxes.clear();
        QVERIFY(!bench.form.backup().restore(path));
        QCOMPARE(bench.boxes.texts().size(), 1);
        QVERIFY2(bench.boxes.texts().first().startsWith(QStringLiteral("The settings file cannot be read:")) &&
                     bench.boxes.texts().first().contains(fault),
                 qPrintable(bench.boxes.texts().first()));
    }
    for (sim::VirtualController* c : bench.sim.controllers())
        QVERIFY(c->received().isEmpty());
}

int main(int argc, char* argv[]) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    TestSettingsBackup test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_settingsbackup.moc"
