// Bump: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kBump{
    .name = "Complex Filters/Bump",
    .sign = "Bump Zo2 native",
    .version = 4,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessBumpDeclare(t_ZoHostInfo *host) { return zol::declare(host, kBump); }
