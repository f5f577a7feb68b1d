#include "window/form1.h"

#include "link/replydispatcher.h"
#include "link/trafficlog.h"
#include "monitor/connectionicons.h"
#include "monitor/trafficmonitor.h"
#include "output/iosetters.h"
#include "output/iosetup.h"
#include "picture/picturecontrols.h"
#include "picture/pictureread.h"
#include "protocol/legacytext.h"
#include "services/events.h"
#include "services/waitstatus.h"
#include "status/statusread.h"
#include "system/discovery.h"
#include "system/networkconfig.h"
#include "system/powermodel.h"
#include "system/searchnetworks.h"
#include "system/settingsbackup.h"
#include "wall/bezelcorrection.h"
#include "wall/bypasshotkey.h"
#include "wall/favourites.h"
#include "wall/positiontrim.h"
#include "wall/wallgeometry.h"
#include "wall/wallplanner.h"
#include "window/connect.h"
#include "window/layout.h"
#include "window/paintpacer.h"
#include "window/statusrefresh.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStatusBar>

Form1::Form1(QWidget* parent) : QMainWindow(parent) {
    legibleDisabledText();
    // On a screen smaller than the window (a laptop at double scale) the content
    // scrolls, so that every control can still be reached.
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus); // a Tab stop that shows nothing
    auto* content = new QWidget;
    buildControls(content, ui);
    area->setWidget(content);
    setCentralWidget(area);
    new PaintPacer(this);
    services_ = std::make_unique<WindowServices>(this, ui);
    WindowServices& s = *services_;

    dispatcher_ = std::make_unique<ReplyDispatcher>(s.link(), [&s] { return s.selected(); });
    // The box shows the last chunk received, exactly as it came.
    connect(dispatcher_.get(), &ReplyDispatcher::chunkReceived, this,
            [this](const QString& chunk) { ui.TextInfo->setText(chunk); });
    buildFeatures();
    addReplyHandlers();

    connectPageSelectors();
    connect(ui.btn_sys_refresh, &QPushButton::clicked, this, &Form1::RefreshAll);

    buildStopWaiting();
    buildMenus();
    buildShortcuts();
    buildMonitor();
    Form_Load();
    ShowPage(0);
    const QSize whole = content->sizeHint() +
                        QSize(0, statusBar()->sizeHint().height() + menuBar()->sizeHint().height());
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
    connect(&services_->pump(), &WaitPump::waitingChanged, stop, &QPushButton::setEnabled);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &Form1::StopWaiting);
}

// Beside the documented window: the traffic monitor (View menu, Ctrl+M), each listed
// controller's connection state, what a running wait waits for, and Help, About.
void Form1::buildMonitor() {
    WindowServices& s = *services_;
    traffic_ = new TrafficLog(
        s.link(),
        [&s](int i) {
            return QStringLiteral("%1  %2").arg(s.ui().cbo_ipaddr->itemText(i), s.address(i));
        },
        this);
    icons_ = new ConnectionIcons(s);
    icons_->setParent(this);
    auto* waiting = new QLabel;
    waiting->setObjectName(QStringLiteral("wait_status"));
    statusBar()->addWidget(waiting, 1);
    waitStatus_ = new WaitStatus(s, waiting);
    waitStatus_->setParent(this);

    showMonitor_ = new QAction(QStringLiteral("&Traffic monitor"), this);
    showMonitor_->setCheckable(true);
    showMonitor_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    connect(showMonitor_, &QAction::toggled, this,
            [this](bool shown) { monitor().setVisible(shown); });
    menuBar()->addMenu(QStringLiteral("&View"))->addAction(showMonitor_);
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("&About Panomat Set"), this, &Form1::showAbout);
}

TrafficMonitor& Form1::monitor() {
    if (monitor_)
        return *monitor_;
    monitor_ = new TrafficMonitor(*services_, *traffic_, this);
    addDockWidget(Qt::RightDockWidgetArea, monitor_);
    monitor_->hide();
    connect(monitor_, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible && !monitorSized_) {
            monitorSized_ = true;
            placeMonitor();
        }
        showMonitor_->setChecked(visible);
    });
    return *monitor_;
}

