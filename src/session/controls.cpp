#include "session/controls.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QWidget>
#include <cmath>

namespace {

// Relative luminance as the contrast guidelines define it: 0 black, 1 white.
double luminance(const QColor& colour) {
    auto linear = [](double v) {
        return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

} // namespace

void setBackColour(QWidget* button, const QColor& colour) {
    QPalette palette = QApplication::palette(button);
    palette.setColor(QPalette::Button, colour);
    // The style greys a disabled button's text, which all but vanishes on green or red:
    // a disabled coloured button keeps black or white text, whichever contrasts more
    // (they contrast equally at a luminance of 0.179).
    const QColor text = luminance(colour) > 0.179 ? Qt::black : Qt::white;
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, text);
    button->setPalette(palette);
}

void clearBackColour(QWidget* button) {
    button->setPalette(QApplication::palette(button));
}
