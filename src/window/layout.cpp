#include "window/layout.h"

#include "protocol/catalogue.h"
#include "services/events.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QFont>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStringListModel>
#include <QVBoxLayout>

namespace {

QString indexed(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index);
}

template <typename W> W* named(W* widget, const QString& name) {
    widget->setObjectName(name);
    return widget;
}

// Replies set these texts one after another during a refresh. They are Latin letters
// and digits, which read the same unshaped, and laid out without shaping they cost a
// fraction. (Only line edits: a font change makes a list build its drop-down part.)
QLineEdit* unshaped(QLineEdit* edit) {
    QFont font;
    font.setStyleStrategy(QFont::PreferNoShaping);
    edit->setFont(font);
    return edit;
}

// A place in a layout for a control that is shown and hidden while the window works
// ("Connecting...", the progress bar). A control in a layout makes the whole window
// lay itself out again each time it appears or goes; in a place of its own it lays
// out nothing but itself. The place keeps the control's size whether it shows or not.
class Place : public QWidget {
public:
    explicit Place(QWidget* control) : control_(control) {
        control->setParent(this);
        QSizePolicy policy = control->sizePolicy();
        policy.setRetainSizeWhenHidden(false);
        setSizePolicy(policy);
    }
    QSize sizeHint() const override { return control_->sizeHint(); }
    QSize minimumSizeHint() const override { return control_->minimumSizeHint(); }

protected:
    void resizeEvent(QResizeEvent*) override { control_->setGeometry(rect()); }

private:
    QWidget* control_;
};

QPushButton* button(const QString& name, const QString& caption) {
    return named(new QPushButton(caption), name);
}

QCheckBox* allIp(const QString& name) {
    return named(new QCheckBox(QStringLiteral("ALL IP")), name);
}

// A list's items are plain texts, 3664 of them at start-up; kept as a string list they
// take about half the memory of the default item model.
QComboBox* newList(const QString& name) {
    auto* box = named(new QComboBox, name);
    box->setModel(new QStringListModel(box));
    box->setMaxVisibleItems(16);
    return box;
}

QComboBox* list(const QString& name) {
    QComboBox* box = newList(name);
    events::followListRules(box);
    return box;
}

// Qt gives the line edit of an editable list a completer of its own, with a model that
// follows every item added, unless the line edit already has one. These lists never
// complete (followListRules takes the completer off again), so they all borrow one.
QCompleter* noCompleter() {
    static QPointer<QCompleter> placeholder;
    if (!placeholder)
        placeholder = new QCompleter(QCoreApplication::instance());
    return placeholder;
}

// An editable list shows a hint until a value is read or chosen, and never keeps what
// is typed as a new item. Given its line edit rather than made editable, it builds its
// drop-down part only when first opened, like the fixed lists.
QComboBox* editableList(const QString& name, const QString& hint) {
    QComboBox* box = newList(name);
    auto* edit = unshaped(new QLineEdit);
    edit->setCompleter(noCompleter());
    box->setLineEdit(edit);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setEditText(hint);
    events::followListRules(box);
    return box;
}

QLabel* label(const QString& text) {
    return new QLabel(text);
}

QGroupBox* frame(const QString& name, const QString& caption) {
    return named(new QGroupBox(caption), name);
}

void buildConnectInterface(Controls& ui) {
    ui.con_interface = frame(QStringLiteral("con_interface"), QStringLiteral("Connect Interface"));
    auto* grid = new QGridLayout(ui.con_interface);
    for (int i = 0; i < 3; ++i) {
        static const char* captions[] = {"MAC :", "Model No.", "Connecting..."};
        ui.lbl_con[i] = named(label(QLatin1String(captions[i])), indexed("lbl_con", i));
    }
    // The device list keeps Qt's own item model: its entries carry a connection icon
    // and tooltip beside the MAC.
    ui.cbo_ipaddr = named(new QComboBox, QStringLiteral("cbo_ipaddr"));
    events::followListRules(ui.cbo_ipaddr);
    ui.cbo_model = list(QStringLiteral("cbo_model"));
    ui.btn_con = button(QStringLiteral("btn_con"), QStringLiteral("Connect"));
    ui.btn_discon = button(QStringLiteral("btn_discon"), QStringLiteral("Disconnect"));
    ui.btn_con->setAutoFillBackground(true);
    ui.btn_discon->setAutoFillBackground(true);
    grid->addWidget(ui.lbl_con[0], 0, 0);
    grid->addWidget(ui.cbo_ipaddr, 0, 1, 1, 2);
    grid->addWidget(ui.lbl_con[1], 1, 0);
    grid->addWidget(ui.cbo_model, 1, 1);
    grid->addWidget(new Place(ui.lbl_con[2]), 1, 2);
    grid->addWidget(ui.btn_con, 2, 1);
    grid->addWidget(ui.btn_discon, 2, 2);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
}

