#pragma once

#include "services/windowservices.h"

#include <QString>
#include <QtGlobal>

// The selected controller's own addressing: read it, write it, make it re-link.
// Writing or re-linking restarts the controller's network, so the link ends.
class NetworkConfig {
public:
    explicit NetworkConfig(WindowServices& session);

    void btn_ip_get_Click();
    void btn_ip_set_Click();
    void btn_ip_relink_Click();
    void cbo_ip_type_Click();
    void HandleAddressReply(const QString& reply);
    void HandleNetworkAck(const QString& reply);

private:
    void writeStatic();
    void writeDhcp();

    WindowServices& s_;
    WaitStep read_{"Network read"};
    WaitStep write_{"Set IP"};
    WaitStep mode_{"Set DHCP / Re-Link"};
    quint8 ip_static = 0;
};
