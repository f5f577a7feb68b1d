#include "link/trafficlog.h"
#include "monitor/trafficmonitor.h"
#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"
#include "support/bench.h"
#include "support/files.h"
#include "system/settingsbackup.h"

#include <QApplication>
#include <QDialogButtonBox>

// Four virtual controllers in 127.68.20.0/24 and up, one subnet per test function.
namespace {

RestorePreview* openPreview() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* preview = qobject_cast<RestorePreview*>(w); preview && preview->isVisible())
            return preview;
    return nullptr;
}

// Four controllers connected, and a file to keep their settings in.
struct Backup : Connected {
    explicit Backup(int subnet) : Connected(QStringLiteral("127.68.%1.1").arg(subnet)) {}
    bool save(bool all = true) { return form.backup().save(path, all); }
    // Restores the file; the preview is looked at, then accepted with its OK button.
    bool restore(std::function<void(RestorePreview*)> look = {}) {
        driver::when(
            &form, [] { return openPreview() != nullptr; },
            [look] {
                if (look)
                    look(openPreview());
                QTest::mouseClick(
                    openPreview()->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                    Qt::LeftButton);
            });
        boxes.clear();
        return form.backup().restore(path);
    }

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.json"));
};

// Twenty settings of many pages: the whole picture grid, trims, a bezel value, an OSD value.
QStringList manySettings() {
    QStringList names;
    for (const char* family : {"brightness", "contrast", "saturation", "hue"})
        for (const char* output : {"a", "b", "c", "d"})
            names << QStringLiteral("%1.%2").arg(QLatin1String(family), QLatin1String(output));
    return names + QStringList{"trim.h_start.a", "trim.v_end.d", "bezel.h.b", "osd.gain"};
}

// Moves each named setting to another value in its range, behind the window's back.
void change(sim::VirtualController* c, const QStringList& names) {
    sim::ControllerState state = c->state();
    for (const QString& name : names) {
        const protocol::Setting* s = protocol::find(name);
        state.set(name, s->min + (state.value(name) - s->min + 7) % (s->max - s->min + 1));
    }
    c->setState(state);
}

// "setting -> outcome" of one controller's block in a report's text.
QMap<QString, QString> outcomes(const QString& report, const QString& address) {
    QMap<QString, QString> found;
    bool inside = false;
    for (const QString& line : report.split(u'\n')) {
        if (!line.startsWith(QLatin1String("  "))) {
            inside = line.startsWith(address + u' ') || line.startsWith(address + u':');
            continue;
        }
        if (inside)
            found.insert(line.trimmed().section(u' ', 0, 0), line.section(QLatin1String(": "), 1));
    }
    return found;
}

// The lines the traffic monitor shows as sent to controller index, without their end.
QStringList monitored(const TrafficLog& log, int index) {
    QStringList sent;
    for (int r = 0; r < log.rowCount(); ++r)
        if (log.index(r, TrafficLog::Direction).data().toString() == QLatin1String("sent") &&
            log.index(r, 0).data(TrafficLog::IndexRole).toInt() == index)
            sent << log.index(r, TrafficLog::Text).data().toString().chopped(4);
    return sent;
}

} // namespace

