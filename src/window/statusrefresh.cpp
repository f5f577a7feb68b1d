#include "window/statusrefresh.h"

#include "output/iosetup.h"
#include "services/windowservices.h"
#include "status/statusread.h"
#include "system/networkconfig.h"
#include "wall/bezelcorrection.h"

#include <QProgressBar>
#include <functional>

StatusRefresh::StatusRefresh(WindowServices& session, StatusRead& status, NetworkConfig& network,
                             BezelCorrection& bezel, IoSetup& io)
    : s_(session), status_(status), network_(network), bezel_(bezel), io_(io) {}

// The panels stay locked until the operator has closed the completion message.
void StatusRefresh::RefreshAll() {
    if (!s_.guard())
        return;
    s_.LockPanels();
    QProgressBar* progress = s_.ui().ProgressBar1;
    progress->setVisible(true);
    progress->setValue(0);
    // Each read runs its own link test and waits for its own replies.
    const std::pair<std::function<void()>, int> reads[] = {
        {[this] { status_.ReadStatus(); }, 30},
        {[this] { network_.btn_ip_get_Click(); }, 60},
        {[this] { bezel_.btn_panomat_refresh_Click(); }, 85},
        {[this] { io_.ReadIoSetup(); }, 100}};
    for (const auto& [read, percent] : reads) {
        read();
        if (s_.cancelled())
            return;
        progress->setValue(percent);
    }
    s_.plain(QStringLiteral("Refresh completed !"));
    progress->setVisible(false);
    s_.UnlockPanels();
}

void StatusRefresh::ReadBypassBezel() {
    if (!s_.guard())
        return;
    QProgressBar* progress = s_.ui().ProgressBar1;
    progress->setValue(20);
    if (!status_.readBypassThenBezelMode([progress] { progress->setValue(40); }))
        return;
    progress->setValue(60);
    bezel_.btn_panomat_refresh_Click();
}
