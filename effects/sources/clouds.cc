// Clouds Generator: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessCloudsDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Clouds generator (Zo2)", "Sources/Clouds Generator", 10);
  eff.end();
  return 1;
}