// Room for the text of the rows when first shown, taken from the screen and not from the
// pages: beside the window where the screen is wide enough, else below the pages, which
// scroll. The operator may drag it after.
void Form1::placeMonitor() {
    static constexpr int Width = 760;
    if (monitor_->isFloating())
        return;
    const QRect screenArea = screen()->availableGeometry();
    const int room = screenArea.width() - frameGeometry().width();
    if (room >= Width - monitor_->width()) {
        resize(width() + Width - monitor_->width(), height());
        move(std::min(x(), screenArea.right() - frameGeometry().width()), y());
        resizeDocks({monitor_}, {Width}, Qt::Horizontal);
        return;
    }
    addDockWidget(Qt::BottomDockWidgetArea, monitor_);
    resizeDocks({monitor_}, {height() / 3}, Qt::Vertical);
}

WallPlanner& Form1::planner() {
    if (!planner_)
        planner_ = new WallPlanner(
            *services_, [this] { RefreshAll(); }, this);
    return *planner_;
}

// After a procedure of many settings the pages show what the selected controller
// holds: the full refresh, and the pages it does not read where their settings changed.
void Form1::ReadBack(const QSet<protocol::Group>& changed) {
    using enum protocol::Group;
    RefreshAll();
    if (services_->cancelled() || !services_->isConnected())
        return;
    if (changed.contains(Brightness) || changed.contains(Contrast) ||
        changed.contains(Saturation) || changed.contains(Hue))
        pictureRead_->ReadPicture();
    if (changed.contains(Trim))
        trim_->ReadPositionTrim();
}

void Form1::showAbout() {
    QMessageBox::about(this, QStringLiteral("About Panomat Set"),
                       QStringLiteral("<p><b>Panomat Set %1</b></p>"
                                      "<p>Configures the video-wall controllers on the local "
                                      "network.</p><p>Built with Qt %2, running on Qt %3.</p>")
                           .arg(QStringLiteral(PANOMAT_VERSION), QStringLiteral(QT_VERSION_STR),
                                QString::fromLatin1(qVersion())));
}

// Every running wait ends as on closing: the stopped handlers send and show nothing
// more and forget their half-done sequences, and the window goes offline.
void Form1::StopWaiting() {
    WindowServices& s = *services_;
    if (!s.pump().waiting())
        return;
    const QString abandoned = waitStatus_->current();
    s.pump().stop();
    ui.ProgressBar1->setVisible(false);
    s.UnlockPanels();
    s.SetOffline();
    // Said once the stopped waits have unwound, which clear the status bar as they go.
    s.afterUnwinding([&s, abandoned] {
        emit s.notice().hint((abandoned.isEmpty() ? QStringLiteral("Stopped waiting")
                                                  : QStringLiteral("Stopped: %1").arg(abandoned)) +
                             QStringLiteral(". The window is offline; Connect to go on."));
    });
}

Form1::~Form1() {
    // The dock hides as the window's children go, after this object has gone.
    if (monitor_)
        disconnect(monitor_, nullptr, this, nullptr);
}

// Features that need another's procedure get that procedure, not the window.
void Form1::buildFeatures() {
    WindowServices& s = *services_;
    statusRead_ = std::make_unique<StatusRead>(s);
    network_ = std::make_unique<NetworkConfig>(s);
    bezel_ = std::make_unique<BezelCorrection>(s, *statusRead_);
    ioSetup_ = std::make_unique<IoSetup>(s);
    refresh_ = std::make_unique<StatusRefresh>(s, *statusRead_, *network_, *bezel_, *ioSetup_);
    wall_ = std::make_unique<WallGeometry>(s);
    favourites_ = std::make_unique<Favourites>(s, [this] { refresh_->ReadBypassBezel(); });
    bypass_ = std::make_unique<BypassHotKey>(s, *statusRead_);
    trim_ = std::make_unique<PositionTrim>(s);
    ioSetters_ = std::make_unique<IoSetters>(s, *ioSetup_);
    pictureRead_ = std::make_unique<PictureRead>(s);
    pictureControls_ = std::make_unique<PictureControls>(s, *pictureRead_);
    power_ = std::make_unique<PowerModel>(s, *statusRead_);
    discovery_ = std::make_unique<DeviceDiscovery>(s);
    connect_ = std::make_unique<ControllerConnect>(s, [this] { RefreshAll(); });
}

