#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <functional>

class DeviceLink;

// The thirteen reply handlers, in the order every received chunk is offered to them.
enum class ReplySlot {
    Status,
    IoSetup,
    NetworkRead,
    NetworkWrite,
    Wall,
    PictureRead,
    PictureReset,
    OsdReset,
    WallDefaultHotKey,
    PowerConfirm,
    BezelRead,
    BezelWrite,
    Position,
    Count
};

// Hands each received chunk, unsplit, to every handler in slot order. The chunk is
// always read from the selected controller's socket, whichever socket raised the
// event: after a broadcast the other controllers' replies stay in their buffers.
// No lines are assembled, so a chunk holding two replies is seen as the first one.
class ReplyDispatcher : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const QString& reply)>;

    ReplyDispatcher(DeviceLink& link, std::function<int()> selectedIndex,
                    QObject* parent = nullptr);

    void plug(ReplySlot slot, Handler handler);

signals:
    // The chunk just read, before any handler sees it.
    void chunkReceived(const QString& chunk);

private:
    void onDataArrived();

    DeviceLink& link_;
    std::function<int()> selectedIndex_;
    std::array<Handler, static_cast<size_t>(ReplySlot::Count)> handlers_;
};
