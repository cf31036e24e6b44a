// Star Generator: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kStarGenerator{
    .name = "Geometry Shading/Star Generator",
    .nameElsewhere = "Filters/Special/Star Generator",
    .sign = "StarGen Zo2 native",
    .version = 3,
};

ZOL_EXPORT int ProcessStarGenDeclare(t_ZoHostInfo *host) { return zol::declare(host, kStarGenerator); }

ZOL_EXPORT int ProcessStarGen2Declare() { return 0; }