// Procedures over the window's own connections that work on many controllers at once.
void Form1::buildMenus() {
    backup_ = std::make_unique<SettingsBackup>(
        *services_, [this](const QSet<protocol::Group>& changed) { ReadBack(changed); }, this);
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&Save controller settings..."), this,
                    [this] { backup_->saveAsked(); });
    file->addAction(QStringLiteral("&Restore controller settings..."), this,
                    [this] { backup_->restoreAsked(); });
    file->addSeparator();
    file->addAction(QStringLiteral("&Networks to search..."), this, [this] {
        SearchNetworks networks(*services_, this);
        networks.exec();
    });
    file->addSeparator();
    // Added to the window too, so that its key works wherever the menu bar is drawn.
    addAction(file->addAction(QStringLiteral("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this,
                              &QWidget::close));
    QMenu* wall = menuBar()->addMenu(QStringLiteral("&Wall"));
    wall->addAction(QStringLiteral("Wall &planner..."), this, [this] { planner().present(); });
}

// Keys beside the documented ones: F5 presses "Refresh", Alt and a letter the
// connection's buttons (their captions stay as they are, so the key is in the tooltip),
// Ctrl+1 to Ctrl+6 the page selectors; each only where the button itself could be pressed.
void Form1::buildShortcuts() {
    const struct {
        QPushButton* button;
        QKeySequence key;
        const char* tip;
    } keys[] = {
        {ui.btn_sys_refresh, Qt::Key_F5, "Read every page of the selected controller again"},
        {ui.btn_sys_search, Qt::ALT | Qt::Key_S, "Search the network for controllers"},
        {ui.btn_con, Qt::ALT | Qt::Key_C, "Connect to every listed controller"},
        {ui.btn_discon, Qt::ALT | Qt::Key_D, "Close the connections and go offline"},
    };
    for (const auto& k : keys) {
        connect(new QShortcut(k.key, this), &QShortcut::activated, k.button,
                &QAbstractButton::click);
        k.button->setToolTip(QStringLiteral("%1 (%2)").arg(
            QLatin1String(k.tip), k.key.toString(QKeySequence::NativeText)));
    }
    const struct {
        QPushButton* button;
        const char* tip;
    } tips[] = {
        {ui.btn_sys_fac_rst, "Put the controller back to its factory settings; it restarts"},
        {ui.btn_ip_get, "Read the controller's network settings"},
        {ui.btn_ip_set, "Write these network settings; the controller restarts its network"},
        {ui.btn_ip_relink, "Restart the controller's network with its stored settings"},
        {ui.btn_panomat_send, "Send the wall size, then the output's tile"},
        {ui.btn_H_Bezel_send, "Send both columns of bezel values"},
        {ui.btn_panomat_refresh, "Read the bezel values"},
        {ui.btn_panomat_reset, "Put the bezel values back to their factory values"},
    };
    for (const auto& t : tips)
        t.button->setToolTip(QLatin1String(t.tip));
    const auto pages = ui.pageSelectors();
    for (int page = 0; page < PageCount; ++page)
        connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + page)), this),
                &QShortcut::activated, pages[page], &QAbstractButton::click);
}

