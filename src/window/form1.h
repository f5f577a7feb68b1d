#pragma once

#include "services/controls.h"
#include "services/windowservices.h"

#include <QMainWindow>
#include <memory>

class ReplyDispatcher;
class StatusRead;
class WallGeometry;
class BezelCorrection;
class Favourites;
class BypassHotKey;
class PositionTrim;
class IoSetup;
class IoSetters;
class PictureRead;
class PictureControls;
class NetworkConfig;
class PowerModel;
class DeviceDiscovery;
class StatusRefresh;
class TrafficLog;
class TrafficMonitor;
class QAction;
class ConnectionIcons;
class WaitStatus;
class WallPlanner;
class SettingsBackup;
class ControllerConnect;

// The main window: builds the controls, its services and the features, and wires the
// reply handlers in their fixed order. Constructing it runs the start-up: lists filled,
// not connected, every page disabled until a search has found controllers and one is
// connected.
class Form1 : public QMainWindow {
    Q_OBJECT
public:
    explicit Form1(QWidget* parent = nullptr);
    ~Form1() override;

    // The controls, by the names the window gives them.
    Controls ui;

    WindowServices& services() { return *services_; }
    // Built when first shown or asked for.
    TrafficMonitor& monitor();

    // The wall planner's window and the settings backup, which the menus open.
    WallPlanner& planner();
    SettingsBackup& backup() { return *backup_; }

    void ShowPage(int page);
    void RefreshAll();
    void ReadBack(const QSet<protocol::Group>& changed);

    void StopWaiting();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void buildFeatures();
    void buildMonitor();
    void placeMonitor();
    void showAbout();
    void buildStopWaiting();
    void fillLists();
    void connectPageSelectors();
    void addReplyHandlers();
    void buildMenus();
    void buildShortcuts();

    std::unique_ptr<WindowServices> services_;
    std::unique_ptr<ReplyDispatcher> dispatcher_;

    std::unique_ptr<StatusRead> statusRead_;
    std::unique_ptr<NetworkConfig> network_;
    std::unique_ptr<BezelCorrection> bezel_;
    std::unique_ptr<IoSetup> ioSetup_;
    std::unique_ptr<StatusRefresh> refresh_;
    std::unique_ptr<WallGeometry> wall_;
    std::unique_ptr<Favourites> favourites_;
    std::unique_ptr<BypassHotKey> bypass_;
    std::unique_ptr<PositionTrim> trim_;
    std::unique_ptr<IoSetters> ioSetters_;
    std::unique_ptr<PictureRead> pictureRead_;
    std::unique_ptr<PictureControls> pictureControls_;
    std::unique_ptr<PowerModel> power_;
    std::unique_ptr<DeviceDiscovery> discovery_;
    std::unique_ptr<ControllerConnect> connect_;

    TrafficLog* traffic_ = nullptr;
    QAction* showMonitor_ = nullptr;
    TrafficMonitor* monitor_ = nullptr;
    bool monitorSized_ = false;
    ConnectionIcons* icons_ = nullptr;
    WaitStatus* waitStatus_ = nullptr;
    std::unique_ptr<SettingsBackup> backup_;
    WallPlanner* planner_ = nullptr; // a window of its own, owned as this one's child
};
