// Aureole: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kAureole{
    .name = "Complex Filters/Aureole",
    .sign = "Aureole Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessAureolDeclare(t_ZoHostInfo *host) { return zol::declare(host, kAureole); }
