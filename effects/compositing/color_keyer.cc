// Color Keyer: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessKeyerDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Color Keyer Qb5 native", "Filters/Standard/Color Keyer", 1);
  eff.type("Filter");
  eff.end();
  if (!zol::hostIs(host, "Halvenor"))
    return 1;
  eff.begin("Color Keyer Zo1 native", "Compositing/Color Keyer", 1);
  eff.end();
  return 1;
}
