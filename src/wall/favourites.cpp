#include "wall/favourites.h"

#include "window/session.h"

Favourites::Favourites(Session& session) : s_(session) {}
