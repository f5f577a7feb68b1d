#include "wall/wallgeometry.h"

#include "window/session.h"

WallGeometry::WallGeometry(Session& session) : s_(session) {}

void WallGeometry::OnWallReply(const QString& reply)
{
    Q_UNUSED(reply);
}
