#pragma once

#include "client/report.h"
#include "client/run.h"
#include "link/devicelink.h"
#include "services/controls.h"
#include "services/waits.h"

#include <QByteArray>
#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <functional>
#include <initializer_list>
#include <vector>

// How a request goes out; the defaults send to the selected controller from step 1.
struct Request {
    // Every listed controller gets each line; only the selected one's reply is read.
    bool all = false;
    // The step the wait is armed at.
    int from = 1;
    // Runs once the step is armed, before the first line: controls set here raise
    // events whose handlers already see the request running.
    std::function<void()> armed = {};
    // Runs after each reply with the number of replies so far.
    std::function<void(int replies)> answered = {};
};

// The window reads its pages again after a procedure of many settings: changed names
// the families the procedure wrote on the selected controller.
using ReadBack = std::function<void(const QSet<protocol::Group>& changed)>;

// What the window offers its features: the controls, the lines to the listed
// controllers, requests that wait for their replies, message boxes, and the window's
// connected, offline and locked states.
class WindowServices {
public:
    static inline const QString Title = QStringLiteral("Panomat Set v1.10");

    WindowServices(QWidget* window, Controls& ui);

    Controls& ui() { return ui_; }
    const Controls& ui() const { return ui_; }
    DeviceLink& link() { return link_; }
    WaitPump& pump() { return pump_; }
    WaitNotice& notice() { return notice_; }
    // True while the window closes or a stopped wait unwinds: nothing more is sent
    // or shown.
    bool cancelled() const { return pump_.cancelled(); }

    // The device list: cbo_ipaddr holds the MACs, the addresses sit at the same index.
    int selected() const;    // cbo_ipaddr's list index, -1 for none
    int deviceCount() const; // entries of cbo_ipaddr
    QString address(int index) const { return ip_list.value(index); }
    const QStringList& addresses() const { return ip_list; }
    void setAddresses(const QStringList& addresses) { ip_list = addresses; }
    bool linkUp() const; // the selected controller's socket is connected

    bool isConnected() const { return is_connected; }
    bool searchDone() const { return search_done; }
    void setSearchDone() { search_done = true; }

    // The test every sender makes before its first write: when the selected controller
    // is not connected, "Ethernet is disconnected !" and SetOffline, and false. A
    // setter whose list a status read fills drops that list's selection in between.
    enum class Refusal { Offline, ClearModelFirst };
    bool guard(Refusal refusal = Refusal::Offline);

    void send(const QByteArray& line);    // to the selected controller
    void sendAll(const QByteArray& line); // to every listed controller, in list order
    void sendTo(bool all, const QByteArray& line) { all ? sendAll(line) : send(line); }

    // Arms step at how.from and sends count lines, each only after the reply to the one
    // before has moved the step on by one; lineAt(k) builds line k when its turn comes.
    // The step is idle afterwards. False when the wait was stopped or the window is
    // closing: the caller then stops without sending or showing anything more.
    bool request(WaitStep& step, int count, const std::function<QByteArray(int)>& lineAt,
                 const Request& how = {});
    bool request(WaitStep& step, const QList<QByteArray>& lines, const Request& how = {});

    // Runs a procedure of the client library on the window's own connections to the
    // targets: every wait a request of the window's own would be, so "Stop waiting" and
    // closing end it, and the status bar names it. progress(done) follows each target
    // that ends.
    client::Runner lentRunner(const char* procedure, const QList<client::LentTarget>& targets,
                              int timeoutMs, std::function<void(qsizetype done)> progress = {});
    // The same on connections of the procedure's own, for a controller whose lent one
    // was lost.
    client::Runner ownRunner(const QList<client::Target>& targets, int timeoutMs);
    // A procedure's report, head first, with a table of every setting. A procedure
    // stopped by "Stop waiting" still shows what it did, once the stopped waits have
    // unwound.
    // over: the window the report belongs to, the main window by default.
    void showReport(const QString& head, const client::Report& report, QWidget* over = nullptr);
    // A message box now, or, when "Stop waiting" is unwinding the waits, once they have.
    void messageAfterStop(QMessageBox::Icon icon, const QString& text);
    // Runs show now, or once stopped waits have unwound; never while closing.
    void afterUnwinding(const std::function<void()>& show);

    // Modal message boxes with the application's name as title. Nothing is shown once
    // cancelled.
    // over: the window the box belongs to, over which it is shown and to which it
    // returns; the main window by default.
    QMessageBox::StandardButton message(QMessageBox::Icon icon, const QString& text,
                                        QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                                        QWidget* over = nullptr);
    void critical(const QString& text) { message(QMessageBox::Critical, text); }
    void exclamation(const QString& text) { message(QMessageBox::Warning, text); }
    void information(const QString& text) { message(QMessageBox::Information, text); }
    void plain(const QString& text) { message(QMessageBox::NoIcon, text); }
    bool askYes(const QString& text);

    void setTitle(const QString& title);

    // The window's states.
    void StartUp();
    void SetOffline();
    void SetConnected();
    void LockPanels();
    void UnlockPanels();

private:
    void setPageFramesEnabled(bool enabled);
    void setSystemButtonsEnabled(bool enabled);

    QWidget* window_;
    Controls& ui_;
    DeviceLink link_;
    WaitPump pump_;
    WaitNotice notice_;
    QStringList ip_list;
    bool is_connected = false;
    bool search_done = false;
    bool at_startup = false;
};

// A procedure's own buttons stay disabled while it runs and come back however it ends,
// also when its wait is stopped.
class BusyButtons {
public:
    explicit BusyButtons(std::initializer_list<QWidget*> buttons);
    ~BusyButtons();
    BusyButtons(const BusyButtons&) = delete;
    BusyButtons& operator=(const BusyButtons&) = delete;

private:
    std::vector<QWidget*> buttons_;
};
