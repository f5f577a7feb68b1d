#include "services/controls.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QWidget>
#include <algorithm>
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

void legibleDisabledText() {
    QPalette palette = QApplication::palette();
    double lightest = 1, darkest = 0;
    for (QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Button}) {
        const double l = luminance(palette.color(QPalette::Disabled, role));
        lightest = std::min(lightest, l);
        darkest = std::max(darkest, l);
    }
    // The grey nearest the backgrounds that still reads at 4.5:1: from white down on
    // light backgrounds, from black up on dark ones.
    const bool light = lightest > 0.179;
    const int step = light ? -1 : 1;
    int grey = light ? 255 : 0;
    const auto reads = [&](int g) {
        const double l = luminance(QColor(g, g, g));
        return light ? (lightest + 0.05) / (l + 0.05) >= 4.5 : (l + 0.05) / (darkest + 0.05) >= 4.5;
    };
    while (!reads(grey) && grey != (light ? 0 : 255))
        grey += step;
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(grey, grey, grey));
    QApplication::setPalette(palette);
}

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
