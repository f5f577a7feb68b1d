#pragma once

#include <QString>

class Session;

class BypassHotKey {
public:
    explicit BypassHotKey(Session& session);
    void HandleWallDefaultHotKeyReply(const QString& reply);

private:
    Session& s_;
};
