// Draw Geometry: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kDrawGeometry{
    .name = "Geometry Shading/Draw Geometry",
    .sign = "DrawGeometry Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessDrawShapeDeclare(t_ZoHostInfo *host) { return zol::declare(host, kDrawGeometry); }
