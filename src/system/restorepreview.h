#pragma once

#include "client/settingsio.h"

#include <QDialog>
#include <QList>
#include <QString>

class QCheckBox;
class QListWidget;

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
