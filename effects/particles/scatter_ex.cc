// ScatterEx: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kScatterEx{
    .name = "Particle System/ScatterEx",
    .sign = "ScatterEx Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessScatterExDeclare(t_ZoHostInfo *host) { return zol::declare(host, kScatterEx); }
