#pragma once

#include <QString>

class Session;

// Horizontal and vertical bezel correction of the four outputs, and its on/off switch.
class BezelCorrection {
public:
    explicit BezelCorrection(Session& session);

    void btn_H_Bezel_send_Click();
    void btn_panomat_refresh_Click();
    void btn_panomat_reset_Click();
    void opt_bezel_Click(int index);
    void HandleBezelValueReply(const QString& reply);
    void HandleBezelAckReply(const QString& reply);

private:
    Session& s_;
};
