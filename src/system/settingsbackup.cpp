#include "system/settingsbackup.h"

#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"
#include "session/session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

using protocol::Setting;

namespace {

QList<Change> networkOnly(QList<Change> changes) {
    changes.removeIf([](const Change& c) { return c.first->group != protocol::Group::Network; });
    return changes;
}

QString summary(const QString& head, const QStringList& done, const QStringList& failed) {
    QString text = head;
    if (!done.isEmpty())
        text += QStringLiteral("\n\n") + done.join(QLatin1Char('\n'));
    if (!failed.isEmpty())
        text += QStringLiteral("\n\nNot done:\n") + failed.join(QLatin1Char('\n'));
    return text;
}

} // namespace

// --- The preview ---------------------------------------------------------------------

RestorePreview::RestorePreview(const QList<Controller>& controllers, QWidget* parent)
    : QDialog(parent), controllers_(controllers) {
    setObjectName(QStringLiteral("restore_preview"));
    setWindowTitle(QStringLiteral("Restore controller settings"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("These settings will change (now -> file):")));
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("restore_changes"));
    layout->addWidget(list_);
    network_ = new QCheckBox(
        QStringLiteral("Also restore the &network settings (the controller restarts its network)"));
    network_->setObjectName(QStringLiteral("restore_network"));
    layout->addWidget(network_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(network_, &QCheckBox::toggled, this, &RestorePreview::fill);
    fill();
    resize(560, 380);
}

bool RestorePreview::withNetwork() const {
    return network_->isChecked();
}

QStringList RestorePreview::lines() const {
    QStringList texts;
    for (int i = 0; i < list_->count(); ++i)
        texts << list_->item(i)->text();
    return texts;
}

void RestorePreview::fill() {
    list_->clear();
    for (const Controller& c : controllers_) {
        const QList<Change> changes = restoreChanges(c.wanted, c.now, withNetwork());
        if (changes.isEmpty())
            list_->addItem(QStringLiteral("%1: nothing to change").arg(c.address));
        for (const Change& change : changes)
            list_->addItem(QStringLiteral("%1: %2").arg(c.address, describeChange(change, c.now)));
    }
}

// --- Backup and restore --------------------------------------------------------------

SettingsBackup::SettingsBackup(Session& session, std::function<void()> refresh, QWidget* parent)
    : s(session), refresh_(std::move(refresh)), parent_(parent) {}

bool SettingsBackup::ready(const QString& what) {
    if (s.pump().waiting()) {
        s.exclamation(QStringLiteral("The window waits for a controller's reply: %1 once it has "
                                     "come.")
                          .arg(what));
        return false;
    }
    if (!s.isConnected()) {
        s.exclamation(QStringLiteral("Connect to the controllers first: %1 needs them.").arg(what));
        return false;
    }
    return true;
}

QStringList SettingsBackup::run(const QList<LentTarget>& targets,
                                const std::function<void(ControllerClient&, qsizetype)>& prepare) {
    QProgressBar* progress = s.ui().ProgressBar1;
    progress->setValue(0);
    progress->setVisible(true);
    const QStringList failures =
        runLent(s.link(), targets, TimeoutMs, prepare, [&](qsizetype done) {
            progress->setValue(int(100 * done / qMax<qsizetype>(1, targets.size())));
        });
    progress->setVisible(false);
    return failures;
}

void SettingsBackup::saveAsked() {
    if (!ready(QStringLiteral("save the settings")))
        return;
    const bool all = s.deviceCount() > 1 &&
                     s.askYes(QStringLiteral("Save the settings of all listed controllers ?\n"
                                             "(No: the selected controller only)"));
    const QString path = QFileDialog::getSaveFileName(
        parent_, QStringLiteral("Save controller settings"), QStringLiteral("settings.json"),
        QStringLiteral("Settings files (*.json)"));
    if (!path.isEmpty())
        save(path, all);
}

void SettingsBackup::restoreAsked() {
    if (!ready(QStringLiteral("restore the settings")))
        return;
    const QString path =
        QFileDialog::getOpenFileName(parent_, QStringLiteral("Restore controller settings"), {},
                                     QStringLiteral("Settings files (*.json)"));
    if (!path.isEmpty())
        restore(path);
}

bool SettingsBackup::save(const QString& path, bool all) {
    if (!ready(QStringLiteral("save the settings")))
        return false;
    QList<LentTarget> targets;
    for (int i = 0; i < s.deviceCount(); ++i)
        if (all || i == s.selected())
            targets.append({i, s.address(i)});
    const QList<const Setting*> settings = readableSettings(true);
    QList<settingsfile::Controller> read(targets.size());
    s.LockPanels();
    const QStringList failures = run(targets, [&](ControllerClient& client, qsizetype i) {
        read[i].mac = s.ui().cbo_ipaddr->itemText(targets[i].entry);
        read[i].address = targets[i].address;
        queueReads(client, settings, &read[i].values);
    });
    s.UnlockPanels();
    QList<settingsfile::Controller> saved;
    QStringList done, failed;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        if (!failures[i].isEmpty()) {
            failed << failures[i];
            continue;
        }
        read[i].time = QDateTime::currentDateTimeUtc();
        read[i].firmware =
            settingsfile::firmwareText(read[i].values.value(QStringLiteral("firmware")));
        saved << read[i];
        done << QStringLiteral("%1: %2 settings").arg(read[i].address).arg(read[i].values.size());
    }
    QString error;
    if (saved.isEmpty()) {
        s.exclamation(
            summary(QStringLiteral("No settings were read; nothing was saved."), {}, failed));
        return false;
    }
    if (!jsonfile::write(path, settingsfile::toJson(saved), &error)) {
        s.exclamation(QStringLiteral("The settings were not saved:\n%1").arg(error));
        return false;
    }
    const QString head = QStringLiteral("Saved the settings of %1 of %2 controllers to %3.")
                             .arg(saved.size())
                             .arg(targets.size())
                             .arg(path);
    if (failed.isEmpty())
        s.information(summary(head, done, failed));
    else
        s.exclamation(summary(head, done, failed));
    return true;
}

