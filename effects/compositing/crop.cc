// Crop: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessCropDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  if (zol::hostIs(host, "Halvenor")) {
    eff.begin("Crop Zo2 native", "Compositing/Crop", 3);
  } else {
    eff.begin("Crop Qb5 native", "Filters/Standard/Crop", 1);
  }
  eff.end();
  return 1;
}
