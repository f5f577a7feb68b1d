#include "output/iosetters.h"

#include "window/session.h"

IoSetters::IoSetters(Session& session) : s_(session) {}
