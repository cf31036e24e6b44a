// Shutter: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kShutter{
    .name = "Compositing/Shutter",
    .sign = "Shutter Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessShutterDeclare(t_ZoHostInfo *host) { return zol::declare(host, kShutter); }
