// Keyer: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kKeyer{
    .name = "Compositing/Keyer",
    .sign = "UniKeyer Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessKeyer2Declare(t_ZoHostInfo *host) { return zol::declare(host, kKeyer); }
