#pragma once

#include <QString>

class Session;
class NetworkConfig;
class BezelCorrection;
class IoSetup;

// Reads the selected controller back into the window: power, model, bypass, bezel mode
// and firmware, then network settings, bezel values and I/O settings.
class StatusRefresh {
public:
    StatusRefresh(Session& session, NetworkConfig& network, BezelCorrection& bezel, IoSetup& io);

    void RefreshAll();
    void ReadStatus();
    void ReadBypassBezel();
    void HandleStatusReply(const QString& reply);
    void HandlePowerConfirmReply(const QString& reply);

private:
    Session& s_;
    NetworkConfig& network_;
    BezelCorrection& bezel_;
    IoSetup& io_;
};
