// Recolor: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kRecolor{
    .name = "Filters/Color/Recolor",
    .sign = "Recolor Zo2 native",
    .version = 2,
};

ZOL_EXPORT int ProcessRecolorDeclare(t_ZoHostInfo *host) { return zol::declare(host, kRecolor); }
