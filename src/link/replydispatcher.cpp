#include "link/replydispatcher.h"

#include "link/devicelink.h"

ReplyDispatcher::ReplyDispatcher(DeviceLink& link, std::function<int()> selectedIndex,
                                 QObject* parent)
    : QObject(parent), link_(link), selectedIndex_(std::move(selectedIndex)) {
    connect(&link_, &DeviceLink::dataArrived, this, &ReplyDispatcher::onDataArrived);
}

void ReplyDispatcher::add(Handler handler) {
    handlers_.push_back(std::move(handler));
}

void ReplyDispatcher::onDataArrived() {
    const QString chunk = link_.readAll(selectedIndex_());
    emit chunkReceived(chunk);
    for (const Handler& handler : handlers_)
        handler(chunk);
}
