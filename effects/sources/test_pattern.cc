// Test Pattern Generator: declared, so that menus and projects find it; it has no fields and renders nothing
// yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessTestPatternDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Test Pattern Generator 1.0 (Zo2)", "Sources/Test Pattern Generator", 1);
  eff.end();
  return 1;
}
