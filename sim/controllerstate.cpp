#include "controllerstate.h"

namespace sim {

ControllerState ControllerState::factory(int number, quint32 address) {
    ControllerState s;
    s.number = number;
    // The tool's model list holds " 0" .. " N-1" for N controllers found, so a
    // model number equal to the controller's place keeps every read in range.
    s.model = (number - 1) & 0xFF;
    s.firmware = qMin(101 + number, 999);
    for (auto& row : s.picture)
        row.fill(PictureDefault);
    s.favourites.fill(s.wall);
    s.address = address;
    s.factoryAddress = address;
    return s;
}

} // namespace sim