void buildSystemSettings(Controls& ui) {
    ui.sys_setting = frame(QStringLiteral("sys_setting"), QStringLiteral("System Settings"));
    auto* grid = new QGridLayout(ui.sys_setting);
    static const char* powerCaptions[] = {"Power", "Power ON", "Power OFF"};
    for (int i = 0; i < 3; ++i) {
        ui.power_ctl[i] = button(indexed("power_ctl", i), QLatin1String(powerCaptions[i]));
        ui.power_ctl[i]->setAutoFillBackground(true);
        grid->addWidget(ui.power_ctl[i], 0, 0); // one place: only one is ever visible
    }
    setBackColour(ui.power_ctl[1], Qt::green);
    setBackColour(ui.power_ctl[2], Qt::red);
    ui.Check1[0] = allIp(indexed("Check1", 0));
    ui.Check1[1] = allIp(indexed("Check1", 1));
    ui.btn_sys_fac_rst = button(QStringLiteral("btn_sys_fac_rst"), QStringLiteral("Factory Reset"));
    ui.btn_sys_search = button(QStringLiteral("btn_sys_search"), QStringLiteral("Search MAC"));
    ui.btn_sys_refresh = button(QStringLiteral("btn_sys_refresh"), QStringLiteral("Refresh"));
    ui.ProgressBar1 = named(new QProgressBar, QStringLiteral("ProgressBar1"));
    ui.ProgressBar1->setRange(0, 100);
    ui.ProgressBar1->setValue(0);
    ui.ProgressBar1->setVisible(false); // its place stays: the buttons above never move
    grid->addWidget(ui.Check1[0], 0, 1);
    grid->addWidget(ui.btn_sys_fac_rst, 1, 0);
    grid->addWidget(ui.Check1[1], 1, 1);
    grid->addWidget(ui.btn_sys_search, 2, 0);
    grid->addWidget(ui.btn_sys_refresh, 2, 1);
    grid->addWidget(new Place(ui.ProgressBar1), 3, 0, 1, 2);
}

