#pragma once

#include <QString>

class Session;

class PowerModel {
public:
    explicit PowerModel(Session& session);

private:
    Session& s_;
};
