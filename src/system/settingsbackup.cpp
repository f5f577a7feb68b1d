#include "system/settingsbackup.h"

#include "client/restore.h"
#include "protocol/jsonfile.h"
#include "protocol/settingsfile.h"
#include "services/filedialogs.h"
#include "services/windowservices.h"

#include <QComboBox>
#include <QDateTime>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

using protocol::Setting;

namespace {

QString summary(const QString& head, const QStringList& done, const QStringList& failed) {
    QString text = head;
    if (!done.isEmpty())
        text += QStringLiteral("\n\n") + done.join(QLatin1Char('\n'));
    if (!failed.isEmpty())
        text += QStringLiteral("\n\nNot done:\n") + failed.join(QLatin1Char('\n'));
    return text;
}

} // namespace

SettingsBackup::SettingsBackup(WindowServices& session, ReadBack readBack, QWidget* parent)
    : s(session), readBack_(std::move(readBack)), parent_(parent) {}

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

// ProgressBar1 counts the controllers that are done.
client::Runner SettingsBackup::runner(const char* procedure,
                                      const QList<client::LentTarget>& targets) {
    QProgressBar* progress = s.ui().ProgressBar1;
    const auto total = qMax<qsizetype>(1, targets.size());
    const client::Runner lent =
        s.lentRunner(procedure, targets, TimeoutMs, [progress, total](qsizetype done) {
            progress->setValue(int(100 * done / total));
        });
    return [progress, lent](const client::Sequence& prepare) {
        progress->setValue(0);
        progress->setVisible(true);
        const QStringList failures = lent(prepare);
        progress->setVisible(false);
        return failures;
    };
}

void SettingsBackup::saveAsked() {
    if (!ready(QStringLiteral("save the settings")))
        return;
    const bool all = s.deviceCount() > 1 &&
                     s.askYes(QStringLiteral("Save the settings of all listed controllers ?\n"
                                             "(No: the selected controller only)"));
    const QString path =
        askFileToSave(parent_, QStringLiteral("Save controller settings"),
                      QStringLiteral("settings.json"), QStringLiteral("Settings files (*.json)"));
    if (!path.isEmpty())
        save(path, all);
}

void SettingsBackup::restoreAsked() {
    if (!ready(QStringLiteral("restore the settings")))
        return;
    const QString path = askFileToOpen(parent_, QStringLiteral("Restore controller settings"),
                                       QStringLiteral("Settings files (*.json)"));
    if (!path.isEmpty())
        restore(path);
}

bool SettingsBackup::save(const QString& path, bool all) {
    if (!ready(QStringLiteral("save the settings")))
        return false;
    QList<client::LentTarget> targets;
    for (int i = 0; i < s.deviceCount(); ++i)
        if (all || i == s.selected())
            targets.append({i, s.address(i)});
    s.LockPanels();
    QStringList failures;
    const QList<Values> values = client::readSettings(
        runner("Settings backup", targets), targets.size(), readableSettings(true), &failures);
    if (s.cancelled())
        return false;
    s.UnlockPanels();
    QList<settingsfile::Controller> saved;
    QStringList done, failed;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        if (!failures[i].isEmpty()) {
            failed << failures[i];
            continue;
        }
        saved << settingsfile::Controller{
            s.ui().cbo_ipaddr->itemText(targets[i].entry), targets[i].address,
            settingsfile::firmwareText(values[i].value(QStringLiteral("firmware"))),
            QDateTime::currentDateTimeUtc(), values[i]};
        done << QStringLiteral("%1: %2 settings").arg(targets[i].address).arg(values[i].size());
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
    QList<client::LentTarget> targets;
    QList<client::RestoreTarget> wanted;
    QList<client::Target> unlisted;
    for (const settingsfile::Controller& c : *file) {
        const int entry = int(s.addresses().indexOf(c.address));
        if (entry < 0) {
            unlisted.append({c.address, c.mac});
        } else {
            targets.append({entry, c.address});
            wanted.append({{c.address, s.ui().cbo_ipaddr->itemText(entry)}, c.values, {}, {}});
        }
    }
    if (!unlisted.isEmpty()) {
        QStringList names;
        for (const client::Target& t : unlisted)
            names << QStringLiteral("%1 (%2)").arg(t.address, t.mac);
        s.exclamation(QStringLiteral("The file names controllers that are not listed; they are "
                                     "left alone:\n%1")
                          .arg(names.join(QLatin1Char('\n'))));
        if (targets.isEmpty())
            return false;
    }

    s.LockPanels();
    QStringList unread;
    const QList<Values> now = client::readSettings(runner("Restore read", targets), targets.size(),
                                                   readableSettings(true), &unread);
    if (s.cancelled())
        return false; // stopped before anything was written
    QList<RestorePreview::Controller> readable;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        wanted[i].now = now[i];
        wanted[i].readFailure = unread[i];
        if (unread[i].isEmpty())
            readable.append({targets[i].address, now[i], wanted[i].wanted});
    }
    if (readable.isEmpty()) {
        s.UnlockPanels();
        s.exclamation(summary(QStringLiteral("No controller could be read; nothing was written."),
                              {}, unread));
        return false;
    }
    RestorePreview preview(readable, parent_);
    if (preview.exec() != QDialog::Accepted) {
        s.UnlockPanels();
        return false;
    }
    auto plans = client::planRestore(wanted, preview.withNetwork(), &error);
    if (!plans) {
        s.UnlockPanels();
        s.exclamation(QStringLiteral("The settings file cannot be restored; nothing was "
                                     "written:\n%1")
                          .arg(error));
        return false;
    }
    QList<client::Target> own;
    for (const client::RestoreTarget& t : wanted)
        own << t.target;
    client::Report report =
        client::restore(runner("Restore", targets), *plans, s.ownRunner(own, TimeoutMs));
    for (const client::Target& t : unlisted)
        report.controllers.append({t, QStringLiteral("not listed"), {}, {}});
    finishRestore(report, targets);
    return report.done();
}

// The pages show what the controllers hold now: a controller whose network restarts
// drops its connection and the operator reconnects; otherwise what the selected one
// changed is read again.
void SettingsBackup::finishRestore(const client::Report& report,
                                   const QList<client::LentTarget>& targets) {
    const bool stopped = s.cancelled();
    bool restarted = false;
    QSet<protocol::Group> changed;
    for (qsizetype i = 0; i < targets.size(); ++i)
        for (const client::SettingReport& setting : report.controllers[i].settings) {
            if (setting.outcome == client::Outcome::NotSent)
                continue;
            const protocol::Group group = protocol::find(setting.name)->group;
            restarted = restarted || group == protocol::Group::Network;
            if (targets[i].entry == s.selected())
                changed << group;
        }
    if (!stopped) {
        s.UnlockPanels();
        if (restarted)
            s.SetOffline();
        else if (readBack_)
            readBack_(changed);
    }
    s.showReport(QStringLiteral("Restored the settings of %1 of %2 controllers.")
                     .arg(report.doneCount())
                     .arg(report.controllers.size()),
                 report);
}
