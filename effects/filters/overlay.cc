// Overlay: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kOverlay{
    .name = "Filters/Overlay",
    .nameInQuorbel = "Filters/Standard/Overlay",
    .sign = "Overlay for Qb4",
    .version = 1,
    .type = "Filter",
};

ZOL_EXPORT int ProcessOverlayDeclare(t_ZoHostInfo *host) { return zol::declare(host, kOverlay); }
