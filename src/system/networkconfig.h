#pragma once

#include <QString>

class Session;

class NetworkConfig {
public:
    explicit NetworkConfig(Session& session);
    void btn_ip_get_Click();
    void HandleAddressReply(const QString& reply);
    void HandleNetworkAck(const QString& reply);

private:
    Session& s_;
};
