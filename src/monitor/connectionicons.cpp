#include "monitor/connectionicons.h"

#include "services/windowservices.h"

#include <QComboBox>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

namespace {

using State = DeviceLink::State;

// A ring, a ring with a dot, a disc with a tick, a disc with a cross.
QIcon stateIcon(State state) {
    constexpr int Size = 32;
    QPixmap pixmap(Size, Size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF disc(3, 3, Size - 6, Size - 6);
    QPen pen(Qt::black, 3);
    switch (state) {
    case State::NotConnected:
        p.setPen(QPen(Qt::gray, 4));
        p.drawEllipse(disc);
        break;
    case State::Connecting:
        p.setPen(QPen(QColor(0xc0, 0x80, 0x00), 4));
        p.drawEllipse(disc);
        p.setBrush(QColor(0xc0, 0x80, 0x00));
        p.drawEllipse(QRectF(11, 11, 10, 10));
        break;
    case State::Connected:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x1a, 0x7f, 0x37));
        p.drawEllipse(disc);
        p.setPen(QPen(Qt::white, 4));
        p.drawPolyline(QPolygonF({QPointF(9, 16), QPointF(14, 22), QPointF(23, 10)}));
        break;
    case State::Lost:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0xc0, 0x1c, 0x28));
        p.drawEllipse(disc);
        p.setPen(QPen(Qt::white, 4));
        p.drawLine(QPointF(11, 11), QPointF(21, 21));
        p.drawLine(QPointF(21, 11), QPointF(11, 21));
        break;
    }
    return QIcon(pixmap);
}

} // namespace

QString ConnectionIcons::stateText(int state) {
    switch (static_cast<State>(state)) {
    case State::Connecting:
        return QStringLiteral("connecting");
    case State::Connected:
        return QStringLiteral("connected");
    case State::Lost:
        return QStringLiteral("connection lost");
    case State::NotConnected:
        break;
    }
    return QStringLiteral("not connected");
}

ConnectionIcons::ConnectionIcons(WindowServices& session) : s_(session) {
    connect(&s_.link(), &DeviceLink::stateChanged, this, &ConnectionIcons::show);
    QAbstractItemModel* devices = s_.ui().cbo_ipaddr->model();
    connect(devices, &QAbstractItemModel::rowsInserted, this, &ConnectionIcons::showAll);
    connect(devices, &QAbstractItemModel::modelReset, this, &ConnectionIcons::showAll);
}

void ConnectionIcons::show(int index) {
    QComboBox* devices = s_.ui().cbo_ipaddr;
    if (index < 0 || index >= devices->count())
        return;
    static const QIcon icons[] = {stateIcon(State::NotConnected), stateIcon(State::Connecting),
                                  stateIcon(State::Connected), stateIcon(State::Lost)};
    const auto state = static_cast<int>(s_.link().state(index));
    devices->setItemIcon(index, icons[state]);
    devices->setItemData(index, QStringLiteral("%1: %2").arg(s_.address(index), stateText(state)),
                         Qt::ToolTipRole);
}

void ConnectionIcons::showAll() {
    for (int i = 0; i < s_.deviceCount(); ++i)
        show(i);
}
