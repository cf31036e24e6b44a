// Bluescreen: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessBluescreenDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Standard/Bluescreen" : "Compositing/Bluescreen";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Bluescreen Zo2 native", name, 1);
  eff.type("Filter");
  eff.end();
  return 1;
}
