#include "window/session.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QWidget>

Session::Session(QWidget* window) : window_(window) {}

int Session::selected() const {
    return ui.cbo_ipaddr->currentIndex();
}

int Session::deviceCount() const {
    return ui.cbo_ipaddr->count();
}

bool Session::linkUp() const {
    return link.isConnected(selected());
}

bool Session::guard() {
    if (linkUp())
        return true;
    critical(QStringLiteral("Ethernet is disconnected !"));
    SetOffline();
    return false;
}

void Session::send(const QByteArray& line) {
    if (!pump.cancelled())
        link.write(selected(), line);
}

void Session::sendAll(const QByteArray& line) {
    for (int i = 0; i < deviceCount() && !pump.cancelled(); ++i)
        link.write(i, line);
}

bool Session::waitFor(const quint8& byte, int value) {
    return pump.until([&] { return byte == value; });
}

bool Session::sendInTurn(const quint8& step, int count,
                         const std::function<QByteArray(int)>& lineAt) {
    const int first = step;
    for (int k = 0; k < count; ++k) {
        send(lineAt(k));
        if (!waitFor(step, first + k + 1))
            return false;
    }
    return true;
}

QMessageBox::StandardButton Session::message(QMessageBox::Icon icon, const QString& text,
                                             QMessageBox::StandardButtons buttons) {
    if (pump.cancelled())
        return QMessageBox::NoButton;
    QMessageBox box(icon, QCoreApplication::applicationName(), text, buttons, window_);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

bool Session::askYes(const QString& text) {
    return message(QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No) ==
           QMessageBox::Yes;
}

void Session::setTitle(const QString& title) {
    window_->setWindowTitle(title);
}

BusyButtons::BusyButtons(std::initializer_list<QWidget*> buttons) : buttons_(buttons) {
    for (QWidget* button : buttons_)
        button->setEnabled(false);
}

BusyButtons::~BusyButtons() {
    for (QWidget* button : buttons_)
        button->setEnabled(true);
}
