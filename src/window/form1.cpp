#include "window/form1.h"

#include "protocol/legacytext.h"
#include "link/replydispatcher.h"
#include "output/iosetters.h"
#include "output/iosetup.h"
#include "picture/picturecontrols.h"
#include "picture/pictureread.h"
#include "system/discovery.h"
#include "system/networkconfig.h"
#include "system/powermodel.h"
#include "wall/bezelcorrection.h"
#include "wall/bypasshotkey.h"
#include "wall/favourites.h"
#include "wall/positiontrim.h"
#include "wall/wallgeometry.h"
#include "window/events.h"
#include "window/paintpacer.h"
#include "window/statusrefresh.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStatusBar>

Form1::Form1(QWidget* parent) : QMainWindow(parent), Session(this) {
    // On a screen smaller than the window (a laptop at double scale) the content
    // scrolls, so that every control can still be reached.
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget;
    buildControls(content, ui);
    area->setWidget(content);
    setCentralWidget(area);
    new PaintPacer(this);

    dispatcher_ = std::make_unique<ReplyDispatcher>(link, [this] { return selected(); });
    // The box shows the last chunk received, exactly as it came.
    connect(dispatcher_.get(), &ReplyDispatcher::chunkReceived, this,
            [this](const QString& chunk) { ui.TextInfo->setText(chunk); });

    network_ = std::make_unique<NetworkConfig>(*this);
    bezel_ = std::make_unique<BezelCorrection>(*this);
    ioSetup_ = std::make_unique<IoSetup>(*this);
    status_ = std::make_unique<StatusRefresh>(*this, *network_, *bezel_, *ioSetup_);
    wall_ = std::make_unique<WallGeometry>(*this);
    favourites_ = std::make_unique<Favourites>(*this);
    bypass_ = std::make_unique<BypassHotKey>(*this);
    trim_ = std::make_unique<PositionTrim>(*this);
    ioSetters_ = std::make_unique<IoSetters>(*this);
    pictureRead_ = std::make_unique<PictureRead>(*this);
    pictureControls_ = std::make_unique<PictureControls>(*this);
    power_ = std::make_unique<PowerModel>(*this);
    discovery_ = std::make_unique<DeviceDiscovery>(*this);
    plugReplyHandlers();

    connectPageSelectors();
    connect(ui.btn_con, &QPushButton::clicked, this, &Form1::btn_con_Click);
    connect(ui.btn_discon, &QPushButton::clicked, this, &Form1::btn_discon_Click);
    events::onClick(ui.cbo_ipaddr, [this] { cbo_ipaddr_Click(); });
    connect(ui.btn_sys_refresh, &QPushButton::clicked, this, &Form1::RefreshAll);

    buildStopWaiting();
    Form_Load();
    ShowPage(0);
    const QSize whole = content->sizeHint() + QSize(0, statusBar()->sizeHint().height());
    resize(whole.boundedTo(screen()->availableGeometry().size()));
}

// The operator's way out of a wait for a reply that never comes (reply waits have no
// time-out): a button in the status bar, usable while the panels are locked, and Escape.
void Form1::buildStopWaiting() {
    auto* stop = new QPushButton(QStringLiteral("Stop waiting"));
    stop->setObjectName(QStringLiteral("btn_stop_waiting"));
    stop->setToolTip(QStringLiteral("Stop waiting for the controller and go offline (Esc)"));
    stop->setEnabled(false);
    statusBar()->addPermanentWidget(stop);
    connect(stop, &QPushButton::clicked, this, &Form1::StopWaiting);
    connect(&pump, &WaitPump::waitingChanged, stop, &QPushButton::setEnabled);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &Form1::StopWaiting);
}

// Every running wait ends as on closing: the stopped handlers send and show nothing
// more. Their half-done sequences are forgotten, and the window goes offline.
void Form1::StopWaiting() {
    if (!pump.waiting())
        return;
    pump.stop();
    w = WaitBytes{};
    ui.ProgressBar1->setVisible(false);
    UnlockPanels();
    SetOffline();
}

Form1::~Form1() = default;

