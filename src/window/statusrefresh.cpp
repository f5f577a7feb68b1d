#include "window/statusrefresh.h"

#include "window/session.h"

StatusRefresh::StatusRefresh(Session& session, NetworkConfig& network, BezelCorrection& bezel,
                             IoSetup& io)
    : s_(session), network_(network), bezel_(bezel), io_(io)
{
}

void StatusRefresh::RefreshAll() {}

void StatusRefresh::ReadStatus() {}

void StatusRefresh::ReadBypassBezel() {}

void StatusRefresh::HandleStatusReply(const QString& reply) { Q_UNUSED(reply); }

void StatusRefresh::HandlePowerConfirmReply(const QString& reply) { Q_UNUSED(reply); }
