#pragma once

#include "services/windowservices.h"

#include <QString>

class StatusRead;

// Horizontal and vertical bezel correction of the four outputs, and its on/off switch.
class BezelCorrection {
public:
    BezelCorrection(WindowServices& session, StatusRead& status);

    void btn_H_Bezel_send_Click();
    void btn_panomat_refresh_Click();
    void btn_panomat_reset_Click();
    void opt_bezel_Click(int index);
    void HandleBezelValueReply(const QString& reply);
    void HandleBezelAckReply(const QString& reply);
    // The reset's acknowledgement, "WDEF".
    void HandleWallDefaultReply(const QString& reply);

private:
    WindowServices& s_;
    StatusRead& status_;
    WaitStep read_{"Bezel read"};
    WaitStep write_{"Bezel send"};
    WaitStep default_{"Bezel reset"};
};
