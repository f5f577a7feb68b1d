#include "picture/pictureread.h"

#include "picture/picturecontrols.h"
#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

namespace {

constexpr int RefreshButton = 5;
constexpr int PictureResetButton = 4;

const protocol::Command& resetOf(protocol::Action action) {
    return protocol::command(action);
}

} // namespace

PictureRead::PictureRead(WindowServices& session) : s_(session) {
    for (int i = 0; i < 6; ++i)
        QObject::connect(s_.ui().btn_img_rst[i], &QPushButton::clicked, s_.ui().btn_img_rst[i],
                         [this, i] { btn_img_rst_Click(i); });
}

// Sixteen reads, brightness of outputs 1-4 first, then contrast, saturation, hue. The
// replies do not name the output, so each read waits for its reply before the next.
void PictureRead::ReadPicture() {
    if (!s_.guard())
        return;
    const BusyButtons busy{s_.ui().btn_img_rst[RefreshButton]};
    s_.request(read_, 16,
               [](int k) { return protocol::readLine(pictureSetting(k / 4, k % 4 + 1)); });
}

// A picture value reply carries its key in characters 8-11 and the value in 12-14;
// the step says which output it is for. A value outside the list ends the handler
// before the step advances, and the read keeps waiting.
void PictureRead::HandlePictureReply(const QString& reply) {
    const int step = read_.value();
    if (step < 1 || step > 16)
        return;
    const int parameter = (step - 1) / 4;
    if (reply::longKey(reply) != reply::secondKeyOf(*pictureSetting(parameter, 1).read))
        return;
    const long value = legacy::roundHalfEven(legacy::val(reply::longValue(reply)));
    if (!events::setListIndex(pictureRow(s_.ui(), parameter)[(step - 1) % 4 + 1],
                              static_cast<int>(value)))
        return;
    read_.advance();
}

// Either acknowledgement releases either kind of reset.
void PictureRead::HandlePictureResetReply(const QString& reply) {
    const QString key = reply::key(reply);
    if ((key == reply::keyOf(resetOf(protocol::Action::ResetPicture)) ||
         key == reply::keyOf(resetOf(protocol::Action::ResetPictures))) &&
        reset_.at(1))
        reset_.advance();
}

void PictureRead::btn_img_rst_Click(int index) {
    if (!s_.guard())
        return;
    if (index == RefreshButton) {
        ReadPicture();
        return;
    }
    if (index >= 0 && index < 4) {
        reset(s_.ui().Chk_img[index]->isChecked(),
              command::line(resetOf(protocol::Action::ResetPicture), index + 1), index, 1);
    } else if (index == PictureResetButton) {
        // The answer chooses only who gets the reset; the page shows the defaults either way.
        const bool all = s_.askYes(QStringLiteral("Reset All IP ?"));
        reset(all, command::line(resetOf(protocol::Action::ResetPictures)), 0, 4);
    }
}

void PictureRead::showDefault(int parameter) {
    for (int output = 1; output <= 4; ++output)
        events::setListIndex(pictureRow(s_.ui(), parameter)[output],
                             int(pictureSetting(parameter, output).factory));
}

// Only the selected controller's acknowledgement can end the wait.
void PictureRead::reset(bool all, const QByteArray& line, int firstRow, int rows) {
    s_.request(reset_, {line}, {.all = all, .armed = [=, this] {
                                    for (int parameter = firstRow; parameter < firstRow + rows;
                                         ++parameter)
                                        showDefault(parameter);
                                }});
}
