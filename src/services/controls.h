#pragma once

#include "protocol/catalogue.h"

#include <array>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QScrollBar;

// The pages, each a frame_control, chosen by its selector.
inline constexpr int PageCount = 6;

// Every control of the main window. Arrays keep the window's own indexes; arrays that
// count from 1 (outputs, slots) leave element 0 empty. Each control's objectName is its
// name, with "(index)" for array elements.
struct Controls {
    // Page selectors. The captions of opt_tv3 and opt_tv4 are crossed on purpose.
    QRadioButton* opt_tv1 = nullptr;
    QRadioButton* opt_tv2 = nullptr;
    QRadioButton* opt_tv4 = nullptr;
    QRadioButton* opt_tv3 = nullptr;
    QRadioButton* opt_io = nullptr;
    QRadioButton* opt_image = nullptr;

    QLineEdit* TextInfo = nullptr;

    // "Connect Interface"
    QGroupBox* con_interface = nullptr;
    QComboBox* cbo_ipaddr = nullptr;
    QComboBox* cbo_model = nullptr;
    QPushButton* btn_con = nullptr;
    QPushButton* btn_discon = nullptr;
    std::array<QLabel*, 3> lbl_con{};

    // "System Settings"
    QGroupBox* sys_setting = nullptr;
    QProgressBar* ProgressBar1 = nullptr;
    std::array<QPushButton*, 3> power_ctl{};
    std::array<QCheckBox*, 3> Check1{}; // 0 power, 1 factory reset, 2 on the hot-key page
    QPushButton* btn_sys_fac_rst = nullptr;
    QPushButton* btn_sys_search = nullptr;
    QPushButton* btn_sys_refresh = nullptr;

    // "Network Configuration"
    QGroupBox* net_config = nullptr;
    QLineEdit* txt_ip = nullptr;
    QLineEdit* txt_net = nullptr;
    QLineEdit* txt_gate = nullptr;
    QComboBox* cbo_ip_type = nullptr;
    QPushButton* btn_ip_get = nullptr;
    QPushButton* btn_ip_set = nullptr;
    QPushButton* btn_ip_relink = nullptr;

    std::array<QGroupBox*, PageCount> frame_control{};
    // The selector of each page, in page order.
    std::array<QRadioButton*, PageCount> pageSelectors() const {
        return {opt_tv1, opt_tv2, opt_io, opt_image, opt_tv3, opt_tv4};
    }

    // Page 0: preset wall shapes
    std::array<QPushButton*, protocol::HotKeyCount> btn_tv_fs{};

    // Page 1: wall geometry, bezel correction, bypass
    QComboBox* cbo_tv_row = nullptr;
    QComboBox* cbo_tv_col = nullptr;
    QComboBox* cbo_tv_posi = nullptr;
    QComboBox* cbo_tv_ch = nullptr;
    QPushButton* btn_panomat_send = nullptr;
    QPushButton* btn_panomat_reset = nullptr;
    QPushButton* btn_panomat_refresh = nullptr;
    std::array<QComboBox*, 5> cbo_val_H{}; // 1..4
    std::array<QComboBox*, 5> cbo_val_V{}; // 1..4
    QPushButton* btn_H_Bezel_send = nullptr;
    QPushButton* btn_V_Bezel_send = nullptr;
    std::array<QRadioButton*, 2> opt_ch4_bypass{}; // 0 "ON", 1 "OFF"
    std::array<QRadioButton*, 2> opt_bezel{};      // 0 "OFF", 1 "ON"
    std::array<QCheckBox*, 4> chk_tv_allip{};

    // Page 2: I/O setup
    QComboBox* cbo_reso = nullptr;
    std::array<QComboBox*, 2> cbo_osd{}; // 0 H offset, 1 V offset
    QComboBox* cbo_osd_time = nullptr;
    QComboBox* cbo_osd_gain = nullptr;
    QComboBox* cbo_info_play = nullptr;
    std::array<QRadioButton*, 2> opt_mute{}; // 0 "OFF", 1 "ON"
    std::array<QPushButton*, 3> btn_io_rst{};
    std::array<QCheckBox*, 7> chk_io{};

    // Page 3: picture, outputs 1..4
    std::array<QComboBox*, 5> cbo_image_bri{};
    std::array<QComboBox*, 5> cbo_image_con{};
    std::array<QComboBox*, 5> cbo_image_sat{};
    std::array<QComboBox*, 5> cbo_image_hue{};
    std::array<QPushButton*, 6> btn_img_rst{};
    std::array<QCheckBox*, 4> Chk_img{};

    // Page 4: favourites, slots 1..5
    std::array<QPushButton*, 6> btn_save{};
    std::array<QPushButton*, 6> btn_recall{};

    // Page 5: output position trims
    std::array<QScrollBar*, 16> HS_A{};
    // The captions of the bars' rows; bar i is in row i / 4.
    static constexpr const char* TrimCaptions[4] = {"H Start Value", "H End Value",
                                                    "V Start Value", "V End Value"};
    std::array<QLabel*, 16> value_posi{};
    std::array<QPushButton*, 2> btn_posi{};
};

class QColor;
class QWidget;

// Disabled text greyed so that it still reads (4.5:1) on every disabled background;
// the style's own grey reads at 1.6:1 and hides the values shown while offline.
void legibleDisabledText();
// A button's back colour (its palette's Button colour), text kept readable on it.
void setBackColour(QWidget* button, const QColor& colour);
void clearBackColour(QWidget* button);
