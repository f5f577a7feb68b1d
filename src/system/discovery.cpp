#include "system/discovery.h"

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
#include <QStandardPaths>
#include <QTextStream>
#include <optional>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

const QString SearchProgram = QStringLiteral("ZEDA.exe");
const QString MacFile = QStringLiteral("MAC.txt");
const QString IpFile = QStringLiteral("IP.txt");
constexpr int MacLength = 17;
constexpr int AddressField = 15;

QString besideTool(const QString& name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

// Beside the tool (a build tree, a copy of the tool's folder); else where an
// installation keeps its private programs, PANOMAT_HELPER_DIR relative to the tool.
QString searchProgram() {
    const QString beside = besideTool(SearchProgram);
    if (QFileInfo(beside).isFile())
        return beside;
    const QString installed =
        QDir::cleanPath(besideTool(QStringLiteral(PANOMAT_HELPER_DIR "/") + SearchProgram));
    return QFileInfo(installed).isFile() ? installed : beside;
}

// The result files stay beside the tool when the search program is there too and the
// folder can be written. Otherwise (installed, or a read-only copy) they go to the
// user's data folder, ~/.local/share/panomat-set, and the search is told so.
QString resultFolder(const QString& program) {
    const QString folder = QCoreApplication::applicationDirPath();
    if (QFileInfo(program).absolutePath() == folder && QFileInfo(folder).isWritable())
        return folder;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("panomat-set"));
}

// All lines of a text file, or nothing when it cannot be opened.
std::optional<QStringList> readLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Latin1);
    QStringList lines;
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

} // namespace

QString addressFromLine(const QString& line, int index) {
    QStringList octets;
    for (int offset : {1, 5, 9, 13}) {
        const QString field = legacy::mid(line, AddressField * index + offset, 3);
        octets << QString::number(legacy::roundHalfEven(legacy::val(field)));
    }
    return octets.join(u'.');
}

DeviceDiscovery::DeviceDiscovery(Session& session) : s_(session) {
    QObject::connect(s_.ui().btn_sys_search, &QPushButton::clicked, s_.ui().btn_sys_search,
                     [this] { btn_sys_search_Click(); });
}

void DeviceDiscovery::btn_sys_search_Click() {
    if (running_)
        return; // one search at a time
    const QString program = searchProgram();
    if (!QFileInfo(program).isFile()) {
        s_.exclamation(QStringLiteral("Cannot find %1 in %2 !")
                           .arg(SearchProgram,
                                QDir::toNativeSeparators(QCoreApplication::applicationDirPath())));
        return;
    }
    s_.SetOffline();
    s_.ui().cbo_ipaddr->clear();
    const QDir results(resultFolder(program));
    if (!removeOldResults(results))
        return;
    running_ = true;
    const bool ran = runSearchProgram(program, results.path());
    running_ = false;
    if (!ran)
        return;

    const std::optional<QStringList> macLines = readLines(results.filePath(MacFile));
    const std::optional<QStringList> ipLines = readLines(results.filePath(IpFile));
    if (!macLines || !ipLines) {
        s_.exclamation(QStringLiteral("%1 left no readable %2 !")
                           .arg(SearchProgram, macLines ? IpFile : MacFile));
        return;
    }
    QStringList macs;
    for (const QString& line : *macLines)
        macs << line.left(MacLength);
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
    if (results != QCoreApplication::applicationDirPath())
        tool.setArguments({QStringLiteral("--output-dir"), results});
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
            QStringLiteral("Cannot start %1: %2").arg(SearchProgram, tool.errorString()));
        return false;
    }
    return s_.pump().until([&] { return tool.state() == QProcess::NotRunning; }) && endedWell(tool);
}

// A program that was killed or reports failure leaves no result to read.
bool DeviceDiscovery::endedWell(const QProcess& tool) {
    if (tool.exitStatus() == QProcess::CrashExit) {
        s_.exclamation(QStringLiteral("%1 ended abnormally !").arg(SearchProgram));
        return false;
    }
    if (tool.exitCode() != 0) {
        s_.exclamation(QStringLiteral("%1 failed with exit code %2 !")
                           .arg(SearchProgram)
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
