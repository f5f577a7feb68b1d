#include "wall/bezelcorrection.h"

#include "window/session.h"

BezelCorrection::BezelCorrection(Session& session) : s_(session) {}

void BezelCorrection::btn_panomat_refresh_Click()
{
}

void BezelCorrection::HandleBezelValueReply(const QString& reply)
{
    Q_UNUSED(reply);
}

void BezelCorrection::HandleBezelAckReply(const QString& reply)
{
    Q_UNUSED(reply);
}