class TestSettingsBackup : public QObject {
    Q_OBJECT
private slots:
    void backupPreviewRestoreReadsBackEqual() {
        Backup bench(20);
        const QString shown = bench.form.ui.TextInfo->text();
        QVERIFY(bench.save());
        QCOMPARE(bench.form.ui.TextInfo->text(), shown); // no reply handler saw the reads
        QVERIFY2(bench.boxes.texts().last().startsWith(
                     QStringLiteral("Saved the settings of 4 of 4 controllers")),
                 qPrintable(bench.boxes.texts().last()));

        QString error;
        const auto file = settingsfile::fromJson(
            *jsonfile::read(bench.path, settingsfile::Format, &error), &error);
        QVERIFY2(file, qPrintable(error));
        QCOMPARE(file->size(), 4);
        for (int n = 1; n <= 4; ++n) {
            QCOMPARE((*file)[n - 1].address, bench.addresses()[n - 1]);
            QCOMPARE((*file)[n - 1].mac, bench.form.ui.cbo_ipaddr->itemText(n - 1));
            QCOMPARE((*file)[n - 1].values.value("brightness.c"),
                     bench.c(n)->state().value("brightness.c"));
            QCOMPARE((*file)[n - 1].values.value("model"), bench.c(n)->state().value("model"));
        }

        // The second controller is changed behind the window's back.
        const sim::ControllerState before = bench.c(2)->state();
        sim::ControllerState changed = before;
        changed.set("brightness.c", 80);
        changed.set("network.mode", 1 - before.value("network.mode"));
        bench.c(2)->setState(changed);
        bench.forget();

        QStringList previewed;
        bool lockedDuring = false;
        QVERIFY(bench.restore([&](RestorePreview* preview) {
            previewed = preview->lines();
            lockedDuring = !bench.form.ui.sys_setting->isEnabled();
        }));
        QVERIFY(lockedDuring);
        // Only the real difference; the network setting is left alone unless ticked.
        QCOMPARE(
            previewed,
            (QStringList{"127.68.20.1: nothing to change", "127.68.20.2: brightness.c: 80 -> 50",
                         "127.68.20.3: nothing to change", "127.68.20.4: nothing to change"}));
        QCOMPARE(bench.c(2)->state().value("brightness.c"), before.value("brightness.c"));
        QCOMPARE(bench.c(2)->state().value("network.mode"), changed.value("network.mode"));
        const QStringList texts = bench.boxes.texts();
        QCOMPARE(texts.first(), QStringLiteral("Refresh completed !"));
        QVERIFY2(texts.last().contains(QStringLiteral("\n  brightness.c = 50: read back equal")),
                 qPrintable(texts.last()));
        QVERIFY(texts.last().startsWith(
            QStringLiteral("Restored the settings of 4 of 4 controllers.")));
        for (int n : {1, 3, 4})
            for (const QByteArray& line : bench.c(n)->received())
                QVERIFY2(line.startsWith('R'), line.constData()); // read, never written

        // Ticked, the network setting is restored too.
        const protocol::Value mode = before.value("network.mode");
        QStringList after;
        QVERIFY(bench.restore([&](RestorePreview* preview) {
            previewed = preview->lines();
            auto* network = preview->findChild<QCheckBox*>(QStringLiteral("restore_network"));
            QTest::mouseClick(network, Qt::LeftButton, {}, QPoint(8, network->height() / 2));
            after = preview->lines();
        }));
        QCOMPARE(previewed[1], QStringLiteral("127.68.20.2: nothing to change"));
        QCOMPARE(after[1],
                 QStringLiteral("127.68.20.2: network.mode: %1 -> %2").arg(1 - mode).arg(mode));
        QCOMPARE(bench.c(2)->state().value("network.mode"), mode);
        QVERIFY(linesOf(bench.c(2)).endsWith(QStringLiteral("SREL")));
        // The controller restarts its network: the window goes offline, as after Set IP.
        QVERIFY(!bench.form.services().isConnected());
        const QString report = bench.boxes.texts().last();
        QVERIFY2(report.contains(QStringLiteral("its network restarts with the new settings")) &&
                     outcomes(report, "127.68.20.2").value("network.mode") ==
                         QStringLiteral("written (the controller restarts its network with it)"),
                 qPrintable(report));
    }

    void badFilesAreRefusedWithTheirFault() {
        Backup bench(21);
        QVERIFY(bench.save(false)); // the selected controller only
        QString error;
        auto file = settingsfile::fromJson(
            *jsonfile::read(bench.path, settingsfile::Format, &error), &error);
        QCOMPARE(file->size(), 1);
        (*file)[0].address = QStringLiteral("127.68.21.9");
        QVERIFY(jsonfile::write(bench.path, settingsfile::toJson(*file), &error));
        bench.forget();

        bench.boxes.clear();
        QVERIFY(!bench.form.backup().restore(bench.path));
        QCOMPARE(
            bench.boxes.texts(),
            QStringList{"The file names controllers that are not listed; they are left alone:\n"
                        "127.68.21.9 (" +
                        bench.form.ui.cbo_ipaddr->itemText(0) + ")"});
        QCOMPARE(bench.received(), 0);

        QVERIFY(
            writeFile(bench.path, "{\"format\": \"panomat-settings/1\",\n  \"controllers\": [,]}"));
        bench.boxes.clear();
        QVERIFY(!bench.form.backup().restore(bench.path));
        QCOMPARE(bench.boxes.texts().size(), 1);
        QVERIFY2(bench.boxes.texts().first().startsWith(
                     QStringLiteral("The settings file cannot be read:")) &&
                     bench.boxes.texts().first().contains("line 2"),
                 qPrintable(bench.boxes.texts().first()));
        QCOMPARE(bench.received(), 0);
    }

