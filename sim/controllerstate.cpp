#include "controllerstate.h"

namespace sim {

namespace {

const protocol::Setting& named(QAnyStringView name) {
    const protocol::Setting* s = protocol::find(name);
    if (!s)
        qFatal("no setting %s", qPrintable(name.toString()));
    return *s;
}

// What a favourite slot keeps: the video-wall part of the settings.
bool kept(const protocol::Setting& s) {
    using protocol::Group;
    return s.group == Group::Wall || s.group == Group::Bypass || s.group == Group::BezelMode ||
           s.group == Group::Bezel;
}

void copyKept(const ControllerState::Values& from, ControllerState::Values& to) {
    for (const protocol::Setting& s : protocol::settings())
        if (kept(s))
            to[s.index] = from[s.index];
}

} // namespace

protocol::Value ControllerState::value(QAnyStringView name) const {
    return values[named(name).index];
}

void ControllerState::set(QAnyStringView name, protocol::Value v) {
    values[named(name).index] = v;
}

ControllerState::Values
ControllerState::valuesOf(const QList<const protocol::Setting*>& settings) const {
    Values out;
    for (const protocol::Setting* s : settings)
        out << values[s->index];
    return out;
}

void ControllerState::store(int slot) {
    copyKept(values, favourites[slot - 1]);
}

void ControllerState::recall(int slot) {
    copyKept(favourites[slot - 1], values);
}

ControllerState ControllerState::factory(int number, quint32 address) {
    ControllerState s;
    s.number = number;
    // The tool's model list holds " 0" .. " N-1" for N controllers found, so a
    // model number equal to the controller's place keeps every read in range.
    s.set("model", (number - 1) & 0xFF);
    s.set("firmware", qMin(101 + number, 999));
    s.set("network.address", address);
    s.favourites.fill(s.values);
    s.factoryAddress = address;
    return s;
}

} // namespace sim
