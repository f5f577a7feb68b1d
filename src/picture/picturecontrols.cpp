#include "picture/picturecontrols.h"

#include "picture/pictureread.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "session/events.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

const char* const Keywords[4] = {"SBRI", "SCON", "SSAT", "SHUE"};

} // namespace

std::array<QComboBox*, 5>& pictureRow(Controls& ui, int parameter) {
    std::array<QComboBox*, 5>* rows[4] = {&ui.cbo_image_bri, &ui.cbo_image_con, &ui.cbo_image_sat,
                                          &ui.cbo_image_hue};
    return *rows[parameter];
}

PictureControls::PictureControls(Session& session, const PictureRead& grid)
    : s_(session), grid_(grid) {
    for (int p = 0; p < 4; ++p)
        for (int n = 1; n <= 4; ++n) {
            QComboBox* box = pictureRow(s_.ui(), p)[n];
            events::onClick(box, [this, p, n] { pictureClick(p, n); });
            events::onKeyDown(box, [this, p, n](int key) { pictureKeyDown(p, n, key); });
        }
}

// A click raised while the grid is read or reset is the read's doing, not the operator's.
void PictureControls::pictureClick(int parameter, int output) {
    if (!s_.guard())
        return;
    if (grid_.busy())
        return;
    s_.send(command::line(QLatin1String(Keywords[parameter]), output,
                          pictureRow(s_.ui(), parameter)[output]->currentIndex()));
}

// Enter sends the text as typed when -1 < value < 101, real-valued ("100.5" passes).
// A running read or reset does not hold it back.
void PictureControls::pictureKeyDown(int parameter, int output, int keyCode) {
    if (!s_.guard() || keyCode != events::KeyEnter)
        return;
    const QString text = pictureRow(s_.ui(), parameter)[output]->lineEdit()->text();
    if (!legacy::typedWithin(text, -1, 101)) {
        s_.exclamation(QStringLiteral("Please type 0 ~ 100"));
        return;
    }
    s_.send(command::line(QLatin1String(Keywords[parameter]), output, text));
}
