#pragma once

class WindowServices;
class StatusRead;
class NetworkConfig;
class BezelCorrection;
class IoSetup;

// Reads the selected controller back into the window: the status read, then network
// settings, bezel values and I/O settings.
class StatusRefresh {
public:
    StatusRefresh(WindowServices& session, StatusRead& status, NetworkConfig& network,
                  BezelCorrection& bezel, IoSetup& io);

    void RefreshAll();
    void ReadBypassBezel();

private:
    WindowServices& s_;
    StatusRead& status_;
    NetworkConfig& network_;
    BezelCorrection& bezel_;
    IoSetup& io_;
};
