#pragma once

#include "protocol/catalogue.h"

#include <QAnyStringView>
#include <QList>
#include <QtGlobal>
#include <array>

namespace sim {

// Everything one controller remembers: a value for every setting of the catalogue, by
// the setting's index, and the favourite slots.
struct ControllerState {
    static constexpr int FavouriteSlots = 5;
    using Values = QList<protocol::Value>;

    int number = 1; // 1-based position in the simulator, shown in the log
    Values values = protocol::factoryValues();
    // Each slot keeps the wall part of the values (rows, columns, tiles, bypass, bezel).
    std::array<Values, FavouriteSlots> favourites{values, values, values, values, values};
    quint32 factoryAddress = 0; // where "SDEF" brings the controller back to

    protocol::Value value(QAnyStringView name) const;
    void set(QAnyStringView name, protocol::Value v);
    Values valuesOf(const QList<const protocol::Setting*>& settings) const;

    void store(int slot);  // 1-based
    void recall(int slot); // 1-based

    // Factory settings of controller `number` whose factory address is `address`.
    // Model and firmware differ between controllers so that each can be told apart.
    static ControllerState factory(int number, quint32 address);

    bool operator==(const ControllerState&) const = default;
};

} // namespace sim
