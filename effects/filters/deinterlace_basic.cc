// Deinterlace Basic: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessDeinterlace2Declare(t_ZoHostInfo *host) {
  const char *name =
      zol::hostIs(host, "Quorbel") ? "Filters/Standard/Deinterlace Basic" : "Filters/Deinterlace Basic";
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Deinterlace Basic 1.0 (Zo2)", name, 1);
  eff.end();
  return 1;
}
