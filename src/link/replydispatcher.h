#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class DeviceLink;

// Hands each received chunk, unsplit, to every handler in the order they were added.
// The chunk is always read from the selected controller's socket, whichever socket
// raised the event: after a broadcast the other controllers' replies stay in their
// buffers. No lines are assembled, so a chunk holding two replies is seen as the first.
class ReplyDispatcher : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const QString& reply)>;

    ReplyDispatcher(DeviceLink& link, std::function<int()> selectedIndex,
                    QObject* parent = nullptr);

    void add(Handler handler);

signals:
    // The chunk just read, before any handler sees it.
    void chunkReceived(const QString& chunk);

private:
    void onDataArrived();

    DeviceLink& link_;
    std::function<int()> selectedIndex_;
    std::vector<Handler> handlers_;
};
