// Crumble: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kCrumble{
    .name = "Compositing/Crumble",
    .sign = "Crumble Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessCrumbleDeclare(t_ZoHostInfo *host) { return zol::declare(host, kCrumble); }
