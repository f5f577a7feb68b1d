#include "output/iosetup.h"

#include "window/session.h"

IoSetup::IoSetup(Session& session) : s_(session) {}

void IoSetup::ReadIoSetup()
{
}

void IoSetup::HandleIoSetupReply(const QString& reply)
{
    Q_UNUSED(reply);
}

void IoSetup::HandleOsdResetReply(const QString& reply)
{
    Q_UNUSED(reply);
}
