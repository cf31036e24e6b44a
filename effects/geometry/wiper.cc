// Wiper: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kWiper{
    .name = "Geometry Shading/Wiper",
    .sign = "Wiper Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessWiperDeclare(t_ZoHostInfo *host) { return zol::declare(host, kWiper); }
