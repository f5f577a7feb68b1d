#include "system/discovery.h"

#include "client/hostlist.h"
#include "client/searchrun.h"
#include "protocol/legacytext.h"
#include "services/events.h"
#include "services/windowservices.h"

#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QPushButton>

using search::IpFile;
using search::MacFile;

namespace {

const QString WayOut = QStringLiteral("\"Stop waiting\" (Esc) cancels the search");

} // namespace

DeviceDiscovery::DeviceDiscovery(WindowServices& session) : s_(session) {
    QObject::connect(s_.ui().btn_sys_search, &QPushButton::clicked, s_.ui().btn_sys_search,
                     [this] { btn_sys_search_Click(); });
}

void DeviceDiscovery::btn_sys_search_Click() {
    if (running_)
        return; // one search at a time
    search::Run run;
    if (!run.found()) {
        s_.exclamation(run.message());
        return;
    }
    s_.SetOffline();
    s_.ui().cbo_ipaddr->clear();
    const search::HostList hosts = search::hostListInForce();
    // What the program says it probes, in the status bar.
    run.setLineHandler([this](const QString& line) {
        emit s_.notice().working(QStringLiteral("Search MAC: ") + line, WayOut);
    });
    if (!run.start()) {
        s_.exclamation(run.message());
        return;
    }
    // The window stays live while the program runs, and waits for it without a limit;
    // "Stop waiting" cancels it: the program is stopped and nothing is read.
    running_ = true;
    const bool waited = waitFor(run, hosts);
    running_ = false;
    if (!waited) {
        s_.messageAfterStop(QMessageBox::Information,
                            QStringLiteral("The search was cancelled; nothing was read."));
        return;
    }
    if (!run.endedWell()) {
        s_.exclamation(run.message());
        return;
    }
    const QDir results(run.folder());

    const std::optional<QStringList> macLines = search::readLines(results.filePath(MacFile));
    const std::optional<QStringList> ipLines = search::readLines(results.filePath(IpFile));
    if (!macLines || !ipLines) {
        s_.exclamation(QStringLiteral("%1 left no readable %2 !")
                           .arg(search::Program, macLines ? IpFile : MacFile));
        return;
    }
    QStringList macs = search::macs(*macLines);
    if (macs.size() > MaxDevices) {
        s_.exclamation(QStringLiteral("%1 lists %2 devices; only the first %3 are shown !")
                           .arg(MacFile)
                           .arg(macs.size())
                           .arg(MaxDevices));
        macs = macs.mid(0, MaxDevices);
    }
    s_.ui().cbo_ipaddr->addItems(macs);
    s_.ui().cbo_ipaddr->setCurrentIndex(-1);
    const int count = static_cast<int>(macs.size());
    ip_text = ipLines->isEmpty() ? QString() : ipLines->last();
    s_.setAddresses({});
    if (count == 0) {
        s_.exclamation(QStringLiteral("Not Find MAC !"));
        emit s_.notice().hint(
            hosts.entries.isEmpty()
                ? QStringLiteral("This computer is on no network to search. File > Networks to "
                                 "search... names the hosts to probe.")
                : QStringLiteral("No controller answered on %1. File > Networks to search... "
                                 "names the hosts to probe.")
                      .arg(search::sourceText(hosts)));
        return;
    }
    QStringList addresses;
    for (int i = 0; i < count; ++i)
        addresses << addressFromLine(ip_text, i);
    s_.setAddresses(addresses);
    FillModelList();
    s_.information(QStringLiteral("Search MAC completed !"));
    if (s_.cancelled())
        return;
    s_.setSearchDone();
    events::setListIndex(s_.ui().cbo_ipaddr, 0);
    s_.ui().con_interface->setEnabled(true);
}

bool DeviceDiscovery::waitFor(search::Run& run, const search::HostList& hosts) {
    emit s_.notice().working(
        QStringLiteral("Search MAC: probing %1").arg(search::sourceText(hosts)), WayOut);
    const bool waited =
        run.wait([this](const std::function<bool()>& ended) { return s_.pump().until(ended); });
    emit s_.notice().ended();
    return waited;
}

void DeviceDiscovery::FillModelList() {
    s_.ui().cbo_model->clear();
    for (int i = 0; i < s_.deviceCount(); ++i)
        s_.ui().cbo_model->addItem(legacy::signedText(i));
    s_.ui().cbo_model->setCurrentIndex(-1);
}
