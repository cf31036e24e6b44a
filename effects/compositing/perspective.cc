// Perspective: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kPerspective{
    .name = "Compositing/Perspective",
    .sign = "Perspective Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
};

constexpr zol::Effect kSpecialPerspective{
    .name = "Filters/Special/Perspective",
    .sign = "Perspective Qb5 adapted",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
    .type = "Filter",
};

ZOL_EXPORT int ProcessPerspectiveDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kPerspective, kSpecialPerspective);
}
