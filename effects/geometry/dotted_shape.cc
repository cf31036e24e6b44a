// Dotted Shape: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessDottDeclare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Dotted Shape Zo2 native", "Geometry Shading/Dotted Shape", 1);
  eff.end();
  return 1;
}
