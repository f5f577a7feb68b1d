#pragma once

#include "services/windowservices.h"

#include <QString>
#include <QtGlobal>

class QComboBox;

// The wall's size, the output being placed and the tile it shows: "SMNC" rows, columns
// and channel, then "SCO" channel and tile, each after the controller's acknowledgement.
class WallGeometry {
public:
    explicit WallGeometry(WindowServices& session);

    void OnWallReply(const QString& reply);

    void btn_panomat_send_Click();
    void RebuildPositionList();

private:
    void cbo_tv_row_Click();
    void cbo_tv_col_Click();
    void cbo_tv_ch_Click();
    void cbo_tv_posi_Click();
    void typedSize(QComboBox* box, quint8& variable, const char* setting);
    void cbo_tv_posi_Change();
    quint8 tileCount() const;

    WindowServices& s_;
    WaitStep send_{"Wall send"};
    // The operator's choice; 0 until chosen. Nothing resets them.
    quint8 wall_rows = 0;
    quint8 wall_cols = 0;
    quint8 wall_channel = 0;
    quint8 wall_position = 0;
};
