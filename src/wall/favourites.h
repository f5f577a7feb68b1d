#pragma once

#include <QString>

class Session;

class Favourites {
public:
    explicit Favourites(Session& session);

private:
    Session& s_;
};
