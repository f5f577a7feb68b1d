#include "protocol/settingsfile.h"

#include "protocol/address.h"

#include <QJsonArray>

namespace settingsfile {

namespace {

QJsonValue valueJson(const protocol::Setting& s, protocol::Value v) {
    if (s.kind == protocol::Kind::Address)
        return protocol::valueText(s, v);
    return static_cast<double>(v);
}

std::optional<protocol::Value> valueFromJson(const protocol::Setting& s, const QJsonValue& json,
                                             QString* error) {
    QString text;
    if (json.isDouble())
        text = QString::number(json.toDouble(), 'g', 17);
    else if (json.isString())
        text = json.toString();
    const protocol::Result<protocol::Value> value = protocol::parseValue(s, text);
    if (!value) {
        *error = QStringLiteral("%1: %2").arg(s.name, value.error);
        return std::nullopt;
    }
    return *value;
}

std::optional<Controller> controllerFromJson(const QJsonObject& json, QString* error) {
    Controller c;
    c.mac = json.value(QLatin1String("mac")).toString();
    c.address = json.value(QLatin1String("address")).toString();
    c.firmware = json.value(QLatin1String("firmware")).toString();
    c.time = QDateTime::fromString(json.value(QLatin1String("time")).toString(), Qt::ISODate);
    if (c.address.isEmpty()) {
        *error = QStringLiteral("a controller without \"address\"");
        return std::nullopt;
    }
    if (!protocol::isControllerAddressText(c.address)) {
        *error = QStringLiteral("\"%1\" is not a controller address (four decimal octets, "
                                "not 0.0.0.0)")
                     .arg(protocol::shownText(c.address));
        return std::nullopt;
    }
    const QJsonObject values = json.value(QLatin1String("settings")).toObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        const protocol::Setting* s = protocol::find(it.key());
        if (!s || !s->readable()) {
            *error = QStringLiteral("%1: no readable setting \"%2\"")
                         .arg(c.address, protocol::shownText(it.key()));
            return std::nullopt;
        }
        QString why;
        const auto value = valueFromJson(*s, it.value(), &why);
        if (!value) {
            *error = QStringLiteral("%1: %2").arg(c.address, why);
            return std::nullopt;
        }
        c.values.insert(s->name, *value);
    }
    return c;
}

} // namespace

QJsonObject toJson(const QList<Controller>& controllers) {
    QJsonArray list;
    for (const Controller& c : controllers) {
        QJsonObject values;
        for (auto it = c.values.begin(); it != c.values.end(); ++it)
            values.insert(it.key(), valueJson(*protocol::find(it.key()), it.value()));
        list.append(QJsonObject{{QLatin1String("mac"), c.mac},
                                {QLatin1String("address"), c.address},
                                {QLatin1String("firmware"), c.firmware},
                                {QLatin1String("time"), c.time.toString(Qt::ISODate)},
                                {QLatin1String("settings"), values}});
    }
    return {{QLatin1String("format"), Format}, {QLatin1String("controllers"), list}};
}

std::optional<QList<Controller>> fromJson(const QJsonObject& object, QString* error) {
    const QJsonValue list = object.value(QLatin1String("controllers"));
    if (!list.isArray()) {
        *error = QStringLiteral("no \"controllers\" list");
        return std::nullopt;
    }
    QList<Controller> controllers;
    for (const QJsonValue& json : list.toArray()) {
        const auto c = controllerFromJson(json.toObject(), error);
        if (!c)
            return std::nullopt;
        controllers << *c;
    }
    return controllers;
}

QString firmwareText(protocol::Value firmware) {
    const QString digits = QString::number(firmware).rightJustified(3, u'0');
    return digits.left(1) + u'.' + digits.mid(1, 2);
}

} // namespace settingsfile
