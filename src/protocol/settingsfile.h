#pragma once

#include "protocol/catalogue.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <optional>

// A backup of controllers' settings: every readable setting of each, by its catalogue
// name, with the controller's MAC, address, firmware and the time it was read.
namespace settingsfile {

inline const QString Format = QStringLiteral("panomat-settings/1");

struct Controller {
    QString mac;
    QString address;
    QString firmware; // "1.02"
    QDateTime time;
    QMap<QString, protocol::Value> values; // by setting name
};

QJsonObject toJson(const QList<Controller>& controllers);
// Every name must be a readable setting and every value in its range.
std::optional<QList<Controller>> fromJson(const QJsonObject& object, QString* error);

// "1.02" from the firmware setting's value 102, as the window's title shows it.
QString firmwareText(protocol::Value firmware);

} // namespace settingsfile
