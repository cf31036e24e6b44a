// Paster tool: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kPaster{
    .name = "Compositing/Paster tool",
    .sign = "Paster Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessPasteDeclare(t_ZoHostInfo *host) { return zol::declare(host, kPaster); }
