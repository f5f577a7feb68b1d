#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <optional>

// The record of a wall: which output of which controller shows which tile. The
// controllers cannot report it, so the plan file is what remembers it; panomat-ctl and
// the window's planner read and write the same file.
namespace wallplan {

inline const QString Format = QStringLiteral("panomat-wall-plan/1");
constexpr int MaxSide = 15;

struct Assignment {
    QString mac;
    QString address;
    int output = 1; // 1..4, "A".."D" in the file
    int tile = 1;   // 1..rows x cols, row by row
    bool operator==(const Assignment&) const = default;
};

struct Plan {
    int rows = 1;
    int cols = 1;
    QList<Assignment> assignments;
    bool operator==(const Plan&) const = default;
};

struct Controller {
    QString mac;
    QString address;
};

// Outputs A-D of each controller in turn, to tiles 1, 2, ... until the wall is full.
Plan autoFill(int rows, int cols, const QList<Controller>& controllers);

// Tiles no output shows, and tiles two or more outputs show.
struct Coverage {
    QList<int> unassigned;
    QList<int> doubled;
};
Coverage coverage(const Plan& plan);

QJsonObject toJson(const Plan& plan);
// Rows and columns 1..15, every tile on the wall, outputs A-D, no output twice.
std::optional<Plan> fromJson(const QJsonObject& object, QString* error);

QString outputName(int output); // "A".."D"

} // namespace wallplan
