#include "picture/picturecontrols.h"

#include "picture/pictureread.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QComboBox>
#include <QLineEdit>

PictureControls::PictureControls(WindowServices& session, const PictureRead& grid)
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
    s_.send(command::line(*pictureSetting(parameter, output).write, output,
                          pictureRow(s_.ui(), parameter)[output]->currentIndex()));
}

// Enter sends the text as typed when minimum - 1 < value < maximum + 1, real-valued
// ("100.5" passes). A running read or reset does not hold it back.
void PictureControls::pictureKeyDown(int parameter, int output, int keyCode) {
    if (!s_.guard() || keyCode != events::KeyEnter)
        return;
    const protocol::Setting& setting = pictureSetting(parameter, output);
    const QString text = pictureRow(s_.ui(), parameter)[output]->lineEdit()->text();
    if (!legacy::typedWithin(text, double(setting.min) - 1, double(setting.max) + 1)) {
        s_.exclamation(QStringLiteral("Please type %1 ~ %2").arg(setting.min).arg(setting.max));
        return;
    }
    s_.send(command::line(*setting.write, output, text));
}
