#pragma once

#include <QString>

class Session;

class IoSetters {
public:
    explicit IoSetters(Session& session);

private:
    Session& s_;
};