void Form1::plugReplyHandlers() {
    auto plug = [this](ReplySlot slot, auto* feature,
                       void (std::remove_pointer_t<decltype(feature)>::*handler)(const QString&)) {
        dispatcher_->plug(slot,
                          [feature, handler](const QString& reply) { (feature->*handler)(reply); });
    };
    plug(ReplySlot::Status, status_.get(), &StatusRefresh::HandleStatusReply);
    plug(ReplySlot::IoSetup, ioSetup_.get(), &IoSetup::HandleIoSetupReply);
    plug(ReplySlot::NetworkRead, network_.get(), &NetworkConfig::HandleAddressReply);
    plug(ReplySlot::NetworkWrite, network_.get(), &NetworkConfig::HandleNetworkAck);
    plug(ReplySlot::Wall, wall_.get(), &WallGeometry::OnWallReply);
    plug(ReplySlot::PictureRead, pictureRead_.get(), &PictureRead::HandlePictureReply);
    plug(ReplySlot::PictureReset, pictureRead_.get(), &PictureRead::HandlePictureResetReply);
    plug(ReplySlot::OsdReset, ioSetup_.get(), &IoSetup::HandleOsdResetReply);
    plug(ReplySlot::WallDefaultHotKey, bypass_.get(), &BypassHotKey::HandleWallDefaultHotKeyReply);
    plug(ReplySlot::PowerConfirm, status_.get(), &StatusRefresh::HandlePowerConfirmReply);
    plug(ReplySlot::BezelRead, bezel_.get(), &BezelCorrection::HandleBezelValueReply);
    plug(ReplySlot::BezelWrite, bezel_.get(), &BezelCorrection::HandleBezelAckReply);
    plug(ReplySlot::Position, trim_.get(), &PositionTrim::HandleTrimReply);
}

void Form1::connectPageSelectors() {
    const std::pair<QRadioButton*, int> selectors[] = {{ui.opt_tv1, 0}, {ui.opt_tv2, 1},
                                                       {ui.opt_io, 2},  {ui.opt_image, 3},
                                                       {ui.opt_tv3, 4}, {ui.opt_tv4, 5}};
    for (auto [option, page] : selectors)
        connect(option, &QRadioButton::clicked, this, [this, page = page] { ShowPage(page); });
}

void Form1::Form_Load() {
    is_connected = false;
    search_done = false;
    at_startup = true;

    ui.power_ctl[0]->setVisible(true);
    ui.power_ctl[1]->setVisible(false);
    ui.power_ctl[2]->setVisible(false);
    for (QWidget* control :
         {static_cast<QWidget*>(ui.power_ctl[0]), static_cast<QWidget*>(ui.btn_sys_fac_rst),
          static_cast<QWidget*>(ui.btn_sys_refresh), static_cast<QWidget*>(ui.Check1[0]),
          static_cast<QWidget*>(ui.Check1[1])})
        control->setEnabled(false);
    ui.lbl_con[2]->setVisible(false);

    ui.net_config->setEnabled(false);
    ui.con_interface->setEnabled(false);
    setPageFramesEnabled(false);

    fillLists();
}

namespace {

// Fills a list from code without raising any of its events and leaves it with no
// selection; an editable list gets its hint text back.
void fill(QComboBox* box, const QStringList& items) {
    const QSignalBlocker blocker(box);
    const QString hint = box->isEditable() ? box->currentText() : QString();
    box->addItems(items);
    box->setCurrentIndex(-1);
    if (box->isEditable())
        box->setEditText(hint);
}

QStringList numbers(int from, int to, QString (*text)(long)) {
    QStringList items;
    for (int i = from; i <= to; ++i)
        items << text(i);
    return items;
}

} // namespace

void Form1::fillLists() {
    for (QScrollBar* bar : ui.HS_A) {
        bar->setMaximum(510);
        bar->setMinimum(0);
    }
    const QStringList bezelValues = numbers(0, 255, legacy::signedText);
    for (int n = 1; n <= 4; ++n)
        fill(ui.cbo_val_H[n], bezelValues);
    for (int n = 1; n <= 4; ++n)
        fill(ui.cbo_val_V[n], bezelValues);
    fill(ui.cbo_tv_row, numbers(1, 15, legacy::signedText));
    fill(ui.cbo_tv_col, numbers(1, 15, legacy::signedText));
    fill(ui.cbo_tv_ch, {QStringLiteral("Out A"), QStringLiteral("Out B"), QStringLiteral("Out C"),
                        QStringLiteral("Out D")});
    fill(ui.cbo_ip_type, {QStringLiteral("DHCP"), QStringLiteral("STATIC")});
    fill(ui.cbo_info_play, {QStringLiteral("OFF"), QStringLiteral("ON")});
    fill(ui.cbo_reso,
         {QStringLiteral("720p50"), QStringLiteral("720p60"), QStringLiteral("1080p24"),
          QStringLiteral("1080p25"), QStringLiteral("1080p30"), QStringLiteral("1080p50"),
          QStringLiteral("1080p60"), QStringLiteral("1024x768 60"), QStringLiteral("1280x800 60"),
          QStringLiteral("1280x1024 60"), QStringLiteral("1366x768 60"),
          QStringLiteral("1440x900 60"), QStringLiteral("1600x900 60"),
          QStringLiteral("1600x1200 60"), QStringLiteral("1680x1050 60"),
          QStringLiteral("1920x1200 60"), QStringLiteral("Native")});
    const QStringList percent = numbers(0, 100, legacy::plainText);
    for (auto* lists : {&ui.cbo_image_bri, &ui.cbo_image_con, &ui.cbo_image_sat, &ui.cbo_image_hue})
        for (int n = 1; n <= 4; ++n)
            fill((*lists)[n], percent);
    fill(ui.cbo_osd[0], numbers(0, 20, legacy::plainText));
    fill(ui.cbo_osd[1], numbers(0, 20, legacy::plainText));
    fill(ui.cbo_osd_gain, numbers(0, 10, legacy::plainText));
    SetOffline();
    fill(ui.cbo_osd_time, numbers(2, 50, legacy::plainText));
}

