// Perspective: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessPerspectiveDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  if (zol::hostIs(host, "Halvenor")) {
    eff.begin("Perspective Zo2 native", "Compositing/Perspective", 2);
  } else {
    eff.begin("Perspective Qb5 adapted", "Filters/Special/Perspective", 1);
    eff.type("Filter");
  }
  eff.end();
  return 1;
}
