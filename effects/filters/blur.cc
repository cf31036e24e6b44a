// Blur: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessBlurDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Standard/Blur" : "Filters/Blur";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Blur 1.0 (Zo2)", name, 10);
  eff.end();
  return 1;
}
