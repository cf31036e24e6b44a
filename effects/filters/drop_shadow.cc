// Drop Shadow: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessDropShadowDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  if (zol::hostIs(host, "Halvenor")) {
    eff.begin("DropShadow Zo2 native", "Complex Filters/Drop Shadow", 2);
  } else {
    eff.begin("DropShadow Qb filter", "Filters/Standard/Drop Shadow", 1);
    eff.type("Filter");
  }
  eff.end();
  return 1;
}