// Every chunk meets the handlers in this order; each acts only on its own key and step.
void Form1::addReplyHandlers() {
    auto add = [this](auto* feature,
                      void (std::remove_pointer_t<decltype(feature)>::*handler)(const QString&)) {
        dispatcher_->add([feature, handler](const QString& reply) { (feature->*handler)(reply); });
    };
    add(statusRead_.get(), &StatusRead::HandleStatusReply);
    add(ioSetup_.get(), &IoSetup::HandleIoSetupReply);
    add(network_.get(), &NetworkConfig::HandleAddressReply);
    add(network_.get(), &NetworkConfig::HandleNetworkAck);
    add(power_.get(), &PowerModel::HandleResetReply);
    add(wall_.get(), &WallGeometry::OnWallReply);
    add(favourites_.get(), &Favourites::HandleRecallReply);
    add(pictureRead_.get(), &PictureRead::HandlePictureReply);
    add(pictureRead_.get(), &PictureRead::HandlePictureResetReply);
    add(ioSetup_.get(), &IoSetup::HandleOsdResetReply);
    add(bezel_.get(), &BezelCorrection::HandleWallDefaultReply);
    add(bypass_.get(), &BypassHotKey::HandleHotKeyReply);
    add(bezel_.get(), &BezelCorrection::HandleBezelValueReply);
    add(bezel_.get(), &BezelCorrection::HandleBezelAckReply);
    add(trim_.get(), &PositionTrim::HandleTrimReply);
}

void Form1::connectPageSelectors() {
    const auto pages = ui.pageSelectors();
    for (int page = 0; page < PageCount; ++page)
        connect(pages[page], &QRadioButton::clicked, this, [this, page] { ShowPage(page); });
}

void Form1::Form_Load() {
    services_->StartUp();
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

// A setting's values from minimum to maximum: its words, or its numbers as text()
// writes them.
QStringList items(QAnyStringView setting, QString (*text)(long) = legacy::plainText) {
    const protocol::Setting& s = protocol::setting(setting);
    if (!s.labels.isEmpty())
        return s.labels;
    QStringList values;
    for (auto v = s.min; v <= s.max; ++v)
        values << text(long(v));
    return values;
}

} // namespace

// Each list shows its setting's values from the minimum, as words where the catalogue
// has them; the bezel and wall lists write theirs with a leading blank.
void Form1::fillLists() {
    const protocol::Setting& trim = protocol::setting("trim.h_start.a");
    for (QScrollBar* bar : ui.HS_A) {
        bar->setMaximum(int(trim.max - trim.min));
        bar->setMinimum(0);
    }
    const QStringList bezelValues = items("bezel.h.a", legacy::signedText);
    for (int n = 1; n <= protocol::OutputCount; ++n)
        fill(ui.cbo_val_H[n], bezelValues);
    for (int n = 1; n <= protocol::OutputCount; ++n)
        fill(ui.cbo_val_V[n], bezelValues);
    fill(ui.cbo_tv_row, items("wall.rows", legacy::signedText));
    fill(ui.cbo_tv_col, items("wall.cols", legacy::signedText));
    QStringList outputs;
    for (int n = 1; n <= protocol::OutputCount; ++n)
        outputs << protocol::outputName(n);
    fill(ui.cbo_tv_ch, outputs);
    fill(ui.cbo_ip_type, items("network.mode"));
    fill(ui.cbo_info_play, items("osd.display"));
    fill(ui.cbo_reso, items("resolution"));
    for (int parameter = 0; parameter < 4; ++parameter)
        for (int n = 1; n <= protocol::OutputCount; ++n)
            fill(pictureRow(ui, parameter)[n], items(pictureSetting(parameter, n).name));
    fill(ui.cbo_osd[0], items("osd.h_offset"));
    fill(ui.cbo_osd[1], items("osd.v_offset"));
    fill(ui.cbo_osd_gain, items("osd.gain"));
    services_->SetOffline();
    fill(ui.cbo_osd_time, items("osd.timeout"));
}

// All pages share one place in the layout, at the pages' corner.
void Form1::ShowPage(int page) {
    for (int i = 0; i < PageCount; ++i)
        ui.frame_control[i]->setVisible(i == page);
}

void Form1::RefreshAll() {
    refresh_->RefreshAll();
}

void Form1::closeEvent(QCloseEvent* event) {
    // Every running wait ends; nothing more is sent or shown.
    services_->pump().cancel();
    QMainWindow::closeEvent(event);
}
