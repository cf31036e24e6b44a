// Overlay: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessOverlayDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Standard/Overlay" : "Filters/Overlay";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Overlay for Qb4", name, 1);
  eff.type("Filter");
  eff.end();
  return 1;
}
