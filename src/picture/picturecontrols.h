#pragma once

#include "session/controls.h"

#include <QString>

class PictureRead;
class QComboBox;
class Session;

// The grid row of a picture parameter (0 brightness, 1 contrast, 2 saturation, 3 hue);
// members 1..4 are the outputs.
std::array<QComboBox*, 5>& pictureRow(Controls& ui, int parameter);

// The sixteen setters of the picture grid: a pick or Enter sends the value of one
// parameter of one output to the selected controller only; the grid's "ALL IP" boxes
// belong to the reset buttons. Nothing is awaited.
class PictureControls {
public:
    PictureControls(Session& session, const PictureRead& grid);

    // parameter 0 brightness, 1 contrast, 2 saturation, 3 hue; output 1..4.
    void pictureClick(int parameter, int output);
    void pictureKeyDown(int parameter, int output, int keyCode);

private:
    Session& s_;
    const PictureRead& grid_;
};
