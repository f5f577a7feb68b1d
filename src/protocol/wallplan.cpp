#include "protocol/wallplan.h"

#include "protocol/address.h"

#include <QJsonArray>
#include <QSet>

namespace wallplan {

namespace {

constexpr int Outputs = 4;

std::optional<Assignment> assignmentFromJson(const QJsonObject& json, const Plan& plan,
                                             QString* error) {
    Assignment a;
    a.mac = json.value(QLatin1String("mac")).toString();
    a.address = json.value(QLatin1String("address")).toString();
    const QString output = json.value(QLatin1String("output")).toString();
    a.output = output.size() == 1 ? output[0].unicode() - u'A' + 1 : 0;
    a.tile = json.value(QLatin1String("tile")).toInt(0);
    const QString who = QStringLiteral("%1 Out %2").arg(a.address, protocol::shownText(output));
    if (a.address.isEmpty()) {
        *error = QStringLiteral("an assignment without \"address\"");
    } else if (!protocol::isControllerAddressText(a.address)) {
        *error = QStringLiteral("\"%1\" is not a controller address (four decimal octets, "
                                "not 0.0.0.0)")
                     .arg(protocol::shownText(a.address));
    } else if (a.output < 1 || a.output > Outputs) {
        *error = QStringLiteral("%1: the output must be A, B, C or D").arg(who);
    } else if (a.tile < 1 || a.tile > plan.rows * plan.cols) {
        *error = QStringLiteral("%1: tile %2 is not on a %3 x %4 wall (tiles 1..%5)")
                     .arg(who, json.value(QLatin1String("tile")).toVariant().toString())
                     .arg(plan.rows)
                     .arg(plan.cols)
                     .arg(plan.rows * plan.cols);
    } else {
        return a;
    }
    return std::nullopt;
}

} // namespace

QString outputName(int output) {
    return QString(QChar(u'A' + output - 1));
}

Plan autoFill(int rows, int cols, const QList<Controller>& controllers) {
    Plan plan{rows, cols, {}};
    int tile = 1;
    for (const Controller& c : controllers)
        for (int output = 1; output <= Outputs && tile <= rows * cols; ++output)
            plan.assignments.append({c.mac, c.address, output, tile++});
    return plan;
}

Coverage coverage(const Plan& plan) {
    QList<int> count(plan.rows * plan.cols + 1, 0);
    for (const Assignment& a : plan.assignments)
        if (a.tile >= 1 && a.tile < count.size())
            ++count[a.tile];
    Coverage c;
    for (int tile = 1; tile < count.size(); ++tile) {
        if (count[tile] == 0)
            c.unassigned << tile;
        else if (count[tile] > 1)
            c.doubled << tile;
    }
    return c;
}

QJsonObject toJson(const Plan& plan) {
    QJsonArray list;
    for (const Assignment& a : plan.assignments)
        list.append(QJsonObject{{QLatin1String("mac"), a.mac},
                                {QLatin1String("address"), a.address},
                                {QLatin1String("output"), outputName(a.output)},
                                {QLatin1String("tile"), a.tile}});
    return {{QLatin1String("format"), Format},
            {QLatin1String("rows"), plan.rows},
            {QLatin1String("cols"), plan.cols},
            {QLatin1String("assignments"), list}};
}

std::optional<Plan> fromJson(const QJsonObject& object, QString* error) {
    Plan plan;
    plan.rows = object.value(QLatin1String("rows")).toInt(0);
    plan.cols = object.value(QLatin1String("cols")).toInt(0);
    if (plan.rows < 1 || plan.rows > MaxSide || plan.cols < 1 || plan.cols > MaxSide) {
        *error = QStringLiteral("rows and cols must each be 1..%1").arg(MaxSide);
        return std::nullopt;
    }
    QSet<QString> outputs;
    for (const QJsonValue& json : object.value(QLatin1String("assignments")).toArray()) {
        const auto a = assignmentFromJson(json.toObject(), plan, error);
        if (!a)
            return std::nullopt;
        const QString key = a->address + u'/' + outputName(a->output);
        if (outputs.contains(key)) {
            *error = QStringLiteral("%1 Out %2 is assigned twice")
                         .arg(a->address, outputName(a->output));
            return std::nullopt;
        }
        outputs.insert(key);
        plan.assignments << *a;
    }
    return plan;
}

} // namespace wallplan