void buildNetworkConfig(Controls& ui) {
    ui.net_config = frame(QStringLiteral("net_config"), QStringLiteral("Network Configuration"));
    auto* grid = new QGridLayout(ui.net_config);
    ui.txt_ip = named(unshaped(new QLineEdit), QStringLiteral("txt_ip"));
    ui.txt_net = named(unshaped(new QLineEdit), QStringLiteral("txt_net"));
    ui.txt_gate = named(unshaped(new QLineEdit), QStringLiteral("txt_gate"));
    ui.cbo_ip_type = list(QStringLiteral("cbo_ip_type"));
    grid->addWidget(label(QStringLiteral("Address Type")), 0, 0);
    grid->addWidget(ui.cbo_ip_type, 0, 1, 1, 2);
    grid->addWidget(label(QStringLiteral("IP Address")), 1, 0);
    grid->addWidget(ui.txt_ip, 1, 1, 1, 2);
    grid->addWidget(label(QStringLiteral("Net Mask")), 2, 0);
    grid->addWidget(ui.txt_net, 2, 1, 1, 2);
    grid->addWidget(label(QStringLiteral("Default Gateway")), 3, 0);
    grid->addWidget(ui.txt_gate, 3, 1, 1, 2);
    ui.btn_ip_get = button(QStringLiteral("btn_ip_get"), QStringLiteral("Get IP"));
    ui.btn_ip_set = button(QStringLiteral("btn_ip_set"), QStringLiteral("Set IP"));
    ui.btn_ip_relink = button(QStringLiteral("btn_ip_relink"), QStringLiteral("Re-Link"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ui.btn_ip_get);
    buttons->addWidget(ui.btn_ip_set);
    buttons->addWidget(ui.btn_ip_relink);
    grid->addLayout(buttons, 4, 0, 1, 3);
    grid->setColumnStretch(1, 1);
}

QVBoxLayout* pageSelectors(Controls& ui) {
    auto* box = new QVBoxLayout;
    auto add = [&](QRadioButton*& opt, const char* name, const char* caption) {
        opt = named(new QRadioButton(QLatin1String(caption)), QLatin1String(name));
        box->addWidget(opt);
    };
    add(ui.opt_tv1, "opt_tv1", "Panomat (1)");
    add(ui.opt_tv2, "opt_tv2", "Panomat (2)");
    add(ui.opt_tv4, "opt_tv4", "Panomat (3)");
    add(ui.opt_tv3, "opt_tv3", "Panomat (4)");
    add(ui.opt_io, "opt_io", "I/O Setup");
    add(ui.opt_image, "opt_image", "Image Adjust");
    box->addStretch();
    ui.opt_tv1->setChecked(true);
    return box;
}

void buildHotKeyPage(QGroupBox* page, Controls& ui) {
    const auto shapes = protocol::hotKeyShapes();
    auto* grid = new QGridLayout(page);
    for (int i = 0; i < int(ui.btn_tv_fs.size()); ++i) {
        ui.btn_tv_fs[i] = button(indexed("btn_tv_fs", i),
                                 QStringLiteral("%1x%2").arg(shapes[i].rows).arg(shapes[i].cols));
        ui.btn_tv_fs[i]->setMinimumHeight(48);
        grid->addWidget(ui.btn_tv_fs[i], i / 6, i % 6);
    }
    ui.Check1[2] = allIp(indexed("Check1", 2));
    grid->addWidget(ui.Check1[2], 4, 0);
}

QGroupBox* manualSetup(Controls& ui) {
    auto* group = new QGroupBox(QStringLiteral("Manual setup"));
    auto* grid = new QGridLayout(group);
    ui.cbo_tv_row = editableList(QStringLiteral("cbo_tv_row"), QStringLiteral("1~15"));
    ui.cbo_tv_col = editableList(QStringLiteral("cbo_tv_col"), QStringLiteral("1~15"));
    ui.cbo_tv_ch = list(QStringLiteral("cbo_tv_ch"));
    ui.cbo_tv_posi = editableList(QStringLiteral("cbo_tv_posi"), QStringLiteral("1~MxN"));
    ui.btn_panomat_send = button(QStringLiteral("btn_panomat_send"), QStringLiteral("Send"));
    ui.chk_tv_allip[0] = allIp(indexed("chk_tv_allip", 0));
    grid->addWidget(label(QStringLiteral("Row")), 0, 0);
    grid->addWidget(ui.cbo_tv_row, 0, 1);
    grid->addWidget(label(QStringLiteral("Column")), 1, 0);
    grid->addWidget(ui.cbo_tv_col, 1, 1);
    grid->addWidget(label(QStringLiteral("Out Channel")), 2, 0);
    grid->addWidget(ui.cbo_tv_ch, 2, 1);
    grid->addWidget(label(QStringLiteral("Out Position")), 3, 0);
    grid->addWidget(ui.cbo_tv_posi, 3, 1);
    grid->addWidget(ui.chk_tv_allip[0], 4, 0);
    grid->addWidget(ui.btn_panomat_send, 4, 1);
    grid->setRowStretch(5, 1);
    return group;
}

QGroupBox* bezelCorrection(Controls& ui) {
    auto* group = new QGroupBox(QStringLiteral("Bezel Correction"));
    auto* grid = new QGridLayout(group);
    grid->addWidget(label(QStringLiteral("H Correction")), 0, 1);
    grid->addWidget(label(QStringLiteral("V Correction")), 0, 2);
    for (int n = 1; n <= protocol::OutputCount; ++n) {
        ui.cbo_val_H[n] = list(indexed("cbo_val_H", n));
        ui.cbo_val_V[n] = list(indexed("cbo_val_V", n));
        grid->addWidget(label(protocol::outputName(n)), n, 0);
        grid->addWidget(ui.cbo_val_H[n], n, 1);
        grid->addWidget(ui.cbo_val_V[n], n, 2);
    }
    ui.btn_H_Bezel_send = button(QStringLiteral("btn_H_Bezel_send"), QStringLiteral("Send"));
    ui.btn_V_Bezel_send = button(QStringLiteral("btn_V_Bezel_send"), QStringLiteral("Send"));
    grid->addWidget(ui.btn_H_Bezel_send, 5, 1);
    grid->addWidget(ui.btn_V_Bezel_send, 5, 2);
    for (int i = 1; i <= 3; ++i)
        ui.chk_tv_allip[i] = allIp(indexed("chk_tv_allip", i));
    grid->addWidget(ui.chk_tv_allip[1], 6, 0);
    grid->addWidget(ui.chk_tv_allip[2], 6, 1);
    grid->addWidget(ui.chk_tv_allip[3], 6, 2);
    ui.btn_panomat_refresh =
        button(QStringLiteral("btn_panomat_refresh"), QStringLiteral("Refresh"));
    ui.btn_panomat_reset = button(QStringLiteral("btn_panomat_reset"), QStringLiteral("Reset"));
    grid->addWidget(ui.btn_panomat_refresh, 7, 1);
    grid->addWidget(ui.btn_panomat_reset, 7, 2);

    auto* onOff = new QWidget;
    auto* row = new QHBoxLayout(onOff);
    row->setContentsMargins(0, 0, 0, 0);
    ui.opt_bezel[0] = named(new QRadioButton(QStringLiteral("OFF")), indexed("opt_bezel", 0));
    ui.opt_bezel[1] = named(new QRadioButton(QStringLiteral("ON")), indexed("opt_bezel", 1));
    row->addWidget(ui.opt_bezel[0]);
    row->addWidget(ui.opt_bezel[1]);
    grid->addWidget(label(QStringLiteral("Bezel")), 8, 0);
    grid->addWidget(onOff, 8, 1, 1, 2);
    return group;
}

QGroupBox* bypass(Controls& ui) {
    auto* group = new QGroupBox(QStringLiteral("Output Ch.4 Bypass"));
    auto* box = new QVBoxLayout(group);
    ui.opt_ch4_bypass[0] =
        named(new QRadioButton(QStringLiteral("ON")), indexed("opt_ch4_bypass", 0));
    ui.opt_ch4_bypass[1] =
        named(new QRadioButton(QStringLiteral("OFF")), indexed("opt_ch4_bypass", 1));
    box->addWidget(ui.opt_ch4_bypass[0]);
    box->addWidget(ui.opt_ch4_bypass[1]);
    box->addStretch();
    return group;
}

void buildWallPage(QGroupBox* page, Controls& ui) {
    auto* row = new QHBoxLayout(page);
    row->addWidget(manualSetup(ui), 3);
    row->addWidget(bezelCorrection(ui), 4);
    row->addWidget(bypass(ui), 2);
}

void buildIoPage(QGroupBox* page, Controls& ui) {
    auto* grid = new QGridLayout(page);
    ui.cbo_reso = list(QStringLiteral("cbo_reso"));
    ui.cbo_info_play = list(QStringLiteral("cbo_info_play"));
    ui.cbo_osd[0] = editableList(indexed("cbo_osd", 0), QStringLiteral("0~20"));
    ui.cbo_osd[1] = editableList(indexed("cbo_osd", 1), QStringLiteral("0~20"));
    ui.cbo_osd_time = list(QStringLiteral("cbo_osd_time"));
    ui.cbo_osd_gain = editableList(QStringLiteral("cbo_osd_gain"), QStringLiteral("0~10"));

    auto* mute = new QWidget;
    auto* muteRow = new QHBoxLayout(mute);
    muteRow->setContentsMargins(0, 0, 0, 0);
    ui.opt_mute[0] = named(new QRadioButton(QStringLiteral("OFF")), indexed("opt_mute", 0));
    ui.opt_mute[1] = named(new QRadioButton(QStringLiteral("ON")), indexed("opt_mute", 1));
    muteRow->addWidget(ui.opt_mute[0]);
    muteRow->addWidget(ui.opt_mute[1]);
    muteRow->addStretch();

    // Each setting has its own "ALL IP" box, in the order of the setters.
    const std::pair<const char*, QWidget*> rows[] = {{"Output Resolution", ui.cbo_reso},
                                                     {"OSD Auto Display", ui.cbo_info_play},
                                                     {"OSD H Offset", ui.cbo_osd[0]},
                                                     {"OSD V Offset", ui.cbo_osd[1]},
                                                     {"OSD Display Timeout", ui.cbo_osd_time},
                                                     {"OSD Gain Correction", ui.cbo_osd_gain},
                                                     {"Mute", mute}};
    for (int i = 0; i < 7; ++i) {
        ui.chk_io[i] = allIp(indexed("chk_io", i));
        grid->addWidget(label(QLatin1String(rows[i].first)), i, 0);
        grid->addWidget(rows[i].second, i, 1);
        grid->addWidget(ui.chk_io[i], i, 2);
    }
    static const char* captions[] = {"Refresh", "Reset", "OSD Info"};
    auto* buttons = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        ui.btn_io_rst[i] = button(indexed("btn_io_rst", i), QLatin1String(captions[i]));
        buttons->addWidget(ui.btn_io_rst[i]);
    }
    grid->addLayout(buttons, 7, 0, 1, 4);
    grid->setColumnMinimumWidth(1, 220);
    grid->setColumnStretch(3, 1);
}

