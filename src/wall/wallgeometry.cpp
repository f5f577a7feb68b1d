#include "wall/wallgeometry.h"

#include "protocol/command.h"
#include "protocol/legacytext.h"
#include "services/events.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

namespace {

// Rows, columns and the output placed; then the output and its tile.
const protocol::Command& sizeCommand() {
    return *protocol::setting("wall.rows").write;
}
const protocol::Command& tileCommand() {
    return *protocol::setting("wall.position.a").write;
}

} // namespace

WallGeometry::WallGeometry(WindowServices& session) : s_(session) {
    Controls& ui = s_.ui();
    events::onClick(ui.cbo_tv_row, [this] { cbo_tv_row_Click(); });
    events::onClick(ui.cbo_tv_col, [this] { cbo_tv_col_Click(); });
    events::onClick(ui.cbo_tv_ch, [this] { cbo_tv_ch_Click(); });
    events::onClick(ui.cbo_tv_posi, [this] { cbo_tv_posi_Click(); });
    events::onChange(ui.cbo_tv_row,
                     [this] { typedSize(s_.ui().cbo_tv_row, wall_rows, "wall.rows"); });
    events::onChange(ui.cbo_tv_col,
                     [this] { typedSize(s_.ui().cbo_tv_col, wall_cols, "wall.cols"); });
    events::onChange(ui.cbo_tv_posi, [this] { cbo_tv_posi_Change(); });
    QObject::connect(ui.btn_panomat_send, &QPushButton::clicked,
                     [this] { btn_panomat_send_Click(); });
}

void WallGeometry::cbo_tv_row_Click() {
    wall_rows = static_cast<quint8>(s_.ui().cbo_tv_row->currentIndex() + 1);
    RebuildPositionList();
}

void WallGeometry::cbo_tv_col_Click() {
    wall_cols = static_cast<quint8>(s_.ui().cbo_tv_col->currentIndex() + 1);
    RebuildPositionList();
}

void WallGeometry::cbo_tv_ch_Click() {
    wall_channel = static_cast<quint8>(s_.ui().cbo_tv_ch->currentIndex() + 1);
}

void WallGeometry::cbo_tv_posi_Click() {
    wall_position = static_cast<quint8>(s_.ui().cbo_tv_posi->currentIndex() + 1);
}

// Rows and columns are checked on every keystroke, so a half-typed number may already
// be refused. A fraction is stored rounded, halves to even.
void WallGeometry::typedSize(QComboBox* box, quint8& variable, const char* setting) {
    const protocol::Setting& size = protocol::setting(setting);
    const QString text = box->currentText();
    if (const auto byte = legacy::toByte(text);
        byte && legacy::typedWithin(text, double(size.min) - 1, double(size.max) + 1)) {
        variable = *byte;
        RebuildPositionList();
        return;
    }
    s_.exclamation(QStringLiteral("Please type %1 ~ %2!").arg(size.min).arg(size.max));
}

void WallGeometry::cbo_tv_posi_Change() {
    const int max = tileCount();
    const QString text = s_.ui().cbo_tv_posi->currentText();
    if (const auto byte = legacy::toByte(text); byte && legacy::typedWithin(text, 0, max + 1)) {
        wall_position = *byte;
        return;
    }
    s_.exclamation(QStringLiteral("Please type 1 ~ %1!").arg(max));
}

// The product of two bytes, kept to 8 bits as the controller's tile numbers are.
quint8 WallGeometry::tileCount() const {
    return static_cast<quint8>(wall_rows * wall_cols);
}

// The chosen tile is deliberately left alone: after the wall shrinks, a tile beyond
// the new size is still the one sent.
void WallGeometry::RebuildPositionList() {
    QComboBox* box = s_.ui().cbo_tv_posi;
    const QSignalBlocker blocker(box);
    box->clear();
    QStringList items;
    for (int i = 1; i <= tileCount(); ++i)
        items << legacy::signedText(i);
    box->addItems(items);
    // Clearing a list empties its edit text too; filling it selects nothing.
    box->setCurrentIndex(-1);
    box->setEditText(QString());
}

void WallGeometry::btn_panomat_send_Click() {
    if (!s_.guard())
        return;
    const auto within = [](int v, const char* setting) {
        return protocol::rangeError(protocol::setting(setting), v).isEmpty();
    };
    if (wall_channel < 1 || wall_channel > protocol::OutputCount ||
        !within(wall_rows, "wall.rows") || !within(wall_cols, "wall.cols")) {
        s_.exclamation(QStringLiteral("Please choose the correct values !"));
        return;
    }
    const QByteArray size = command::line(sizeCommand(), wall_rows, wall_cols, wall_channel);
    const QByteArray tile = command::line(tileCommand(), wall_channel, wall_position);
    // With ALL IP every controller gets each line, but only the selected one's
    // acknowledgement is read.
    const bool all = s_.ui().chk_tv_allip[0]->isChecked();
    s_.request(send_, {size, tile}, {.all = all});
}

void WallGeometry::OnWallReply(const QString& reply) {
    const QString key = reply::key(reply);
    if ((key == reply::keyOf(sizeCommand()) && send_.at(1)) ||
        (key == reply::keyOf(tileCommand()) && send_.at(2)))
        send_.advance();
}
