// Mix: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessMixDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Transitions/Dissolve/Mix" : "Compositing/Mix";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Mix Zo2 native", name, 1);
  eff.end();
  return 1;
}