void buildPicturePage(QGroupBox* page, Controls& ui) {
    auto* grid = new QGridLayout(page);
    static const char* outs[] = {"", "OUT A", "OUT B", "OUT C", "OUT D"};
    for (int n = 1; n <= 4; ++n)
        grid->addWidget(label(QLatin1String(outs[n])), 0, n, Qt::AlignCenter);
    struct Row {
        const char* caption;
        const char* name;
        std::array<QComboBox*, 5>& lists;
    };
    Row rows[] = {{"Brightness", "cbo_image_bri", ui.cbo_image_bri},
                  {"Contrast", "cbo_image_con", ui.cbo_image_con},
                  {"Saturation", "cbo_image_sat", ui.cbo_image_sat},
                  {"Hue", "cbo_image_hue", ui.cbo_image_hue}};
    for (int r = 0; r < 4; ++r) {
        grid->addWidget(label(QLatin1String(rows[r].caption)), r + 1, 0);
        for (int n = 1; n <= 4; ++n) {
            rows[r].lists[n] = editableList(indexed(rows[r].name, n), QStringLiteral("0~100"));
            grid->addWidget(rows[r].lists[n], r + 1, n);
        }
        ui.btn_img_rst[r] = button(indexed("btn_img_rst", r), QStringLiteral("Reset"));
        ui.Chk_img[r] = allIp(indexed("Chk_img", r));
        grid->addWidget(ui.btn_img_rst[r], r + 1, 5);
        grid->addWidget(ui.Chk_img[r], r + 1, 6);
    }
    ui.btn_img_rst[4] = button(indexed("btn_img_rst", 4), QStringLiteral("Picture Reset"));
    ui.btn_img_rst[5] = button(indexed("btn_img_rst", 5), QStringLiteral("Refresh"));
    grid->addWidget(ui.btn_img_rst[4], 5, 3, 1, 2);
    grid->addWidget(ui.btn_img_rst[5], 5, 5, 1, 2);
    grid->setRowStretch(6, 1);
}

