#pragma once

#include <QString>

class Session;

class PictureControls {
public:
    explicit PictureControls(Session& session);

private:
    Session& s_;
};
