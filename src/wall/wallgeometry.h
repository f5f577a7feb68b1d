#pragma once

#include <QString>

class Session;

class WallGeometry {
public:
    explicit WallGeometry(Session& session);
    void OnWallReply(const QString& reply);

private:
    Session& s_;
};