void buildFavouritesPage(QGroupBox* page, Controls& ui) {
    auto* column = new QVBoxLayout(page);
    auto slotRow = [&](const char* caption, const char* name,
                       std::array<QPushButton*, 6>& buttons) {
        auto* group = new QGroupBox(QLatin1String(caption));
        auto* row = new QHBoxLayout(group);
        for (int slot = 1; slot <= 5; ++slot) {
            buttons[slot] = button(indexed(name, slot), QStringLiteral("FAV %1").arg(slot));
            buttons[slot]->setMinimumHeight(48);
            row->addWidget(buttons[slot]);
        }
        column->addWidget(group);
    };
    slotRow("Save Panomat Settings", "btn_save", ui.btn_save);
    slotRow("Recall Panomat Settings", "btn_recall", ui.btn_recall);
    column->addStretch();
}

void buildPositionPage(QGroupBox* page, Controls& ui) {
    auto* grid = new QGridLayout(page);
    for (int n = 0; n < protocol::OutputCount; ++n)
        grid->addWidget(label(protocol::outputName(n + 1)), 0, 1 + 2 * n, 1, 2, Qt::AlignCenter);
    for (int g = 0; g < 4; ++g) {
        grid->addWidget(label(QLatin1String(Controls::TrimCaptions[g])), g + 1, 0);
        for (int n = 0; n < 4; ++n) {
            const int i = g * 4 + n;
            ui.HS_A[i] = named(new QScrollBar(Qt::Horizontal), indexed("HS_A", i));
            events::followBarRules(ui.HS_A[i]);
            ui.HS_A[i]->setMinimumWidth(110);
            ui.value_posi[i] = named(label(QStringLiteral("Value")), indexed("value_posi", i));
            ui.value_posi[i]->setMinimumWidth(36);
            grid->addWidget(ui.HS_A[i], g + 1, 1 + 2 * n);
            grid->addWidget(ui.value_posi[i], g + 1, 2 + 2 * n);
        }
    }
    ui.btn_posi[0] = button(indexed("btn_posi", 0), QStringLiteral("Refresh"));
    ui.btn_posi[1] = button(indexed("btn_posi", 1), QStringLiteral("Reset"));
    grid->addWidget(ui.btn_posi[0], 5, 5, 1, 2);
    grid->addWidget(ui.btn_posi[1], 5, 7, 1, 2);
    grid->setVerticalSpacing(18);
    grid->setRowStretch(6, 1);
}

