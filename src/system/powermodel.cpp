#include "system/powermodel.h"

#include "window/session.h"

PowerModel::PowerModel(Session& session) : s_(session) {}
