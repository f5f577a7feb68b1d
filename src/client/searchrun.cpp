#include "client/searchrun.h"

#include "protocol/legacytext.h"
#include "protocol/safefile.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QTimer>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace search {

namespace {

constexpr int AddressField = 15;

// As the operator may see it: control and non-ASCII bytes as \xNN, within
// Run::MaxLineChars characters.
QString escapedLine(const QByteArray& bytes) {
    QString out;
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x20 || b >= 0x7F)
            out += QStringLiteral("\\x%1").arg(b, 2, 16, QLatin1Char('0'));
        else
            out += QLatin1Char(c);
    }
    return out.left(Run::MaxLineChars);
}

// Whether this user may create files in `folder`.
bool writableFolder(const QString& folder) {
#ifdef Q_OS_WIN
    // On Windows isWritable() reads the read-only attribute alone, and Program Files
    // has none: only administrators may write there, which only a real file tells.
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral("panomat-XXXXXX.tmp")));
    return probe.open();
#else
    return QFileInfo(folder).isWritable();
#endif
}

QString besideProgram(const QString& name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

} // namespace

QString program() {
    const QString beside = besideProgram(Program);
    if (QFileInfo(beside).isFile())
        return beside;
    const QString installed =
        QDir::cleanPath(besideProgram(QStringLiteral(PANOMAT_HELPER_DIR "/") + Program));
    return QFileInfo(installed).isFile() ? installed : beside;
}

QString resultFolder(const QString& program) {
    const QString folder = QCoreApplication::applicationDirPath();
    if (QFileInfo(program).absolutePath() == folder && writableFolder(folder))
        return folder;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("panomat-set"));
}

QStringList arguments(const QString& folder) {
    if (folder == QCoreApplication::applicationDirPath())
        return {};
    return {QStringLiteral("--output-dir"), folder};
}

Run::Run() : program_(program()), folder_(resultFolder(program_)) {
    if (!found())
        message_ =
            QStringLiteral("Cannot find %1 in %2 !")
                .arg(Program, QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
}

Run::~Run() {
    // The program is killed with the QProcess; nobody listens any more.
    QObject::disconnect(reading_);
}

bool Run::found() const {
    return QFileInfo(program_).isFile();
}

bool Run::start() {
    if (!found())
        return false;
    const QDir results(folder_);
    if (!results.mkpath(QStringLiteral("."))) {
        message_ = QStringLiteral("Cannot create %1 !").arg(QDir::toNativeSeparators(folder_));
        return false;
    }
    for (const QString& name : {MacFile, IpFile}) {
        QFile file(results.filePath(name));
        if (file.exists() && !file.remove()) {
            message_ =
                QStringLiteral("Cannot remove the old %1: %2 !").arg(name, file.errorString());
            return false;
        }
    }
    process_.setProgram(program_);
    process_.setArguments(arguments(folder_));
    process_.setWorkingDirectory(QCoreApplication::applicationDirPath());
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (!hosts_.isEmpty()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("ZEDA_HOSTS"), hosts_);
        process_.setProcessEnvironment(env);
    }
    // Read even with nobody to tell: a program whose pipe is full would stop.
    reading_ = QObject::connect(&process_, &QProcess::readyReadStandardOutput, &process_,
                                [this] { readLines(false); });
#ifdef Q_OS_WIN
    process_.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* args) {
        args->startupInfo->dwFlags |= STARTF_USESHOWWINDOW;
        args->startupInfo->wShowWindow = SW_SHOWMINNOACTIVE;
    });
#endif
    process_.start();
    if (!process_.waitForStarted(-1) && process_.error() == QProcess::FailedToStart) {
        message_ = QStringLiteral("Cannot start %1: %2").arg(Program, process_.errorString());
        return false;
    }
    return true;
}

bool Run::wait(const client::Wait& wait, int timeoutMs) {
    const auto ended = [this] { return process_.state() == QProcess::NotRunning; };
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    limit.setTimerType(Qt::PreciseTimer);
    bool timedOut = false;
    QObject::connect(&limit, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    QObject::connect(&process_, &QProcess::finished, &loop, &QEventLoop::quit);
    if (timeoutMs >= 0)
        limit.start(timeoutMs);
    bool waited = true;
    if (wait)
        waited = wait([&] { return ended() || timedOut; });
    else if (!ended())
        loop.exec();
    if (waited && !timedOut) {
        readLines(true);
        QObject::disconnect(reading_);
        return true;
    }
    // A stopped search tells nothing more, not even while it is put down.
    QObject::disconnect(reading_);
    if (timedOut)
        message_ =
            QStringLiteral("%1 did not end within %2 s !").arg(Program).arg(timeoutMs / 1000);
    process_.kill();
    process_.waitForFinished(-1);
    return false;
}

void Run::readLines(bool atEnd) {
    // The program's lines are short; anything else is read in bounded pieces and cut.
    char chunk[4096];
    for (;;) {
        const qint64 got = process_.read(chunk, sizeof chunk);
        if (got <= 0)
            break;
        for (qint64 i = 0; i < got; ++i) {
            const char c = chunk[i];
            if (c == '\n') {
                if (partial_.endsWith('\r'))
                    partial_.chop(1);
                const QByteArray line = std::exchange(partial_, {});
                if (onLine_)
                    onLine_(escapedLine(line));
            } else if (partial_.size() < MaxLineChars) {
                partial_ += c; // the rest of a longer line is dropped
            }
        }
    }
    if (atEnd && !partial_.isEmpty()) {
        const QByteArray line = std::exchange(partial_, {});
        if (onLine_)
            onLine_(escapedLine(line));
    }
}

bool Run::endedWell() {
    if (process_.exitStatus() == QProcess::CrashExit) {
        message_ = QStringLiteral("%1 ended abnormally !").arg(Program);
        return false;
    }
    if (process_.exitCode() != 0) {
        message_ =
            QStringLiteral("%1 failed with exit code %2 !").arg(Program).arg(process_.exitCode());
        return false;
    }
    return true;
}

std::optional<QStringList> readLines(const QString& path) {
    QString error;
    const std::optional<QByteArray> bytes = safefile::readRegularFile(path, MaxResultBytes, &error);
    if (!bytes)
        return std::nullopt;
    QStringList lines = QString::fromLatin1(*bytes).split(u'\n');
    if (lines.last().isEmpty())
        lines.removeLast(); // the end of the last line, not a line of its own
    for (QString& line : lines)
        if (line.endsWith(u'\r'))
            line.chop(1);
    return lines;
}

QStringList macs(const QStringList& macLines) {
    QStringList result;
    for (const QString& line : macLines)
        result << line.left(MacLength);
    return result;
}

} // namespace search

QString addressFromLine(const QString& line, int index) {
    QStringList octets;
    for (int offset : {1, 5, 9, 13}) {
        const QString field = legacy::mid(line, search::AddressField * index + offset, 3);
        octets << QString::number(legacy::roundHalfEven(legacy::val(field)));
    }
    return octets.join(u'.');
}
