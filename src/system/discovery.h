#pragma once

#include <QString>
#include <QStringList>

class WindowServices;
namespace search {
class Run;
struct HostList;
} // namespace search

// "Search MAC": runs the search program beside the tool and builds the device list
// from the two files it leaves there. An installed tool finds the program in its
// private folder and has the files written to the user's data folder.
class DeviceDiscovery {
public:
    static constexpr int MaxDevices = 255;

    explicit DeviceDiscovery(WindowServices& session);

    void btn_sys_search_Click();

private:
    bool waitFor(search::Run& run, const search::HostList& hosts);
    void FillModelList();

    WindowServices& s_;
    bool running_ = false;
    QString ip_text; // the last line of IP.txt
};