    void manySettingsReachControllersPagesAndMonitor() {
        Backup bench(23);
        QVERIFY(bench.save());
        const sim::ControllerState saved[] = {bench.c(1)->state(), bench.c(2)->state()};
        for (int n : {1, 2})
            change(bench.c(n), manySettings());
        bench.forget();
        TrafficLog& log = bench.form.monitor().log();
        log.clear();

        QVERIFY(bench.restore());
        for (int n : {1, 2})
            QCOMPARE(bench.c(n)->state(), saved[n - 1]);
        const QString report = bench.boxes.reports().last();
        QVERIFY2(report.startsWith(QStringLiteral("Restored the settings of 4 of 4 controllers.")),
                 qPrintable(report));
        for (const QString& address :
             {QStringLiteral("127.68.23.1"), QStringLiteral("127.68.23.2")})
            for (const QString& name : manySettings())
                QCOMPARE(outcomes(report, address).value(name), QStringLiteral("read back equal"));

        // The pages show what the selected controller holds, those the refresh does not read too.
        const std::array<QComboBox*, 5>* grid[] = {&bench.ui.cbo_image_bri, &bench.ui.cbo_image_con,
                                                   &bench.ui.cbo_image_sat,
                                                   &bench.ui.cbo_image_hue};
        for (int p = 0; p < 4; ++p)
            for (int o = 1; o <= 4; ++o)
                QCOMPARE((*grid[p])[o]->currentText(),
                         QString::number(saved[0].value(manySettings()[4 * p + o - 1])));
        QCOMPARE(bench.ui.HS_A[0]->value(), 255 + saved[0].value("trim.h_start.a"));
        QCOMPARE(bench.ui.HS_A[15]->value(), 255 + saved[0].value("trim.v_end.d"));

        // The monitor saw every line each controller received, lent runs included.
        log.flush();
        for (int n = 1; n <= 4; ++n)
            QCOMPARE(monitored(log, n - 1), linesOf(bench.c(n)));
        const auto data = [&log](int r, int column) {
            return log.index(r, column).data().toString();
        };
        for (int r = 0; r < log.rowCount(); ++r)
            if (data(r, TrafficLog::Direction) == QLatin1String("received"))
                QVERIFY2(
                    data(r, TrafficLog::ReplyTime).section(u' ', 0, 0).remove(u',').toDouble() <
                        1000,
                    "a reply timed from some other line than its own request");
    }

    void aDropAfterTheKthWriteIsReportedAsTheControllerHasIt_data() {
        QTest::addColumn<int>("k");
        for (int k : {1, 4, 8, 19})
            QTest::addRow("after write %d", k) << k;
    }

    // The second controller drops its connection after the k-th write. It is read again on a
    // connection of its own, so the report says of each setting what the controller holds.
    void aDropAfterTheKthWriteIsReportedAsTheControllerHasIt() {
        QFETCH(int, k);
        Backup bench(30 + k);
        QVERIFY(bench.save());
        const sim::ControllerState saved = bench.c(2)->state();
        change(bench.c(2), manySettings());
        bench.c(2)->setFaults({.dropAfterWrites = k});

        QVERIFY(!bench.restore());
        const QString report = bench.boxes.reports().last();
        QVERIFY2(report.startsWith(QStringLiteral("Restored the settings of 3 of 4 controllers.")),
                 qPrintable(report));
        const QMap<QString, QString> said = outcomes(report, bench.addresses()[1]);
        QCOMPARE(said.size(), manySettings().size());
        int equal = 0;
        for (const QString& name : manySettings()) {
            const bool holds = bench.c(2)->state().value(name) == saved.value(name);
            QVERIFY2(holds == (said.value(name) == QLatin1String("read back equal")),
                     qPrintable(name + ": " + said.value(name)));
            QVERIFY2(holds || said.value(name).startsWith(QLatin1String("not sent")) ||
                         said.value(name).startsWith(QLatin1String("reads back")),
                     qPrintable(name + ": " + said.value(name)));
            equal += holds;
        }
        QCOMPARE(equal, k);
    }

    // Once the preview is accepted the second controller answers no read any more; the
    // operator stops waiting at its first read-back and still sees what was done.
    void stopWaitingLeavesTheReport() {
        Backup bench(24);
        QVERIFY(bench.save());
        change(bench.c(2), manySettings());
        driver::when(
            &bench.form,
            [&] {
                const QStringList lines = linesOf(bench.c(2));
                return !lines.isEmpty() && lines.first().startsWith(u'S') &&
                       lines.last().startsWith(u'R');
            },
            [&] { bench.form.StopWaiting(); });
        QVERIFY(!bench.restore([&](RestorePreview*) {
            sim::Faults silent;
            for (const protocol::Command& c : protocol::commands())
                if (c.effect == protocol::Effect::Read)
                    silent.silent << QByteArray(c.keyword);
            bench.c(2)->setFaults(silent);
            bench.c(2)->clearReceived();
        }));
        QTRY_COMPARE(bench.boxes.reports().size(), 1);
        const QString report = bench.boxes.reports().first();
        QVERIFY2(report.contains(QStringLiteral("failed: stopped before the end")),
                 qPrintable(report));
        const QMap<QString, QString> said = outcomes(report, bench.addresses()[1]);
        QCOMPARE(said.size(), manySettings().size());
        for (const QString& outcome : said)
            QVERIFY2(outcome.startsWith(QLatin1String("written")) ||
                         outcome.startsWith(QLatin1String("sent, not confirmed")),
                     qPrintable(outcome));
        QVERIFY(bench.ui.sys_setting->isEnabled());
        QVERIFY(!bench.form.services().isConnected());
    }
};

QTEST_MAIN(TestSettingsBackup)

#include "test_settingsbackup.moc"
