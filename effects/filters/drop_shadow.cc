// Drop Shadow: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kShadow{
    .name = "Complex Filters/Drop Shadow",
    .sign = "DropShadow Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
};

constexpr zol::Effect kStandardShadow{
    .name = "Filters/Standard/Drop Shadow",
    .sign = "DropShadow Qb filter",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
    .type = "Filter",
};

ZOL_EXPORT int ProcessDropShadowDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kShadow, kStandardShadow);
}
