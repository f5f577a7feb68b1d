#include "wall/positiontrim.h"

#include "window/session.h"

PositionTrim::PositionTrim(Session& session) : s_(session) {}

void PositionTrim::ReadPositionTrim()
{
}

void PositionTrim::HandleTrimReply(const QString& reply)
{
    Q_UNUSED(reply);
}
