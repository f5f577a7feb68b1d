#include "system/networkconfig.h"

#include "window/session.h"

NetworkConfig::NetworkConfig(Session& session) : s_(session) {}

void NetworkConfig::btn_ip_get_Click()
{
}

void NetworkConfig::HandleAddressReply(const QString& reply)
{
    Q_UNUSED(reply);
}

void NetworkConfig::HandleNetworkAck(const QString& reply)
{
    Q_UNUSED(reply);
}
