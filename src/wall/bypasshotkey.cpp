#include "wall/bypasshotkey.h"

#include "window/session.h"

BypassHotKey::BypassHotKey(Session& session) : s_(session) {}

void BypassHotKey::HandleWallDefaultHotKeyReply(const QString& reply)
{
    Q_UNUSED(reply);
}
