#include "services/windowservices.h"

#include "protocol/catalogue.h"
#include "services/reportdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

WindowServices::WindowServices(QWidget* window, Controls& ui) : window_(window), ui_(ui) {}

int WindowServices::selected() const {
    return ui_.cbo_ipaddr->currentIndex();
}

int WindowServices::deviceCount() const {
    return ui_.cbo_ipaddr->count();
}

bool WindowServices::linkUp() const {
    return link_.isConnected(selected());
}

bool WindowServices::guard(Refusal refusal) {
    if (linkUp())
        return true;
    critical(QStringLiteral("Ethernet is disconnected !"));
    // Only the selection goes; the model list's own Click is not raised by this.
    if (refusal == Refusal::ClearModelFirst)
        ui_.cbo_model->setCurrentIndex(-1);
    SetOffline();
    return false;
}

void WindowServices::send(const QByteArray& line) {
    if (!cancelled())
        link_.write(selected(), line);
}

void WindowServices::sendAll(const QByteArray& line) {
    for (int i = 0; i < deviceCount() && !cancelled(); ++i)
        link_.write(i, line);
}

namespace {

// The key of the reply a command line is answered with, as the catalogue has it.
QString awaitedReply(const QByteArray& line) {
    const QByteArray keyword = line.trimmed().split(' ').value(0).toUpper();
    const protocol::Command* command = protocol::findCommand(keyword);
    if (command && *command->reply.key)
        return QString::fromLatin1(command->reply.key);
    return QStringLiteral("the answer to %1").arg(QString::fromLatin1(keyword));
}

} // namespace

bool WindowServices::request(WaitStep& step, int count,
                             const std::function<QByteArray(int)>& lineAt, const Request& how) {
    step.step_ = static_cast<quint8>(how.from);
    if (how.armed)
        how.armed();
    bool done = true;
    for (int k = 0; k < count && done; ++k) {
        const QByteArray line = lineAt(k);
        sendTo(how.all, line);
        emit notice_.waiting(QString::fromLatin1(step.procedure()), awaitedReply(line),
                             address(selected()));
        const int awaited = how.from + k + 1;
        done = pump_.until([&] { return step.at(awaited); });
        if (done && how.answered)
            how.answered(k + 1);
    }
    emit notice_.ended();
    // A stopped wait forgets its half-done sequence.
    step.step_ = 0;
    return done;
}

bool WindowServices::request(WaitStep& step, const QList<QByteArray>& lines, const Request& how) {
    return request(
        step, static_cast<int>(lines.size()), [&lines](int k) { return lines[k]; }, how);
}