bool SettingsBackup::restore(const QString& path) {
    if (!ready(QStringLiteral("restore the settings")))
        return false;
    QString error;
    const auto object = jsonfile::read(path, settingsfile::Format, &error);
    const auto file = object ? settingsfile::fromJson(*object, &error) : std::nullopt;
    if (!file) {
        s.exclamation(QStringLiteral("The settings file cannot be read:\n%1").arg(error));
        return false;
    }
    QList<LentTarget> targets;
    QList<Values> wanted;
    QStringList unlisted;
    for (const settingsfile::Controller& c : *file) {
        const int entry = int(s.addresses().indexOf(c.address));
        if (entry < 0)
            unlisted << QStringLiteral("%1 (%2)").arg(c.address, c.mac);
        else {
            targets.append({entry, c.address});
            wanted << c.values;
        }
    }
    if (!unlisted.isEmpty()) {
        s.exclamation(QStringLiteral("The file names controllers that are not listed; they are "
                                     "left alone:\n%1")
                          .arg(unlisted.join(QLatin1Char('\n'))));
        if (targets.isEmpty())
            return false;
    }

    s.LockPanels();
    QList<Values> now(targets.size());
    QStringList failures = run(targets, [&](ControllerClient& client, qsizetype i) {
        queueReads(client, readableSettings(true), &now[i]);
    });
    QList<RestorePreview::Controller> readable;
    QList<qsizetype> readableIndex;
    for (qsizetype i = 0; i < targets.size(); ++i)
        if (failures[i].isEmpty()) {
            readable.append({targets[i].address, now[i], wanted[i]});
            readableIndex << i;
        }
    if (readable.isEmpty()) {
        s.UnlockPanels();
        s.exclamation(summary(QStringLiteral("No controller could be read; nothing was written."),
                              {}, failures));
        return false;
    }
    RestorePreview preview(readable, parent_);
    if (preview.exec() != QDialog::Accepted) {
        s.UnlockPanels();
        return false;
    }
    const bool withNetwork = preview.withNetwork();

    QList<LentTarget> writeTargets;
    QList<QList<Change>> changes, networkChanges;
    for (const qsizetype i : readableIndex) {
        writeTargets << targets[i];
        changes << restoreChanges(wanted[i], now[i], false);
        networkChanges << (withNetwork ? networkOnly(restoreChanges(wanted[i], now[i], true))
                                       : QList<Change>{});
    }
    QList<Values> after(writeTargets.size());
    const QStringList written = run(writeTargets, [&](ControllerClient& client, qsizetype i) {
        queueWrites(client, changes[i]);
        queueReads(client, readableSettings(false), &after[i]);
        // Last, as they restart the controller's network and end the connection.
        queueWrites(client, networkChanges[i]);
        if (!networkChanges[i].isEmpty())
            client.exchange(QByteArrayLiteral("SREL\r\n"), QByteArrayLiteral("RELI"));
    });
    s.UnlockPanels();
    if (s.cancelled())
        return false;

    QStringList done, failed;
    for (qsizetype i = 0; i < targets.size(); ++i)
        if (!failures[i].isEmpty())
            failed << failures[i];
    bool restarted = false;
    for (qsizetype k = 0; k < writeTargets.size(); ++k) {
        const QStringList different = differences(changes[k], after[k]);
        if (!written[k].isEmpty())
            failed << written[k];
        else if (!different.isEmpty())
            failed << QStringLiteral("%1: %2").arg(writeTargets[k].address,
                                                   different.join(QLatin1String("; ")));
        else {
            QString line = QStringLiteral("%1: wrote %2 settings, read back equal")
                               .arg(writeTargets[k].address)
                               .arg(changes[k].size() + networkChanges[k].size());
            if (!networkChanges[k].isEmpty()) {
                line += QStringLiteral("; its network restarts with the new settings");
                restarted = true;
            }
            done << line;
        }
    }
    for (const QString& who : unlisted)
        failed << QStringLiteral("%1: not listed").arg(who);
    // A controller whose network restarts drops its connection: the operator reconnects.
    if (restarted)
        s.SetOffline();
    else if (refresh_)
        refresh_();
    const QString head = QStringLiteral("Restored the settings of %1 of %2 controllers.")
                             .arg(done.size())
                             .arg(targets.size() + unlisted.size());
    if (failed.isEmpty())
        s.information(summary(head, done, failed));
    else
        s.exclamation(summary(head, done, failed));
    return failed.isEmpty();
}
