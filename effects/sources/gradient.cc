// Gradient: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kGradient{
    .name = "Sources/Gradient",
    .sign = "Gradient Zo2 native",
    .version = 2,
};

ZOL_EXPORT int ProcessGradientDeclare(t_ZoHostInfo *host) { return zol::declare(host, kGradient); }
