// Spread: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessSpreadDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Special/Spread" : "Filters/Spread";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Spread Zo2 native", name, 1);
  eff.end();
  return 1;
}
