// Recolor: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessRecolorDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Recolor Zo2 native", "Filters/Color/Recolor", 2);
  eff.end();
  return 1;
}
