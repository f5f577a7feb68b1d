#pragma once

#include "link/lentrun.h"
#include "link/settingsio.h"

#include <QDialog>
#include <QList>
#include <QString>
#include <functional>

class QCheckBox;
class QListWidget;
class QWidget;
class Session;

// What a restore would write, shown before anything is: "address: setting: now -> file"
// per line, and the box that lets the network settings be written too.
class RestorePreview : public QDialog {
    Q_OBJECT
public:
    struct Controller {
        QString address;
        Values now;
        Values wanted;
    };

    RestorePreview(const QList<Controller>& controllers, QWidget* parent = nullptr);

    bool withNetwork() const;
    QStringList lines() const;

private:
    void fill();

    QList<Controller> controllers_;
    QListWidget* list_;
    QCheckBox* network_;
};

// Saves the listed controllers' settings to a file of "panomat-ctl backup" and writes
// such a file back, over the window's own connections with the panels locked.
class SettingsBackup {
public:
    static constexpr int TimeoutMs = 2000;

    // refresh: the window's full refresh, run once the sockets are given back.
    SettingsBackup(Session& session, std::function<void()> refresh, QWidget* parent);

    // The menu entries: ask what to save or which file to restore, then go on below.
    void saveAsked();
    void restoreAsked();

    // all: every listed controller, else the selected one. False after a message when
    // nothing could be written.
    bool save(const QString& path, bool all);
    bool restore(const QString& path);

private:
    bool ready(const QString& what);
    QStringList run(const QList<LentTarget>& targets,
                    const std::function<void(ControllerClient&, qsizetype)>& prepare);

    Session& s;
    std::function<void()> refresh_;
    QWidget* parent_;
};
