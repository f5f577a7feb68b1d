#pragma once

#include <QString>

class Session;

class PositionTrim {
public:
    explicit PositionTrim(Session& session);
    void ReadPositionTrim();
    void HandleTrimReply(const QString& reply);

private:
    Session& s_;
};
