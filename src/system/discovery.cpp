#include "system/discovery.h"

#include "link/searchprogram.h"
#include "protocol/legacytext.h"
#include "session/events.h"
#include "session/session.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QProcess>
#include <QPushButton>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

using search::IpFile;
using search::MacFile;

DeviceDiscovery::DeviceDiscovery(Session& session) : s_(session) {
    QObject::connect(s_.ui().btn_sys_search, &QPushButton::clicked, s_.ui().btn_sys_search,
                     [this] { btn_sys_search_Click(); });
}

void DeviceDiscovery::btn_sys_search_Click() {
    if (running_)
        return; // one search at a time
    const QString program = search::program();
    if (!QFileInfo(program).isFile()) {
        s_.exclamation(QStringLiteral("Cannot find %1 in %2 !")
                           .arg(search::Program,
                                QDir::toNativeSeparators(QCoreApplication::applicationDirPath())));
        return;
    }
    s_.SetOffline();
    s_.ui().cbo_ipaddr->clear();
    const QDir results(search::resultFolder(program));
    if (!removeOldResults(results))
        return;
    running_ = true;
    const bool ran = runSearchProgram(program, results.path());
    running_ = false;
    if (!ran)
        return;

    const std::optional<QStringList> macLines = search::readLines(results.filePath(MacFile));
    const std::optional<QStringList> ipLines = search::readLines(results.filePath(IpFile));
    if (!macLines || !ipLines) {
        s_.exclamation(QStringLiteral("%1 left no readable %2 !")
                           .arg(search::Program, macLines ? IpFile : MacFile));
        return;
    }
    QStringList macs = search::macs(*macLines);
    if (macs.size() > MaxDevices) {
        s_.exclamation(QStringLiteral("%1 lists %2 devices; only the first %3 are shown !")
                           .arg(MacFile)
                           .arg(macs.size())
                           .arg(MaxDevices));
        macs = macs.mid(0, MaxDevices);
    }
    s_.ui().cbo_ipaddr->addItems(macs);
    s_.ui().cbo_ipaddr->setCurrentIndex(-1);
    const int count = static_cast<int>(macs.size());
    ip_text = ipLines->isEmpty() ? QString() : ipLines->last();
    s_.setAddresses({});
    if (count == 0) {
        s_.exclamation(QStringLiteral("Not Find MAC !"));
        return;
    }
    QStringList addresses;
    for (int i = 0; i < count; ++i)
        addresses << addressFromLine(ip_text, i);
    s_.setAddresses(addresses);
    FillModelList();
    s_.information(QStringLiteral("Search MAC completed !"));
    if (s_.cancelled())
        return;
    s_.setSearchDone();
    events::setListIndex(s_.ui().cbo_ipaddr, 0);
    s_.ui().con_interface->setEnabled(true);
}

// Result files of an earlier search must never pass for this one's: they go before
// the program starts, and what a failed program leaves is not read.
bool DeviceDiscovery::removeOldResults(const QDir& results) {
    for (const QString& name : {MacFile, IpFile}) {
        QFile file(results.filePath(name));
        if (file.exists() && !file.remove()) {
            s_.exclamation(
                QStringLiteral("Cannot remove the old %1: %2 !").arg(name, file.errorString()));
            return false;
        }
    }
    return true;
}

// Runs the search program and waits for it to end, the window staying live. False
// when it could not be started, failed, or the window is closing.
bool DeviceDiscovery::runSearchProgram(const QString& program, const QString& results) {
    QProcess tool;
    tool.setProgram(program);
    tool.setArguments(search::arguments(results));
    tool.setWorkingDirectory(QCoreApplication::applicationDirPath());
    tool.setProcessChannelMode(QProcess::ForwardedChannels);
#ifdef Q_OS_WIN
    tool.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* args) {
        args->startupInfo->dwFlags |= STARTF_USESHOWWINDOW;
        args->startupInfo->wShowWindow = SW_SHOWMINNOACTIVE;
    });
#endif
    tool.start();
    if (!tool.waitForStarted(-1) && tool.error() == QProcess::FailedToStart) {
        s_.exclamation(
            QStringLiteral("Cannot start %1: %2").arg(search::Program, tool.errorString()));
        return false;
    }
    return s_.pump().until([&] { return tool.state() == QProcess::NotRunning; }) && endedWell(tool);
}

// A program that was killed or reports failure leaves no result to read.
bool DeviceDiscovery::endedWell(const QProcess& tool) {
    if (tool.exitStatus() == QProcess::CrashExit) {
        s_.exclamation(QStringLiteral("%1 ended abnormally !").arg(search::Program));
        return false;
    }
    if (tool.exitCode() != 0) {
        s_.exclamation(QStringLiteral("%1 failed with exit code %2 !")
                           .arg(search::Program)
                           .arg(tool.exitCode()));
        return false;
    }
    return true;
}

void DeviceDiscovery::FillModelList() {
    s_.ui().cbo_model->clear();
    for (int i = 0; i < s_.deviceCount(); ++i)
        s_.ui().cbo_model->addItem(legacy::signedText(i));
    s_.ui().cbo_model->setCurrentIndex(-1);
}
