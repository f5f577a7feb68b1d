#pragma once

#include "client/report.h"
#include "client/run.h"
#include "client/settingsio.h"
#include "services/windowservices.h"
#include "system/restorepreview.h"

#include <QList>
#include <QString>
#include <functional>

class QWidget;

// Saves the listed controllers' settings to a file of "panomat-ctl backup" and writes
// such a file back, over the window's own connections with the panels locked.
class SettingsBackup {
public:
    static constexpr int TimeoutMs = 2000;

    // readBack: the window's reading of its pages, run once the sockets are given back.
    SettingsBackup(WindowServices& session, ReadBack readBack, QWidget* parent);

    // The menu entries: ask what to save or which file to restore, then go on below.
    void saveAsked();
    void restoreAsked();

    // all: every listed controller, else the selected one. False after a message when
    // nothing could be written.
    bool save(const QString& path, bool all);
    // False when anything was not restored as the file has it; the report says what.
    bool restore(const QString& path);

private:
    bool ready(const QString& what);
    client::Runner runner(const char* procedure, const QList<client::LentTarget>& targets);
    void finishRestore(const client::Report& report, const QList<client::LentTarget>& targets);

    WindowServices& s;
    ReadBack readBack_;
    QWidget* parent_;
};