QMessageBox::StandardButton WindowServices::message(QMessageBox::Icon icon, const QString& text,
                                                    QMessageBox::StandardButtons buttons,
                                                    QWidget* over) {
    if (cancelled())
        return QMessageBox::NoButton;
    QMessageBox box(icon, QCoreApplication::applicationName(), text, buttons,
                    over ? over : window_);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

client::Runner WindowServices::lentRunner(const char* procedure,
                                          const QList<client::LentTarget>& targets, int timeoutMs,
                                          std::function<void(qsizetype done)> progress) {
    return [this, procedure, targets, timeoutMs, progress](const client::Sequence& prepare) {
        qsizetype done = 0;
        client::RunOptions options;
        options.wait = [this](const std::function<bool()>& ended) { return pump_.until(ended); };
        options.ended = [&](qsizetype, bool) {
            if (progress)
                progress(++done);
        };
        emit notice_.waiting(QString::fromLatin1(procedure), QStringLiteral("the replies"),
                             QStringLiteral("%1 controllers").arg(targets.size()));
        const QStringList failures = client::runLent(link_, targets, timeoutMs, prepare, options);
        emit notice_.ended();
        return failures;
    };
}

client::Runner WindowServices::ownRunner(const QList<client::Target>& targets, int timeoutMs) {
    return [this, targets, timeoutMs](const client::Sequence& prepare) {
        if (cancelled())
            return QStringList(targets.size(), QStringLiteral("stopped before the end"));
        client::RunOptions options;
        options.wait = [this](const std::function<bool()>& ended) { return pump_.until(ended); };
        options.watch = [this, &targets](qsizetype i, ControllerClient& client) {
            const int entry = int(ip_list.indexOf(targets[i].address));
            QObject::connect(
                &client, &ControllerClient::wrote, &client,
                [this, entry](const QByteArray& line) { link_.tap(entry, true, line); });
            QObject::connect(
                &client, &ControllerClient::arrived, &client,
                [this, entry](const QByteArray& bytes) { link_.tap(entry, false, bytes); });
        };
        return client::runOwn(targets, timeoutMs, prepare, options);
    };
}

// While stopped waits unwind nothing is shown; what the operator must still learn is
// shown once they have, unless the window is closing.
void WindowServices::afterUnwinding(const std::function<void()>& show) {
    if (pump_.closing())
        return;
    if (!cancelled())
        show();
    else // events may still be handled on the way out: look again after them
        QTimer::singleShot(0, window_, [this, show] { afterUnwinding(show); });
}

void WindowServices::showReport(const QString& head, const client::Report& report, QWidget* over) {
    afterUnwinding([this, head, report, over] {
        ReportDialog dialog(head, report, over ? over : window_);
        dialog.exec();
    });
}

void WindowServices::messageAfterStop(QMessageBox::Icon icon, const QString& text) {
    afterUnwinding([this, icon, text] { message(icon, text); });
}

bool WindowServices::askYes(const QString& text) {
    return message(QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No) ==
           QMessageBox::Yes;
}

void WindowServices::setTitle(const QString& title) {
    window_->setWindowTitle(title);
}

// Not connected, every page disabled until a search has found controllers and one
// is connected. The first SetOffline after this closes nothing.
void WindowServices::StartUp() {
    is_connected = false;
    search_done = false;
    at_startup = true;
    ui_.power_ctl[0]->setVisible(true);
    ui_.power_ctl[1]->setVisible(false);
    ui_.power_ctl[2]->setVisible(false);
    setSystemButtonsEnabled(false);
    ui_.lbl_con[2]->setVisible(false);
    ui_.net_config->setEnabled(false);
    ui_.con_interface->setEnabled(false);
    setPageFramesEnabled(false);
}

void WindowServices::SetOffline() {
    if (at_startup) {
        at_startup = false;
    } else {
        for (int i = 0; i < deviceCount(); ++i)
            link_.close(i);
    }
    setBackColour(ui_.btn_discon, Qt::red);
    clearBackColour(ui_.btn_con);
    ui_.lbl_con[2]->setVisible(false);
    ui_.net_config->setEnabled(false);
    setPageFramesEnabled(false);
    ui_.power_ctl[0]->setVisible(true);
    ui_.power_ctl[1]->setVisible(false);
    ui_.power_ctl[2]->setVisible(false);
    setTitle(Title);
    setSystemButtonsEnabled(false);
    is_connected = false;
    search_done = false;
}

void WindowServices::SetConnected() {
    setBackColour(ui_.btn_con, Qt::green);
    clearBackColour(ui_.btn_discon);
    ui_.lbl_con[2]->setVisible(false);
    ui_.net_config->setEnabled(true);
    setPageFramesEnabled(true);
    setSystemButtonsEnabled(true);
    is_connected = true;
    search_done = false;
}

void WindowServices::LockPanels() {
    ui_.net_config->setEnabled(false);
    setPageFramesEnabled(false);
    ui_.con_interface->setEnabled(false);
    ui_.sys_setting->setEnabled(false);
}

void WindowServices::UnlockPanels() {
    ui_.net_config->setEnabled(true);
    setPageFramesEnabled(true);
    ui_.con_interface->setEnabled(true);
    ui_.sys_setting->setEnabled(true);
}

void WindowServices::setPageFramesEnabled(bool enabled) {
    for (QGroupBox* page : ui_.frame_control)
        page->setEnabled(enabled);
}

void WindowServices::setSystemButtonsEnabled(bool enabled) {
    for (QWidget* control :
         {static_cast<QWidget*>(ui_.power_ctl[0]), static_cast<QWidget*>(ui_.btn_sys_fac_rst),
          static_cast<QWidget*>(ui_.btn_sys_refresh), static_cast<QWidget*>(ui_.Check1[0]),
          static_cast<QWidget*>(ui_.Check1[1])})
        control->setEnabled(enabled);
}

BusyButtons::BusyButtons(std::initializer_list<QWidget*> buttons) : buttons_(buttons) {
    for (QWidget* button : buttons_)
        button->setEnabled(false);
}

BusyButtons::~BusyButtons() {
    for (QWidget* button : buttons_)
        button->setEnabled(true);
}
