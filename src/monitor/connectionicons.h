#pragma once

#include <QObject>

class WindowServices;

// Each entry of the device list shows how its connection stands, by an icon whose shape
// tells it as well as its colour, and by its tooltip. The entry's text stays the MAC.
class ConnectionIcons : public QObject {
    Q_OBJECT
public:
    explicit ConnectionIcons(WindowServices& session);

    // "not connected", "connecting", "connected" or "connection lost".
    static QString stateText(int state);

private:
    void show(int index);
    void showAll();

    WindowServices& s_;
};
