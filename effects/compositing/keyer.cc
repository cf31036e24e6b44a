// Keyer: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessKeyer2Declare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("UniKeyer Zo1 native", "Compositing/Keyer", 1);
  eff.end();
  return 1;
}
