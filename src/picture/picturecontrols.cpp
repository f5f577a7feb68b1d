#include "picture/picturecontrols.h"

#include "window/session.h"

PictureControls::PictureControls(Session& session) : s_(session) {}
