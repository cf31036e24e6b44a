// Switcher: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessMultiswitcherDeclare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Multiswitcher Zo2 native", "Compositing/Switcher", 3);
  eff.end();
  return 1;
}
