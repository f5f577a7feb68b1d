#pragma once

#include <QString>

class Session;

class BezelCorrection {
public:
    explicit BezelCorrection(Session& session);
    void btn_panomat_refresh_Click();
    void HandleBezelValueReply(const QString& reply);
    void HandleBezelAckReply(const QString& reply);

private:
    Session& s_;
};
