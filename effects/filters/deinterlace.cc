// Deinterlace: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessDeinterlaceDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Standard/Deinterlace" : "Filters/Deinterlace";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Deinterlace 1.0 (Zo2)", name, 1);
  eff.end();
  return 1;
}