// The connection frame with TextInfo under it, then the system and network frames.
QHBoxLayout* topRow(Controls& ui) {
    buildConnectInterface(ui);
    buildSystemSettings(ui);
    buildNetworkConfig(ui);
    ui.TextInfo = named(unshaped(new QLineEdit), QStringLiteral("TextInfo"));
    ui.TextInfo->setReadOnly(true);
    auto* left = new QVBoxLayout;
    left->addWidget(ui.con_interface);
    left->addSpacing(10);
    left->addWidget(ui.TextInfo);
    left->addStretch();
    auto* row = new QHBoxLayout;
    row->addLayout(left, 300);
    row->addWidget(ui.sys_setting, 300);
    row->addWidget(ui.net_config, 268);
    return row;
}

// All six pages share one cell, each keeping its place while hidden, so the cell is
// as large as the largest page and nothing moves when pages are switched.
QGridLayout* pageCell(Controls& ui) {
    static const char* captions[] = {"Panomat Setup", "Panomat Setup", "I/O Setup",
                                     "Image Adjust",  "Panomat Setup", "Panomat Setup"};
    auto* cell = new QGridLayout;
    for (int i = 0; i < PageCount; ++i) {
        ui.frame_control[i] = frame(indexed("frame_control", i), QLatin1String(captions[i]));
        QSizePolicy keepPlace(QSizePolicy::Expanding, QSizePolicy::Expanding);
        keepPlace.setRetainSizeWhenHidden(true);
        ui.frame_control[i]->setSizePolicy(keepPlace);
        ui.frame_control[i]->setMinimumSize(PageSize);
        cell->addWidget(ui.frame_control[i], 0, 0);
    }
    buildHotKeyPage(ui.frame_control[0], ui);
    buildWallPage(ui.frame_control[1], ui);
    buildIoPage(ui.frame_control[2], ui);
    buildPicturePage(ui.frame_control[3], ui);
    buildFavouritesPage(ui.frame_control[4], ui);
    buildPositionPage(ui.frame_control[5], ui);
    return cell;
}

} // namespace

void buildControls(QWidget* content, Controls& ui) {
    // With the usual font the pages' corner comes out at PageCorner, as the window was
    // drawn; a larger font pushes it out rather than squeeze the frames.
    constexpr int Margin = 8, Top = 4, Spacing = 8;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(Margin, Top, Margin, Margin);
    column->setSpacing(Spacing);
    QHBoxLayout* top = topRow(ui);
    auto* topHolder = new QWidget;
    topHolder->setLayout(top);
    top->setContentsMargins(0, 0, 0, 0);
    top->setSpacing(Spacing);
    topHolder->setMinimumHeight(PageCorner.y() - Top - Spacing);
    column->addWidget(topHolder);

    auto* bottom = new QHBoxLayout;
    bottom->setSpacing(Spacing);
    auto* selectors = new QWidget;
    QVBoxLayout* options = pageSelectors(ui);
    options->setContentsMargins(0, 0, 0, 0);
    selectors->setLayout(options);
    selectors->setMinimumWidth(PageCorner.x() - Margin - Spacing);
    bottom->addWidget(selectors);
    bottom->addLayout(pageCell(ui), 1);
    column->addLayout(bottom, 1);
}
