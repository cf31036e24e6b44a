// Fill Geometry: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessFillAndShadowDeclare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("FillGeometry Zo2 native", "Geometry Shading/Fill Geometry", 1);
  eff.end();
  return 1;
}
