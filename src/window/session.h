#pragma once

#include "link/devicelink.h"
#include "link/waitbytes.h"
#include "link/waitpump.h"
#include "window/controls.h"

#include <QByteArray>
#include <QMessageBox>
#include <QStringList>
#include <functional>
#include <initializer_list>
#include <vector>

// What every feature shares with the window: the controls, the controller links, the
// wait bytes, the device list and the window's own procedures. Form1 is the one Session.
class Session {
public:
    static inline const QString Title = QStringLiteral("Panomat Set v1.10");

    explicit Session(QWidget* window);
    virtual ~Session() = default;

    Controls ui;
    WaitBytes w;
    DeviceLink link;
    WaitPump pump;

    bool is_connected = false;
    bool search_done = false;
    bool at_startup = false;
    QStringList ip_list; // dotted address of each entry of cbo_ipaddr, same index

    // The window's own procedures.
    virtual void SetOffline() = 0;
    virtual void LockPanels() = 0;
    virtual void UnlockPanels() = 0;
    virtual void RefreshAll() = 0;
    virtual void ReadBypassBezel() = 0;

    int selected() const;    // cbo_ipaddr's list index, -1 for none
    int deviceCount() const; // entries of cbo_ipaddr
    bool linkUp() const;     // the selected controller's socket is connected

    // The test every sender makes before its first write: when the selected controller
    // is not connected, "Ethernet is disconnected !" and SetOffline, and false.
    bool guard();

    void send(const QByteArray& line);    // to the selected controller
    void sendAll(const QByteArray& line); // to every listed controller, in list order
    void sendTo(bool all, const QByteArray& line) { all ? sendAll(line) : send(line); }

    // Pumps events until byte holds value; false when the window is closing, and then
    // the caller stops without sending or showing anything more.
    bool waitFor(const quint8& byte, int value);

    // A read or write sequence: count lines to the selected controller, each only after
    // the reply to the one before has moved step on by one. lineAt(k) builds line k when
    // its turn comes. False when the window is closing.
    bool sendInTurn(const quint8& step, int count, const std::function<QByteArray(int)>& lineAt);

    // Modal message boxes with the application's name as title. Nothing is shown once
    // the window is closing.
    QMessageBox::StandardButton message(QMessageBox::Icon icon, const QString& text,
                                        QMessageBox::StandardButtons buttons = QMessageBox::Ok);
    void critical(const QString& text) { message(QMessageBox::Critical, text); }
    void exclamation(const QString& text) { message(QMessageBox::Warning, text); }
    void information(const QString& text) { message(QMessageBox::Information, text); }
    void plain(const QString& text) { message(QMessageBox::NoIcon, text); }
    bool askYes(const QString& text);

    void setTitle(const QString& title);

private:
    QWidget* window_;
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
