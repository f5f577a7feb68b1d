#pragma once

#include <QString>

class Session;

class IoSetup {
public:
    explicit IoSetup(Session& session);
    void ReadIoSetup();
    void HandleIoSetupReply(const QString& reply);
    void HandleOsdResetReply(const QString& reply);

private:
    Session& s_;
};
