#pragma once

#include "protocol/catalogue.h"
#include "services/controls.h"

#include <QString>

class PictureRead;
class QComboBox;
class WindowServices;

// The grid's rows in the order they are read, each the family of one picture
// parameter kept per output; a row's members 1..4 are the outputs.
struct PictureBinding {
    const char* family;
    std::array<QComboBox*, 5> Controls::*row;
};
inline constexpr PictureBinding PictureRows[4] = {{"brightness", &Controls::cbo_image_bri},
                                                  {"contrast", &Controls::cbo_image_con},
                                                  {"saturation", &Controls::cbo_image_sat},
                                                  {"hue", &Controls::cbo_image_hue}};

// parameter: 0 brightness, 1 contrast, 2 saturation, 3 hue.
inline std::array<QComboBox*, 5>& pictureRow(Controls& ui, int parameter) {
    return ui.*PictureRows[parameter].row;
}
inline const protocol::Setting& pictureSetting(int parameter, int output) {
    return protocol::setting(PictureRows[parameter].family, output);
}

// The sixteen setters of the picture grid: a pick or Enter sends the value of one
// parameter of one output to the selected controller only; the grid's "ALL IP" boxes
// belong to the reset buttons. Nothing is awaited.
class PictureControls {
public:
    PictureControls(WindowServices& session, const PictureRead& grid);

    // parameter 0 brightness, 1 contrast, 2 saturation, 3 hue; output 1..4.
    void pictureClick(int parameter, int output);
    void pictureKeyDown(int parameter, int output, int keyCode);

private:
    WindowServices& s_;
    const PictureRead& grid_;
};
