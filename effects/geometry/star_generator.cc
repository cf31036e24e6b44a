// Star Generator: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessStarGenDeclare(t_ZoHostInfo *host) {
  const char *name =
      zol::hostIs(host, "Halvenor") ? "Geometry Shading/Star Generator" : "Filters/Special/Star Generator";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("StarGen Zo2 native", name, 3);
  eff.end();
  return 1;
}

ZOL_EXPORT int ProcessStarGen2Declare() { return 0; }
