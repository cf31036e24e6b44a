// Spread: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kSpread{
    .name = "Filters/Spread",
    .nameInQuorbel = "Filters/Special/Spread",
    .sign = "Spread Zo2 native",
    .version = 1,
};

ZOL_EXPORT int ProcessSpreadDeclare(t_ZoHostInfo *host) { return zol::declare(host, kSpread); }