// All pages share one place in the layout, at the pages' corner.
void Form1::ShowPage(int page) {
    for (int i = 0; i < 6; ++i)
        ui.frame_control[i]->setVisible(i == page);
}

void Form1::setPageFramesEnabled(bool enabled) {
    for (QGroupBox* page : ui.frame_control)
        page->setEnabled(enabled);
}

void Form1::LockPanels() {
    ui.net_config->setEnabled(false);
    setPageFramesEnabled(false);
    ui.con_interface->setEnabled(false);
    ui.sys_setting->setEnabled(false);
}

void Form1::UnlockPanels() {
    ui.net_config->setEnabled(true);
    setPageFramesEnabled(true);
    ui.con_interface->setEnabled(true);
    ui.sys_setting->setEnabled(true);
}

void Form1::SetOffline() {
    if (at_startup) {
        at_startup = false;
    } else {
        for (int i = 0; i < deviceCount(); ++i)
            link.close(i);
    }
    setBackColour(ui.btn_discon, Qt::red);
    clearBackColour(ui.btn_con);
    ui.lbl_con[2]->setVisible(false);
    ui.net_config->setEnabled(false);
    setPageFramesEnabled(false);
    ui.power_ctl[0]->setVisible(true);
    ui.power_ctl[1]->setVisible(false);
    ui.power_ctl[2]->setVisible(false);
    setWindowTitle(Title);
    ui.power_ctl[0]->setEnabled(false);
    ui.btn_sys_fac_rst->setEnabled(false);
    ui.btn_sys_refresh->setEnabled(false);
    ui.Check1[0]->setEnabled(false);
    ui.Check1[1]->setEnabled(false);
    is_connected = false;
    search_done = false;
}

void Form1::setConnectedState() {
    setBackColour(ui.btn_con, Qt::green);
    clearBackColour(ui.btn_discon);
    ui.lbl_con[2]->setVisible(false);
    ui.net_config->setEnabled(true);
    setPageFramesEnabled(true);
    ui.power_ctl[0]->setEnabled(true);
    ui.btn_sys_fac_rst->setEnabled(true);
    ui.btn_sys_refresh->setEnabled(true);
    ui.Check1[0]->setEnabled(true);
    ui.Check1[1]->setEnabled(true);
}

// The wait of Connect and of a new selection: the selected socket must connect within
// the pass limit, else "Connected error!".
bool Form1::waitForSelected() {
    const int index = selected();
    if (pump.untilConnected([&] { return link.isConnected(index); }))
        return true;
    exclamation(QStringLiteral("Connected error!"));
    return false;
}

void Form1::btn_con_Click() {
    for (int i = 0; i < deviceCount(); ++i)
        link.connectTo(i, ip_list.value(i));
    ui.lbl_con[2]->setVisible(true);
    if (selected() < 0) {
        exclamation(QStringLiteral("Please select a MAC to connect !"));
        ui.lbl_con[2]->setVisible(false);
        return;
    }
    const bool connected = waitForSelected();
    if (pump.cancelled())
        return;
    if (!connected) {
        SetOffline();
        return;
    }
    setConnectedState();
    is_connected = true;
    search_done = false;
    link.write(selected(), QByteArrayLiteral("SOSDI\r\n"));
    RefreshAll();
}

void Form1::cbo_ipaddr_Click() {
    const int index = selected();
    link.connectTo(index, ip_list.value(index));
    const bool connected = waitForSelected();
    if (pump.cancelled())
        return;
    if (connected) {
        link.write(index, QByteArrayLiteral("SOSDI\r\n"));
        RefreshAll();
    } else if (!search_done) {
        SetOffline();
    }
}

void Form1::btn_discon_Click() {
    SetOffline();
}

void Form1::RefreshAll() {
    status_->RefreshAll();
}

void Form1::ReadBypassBezel() {
    status_->ReadBypassBezel();
}

void Form1::closeEvent(QCloseEvent* event) {
    // Every running wait ends; nothing more is sent or shown.
    pump.cancel();
    QMainWindow::closeEvent(event);
}
