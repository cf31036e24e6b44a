// Sine Audio Generator: declared, so that menus and projects find it; it has no fields and renders nothing
// yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessAudioSineGeneratorDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("AudioSineGen (Zo2)", "Sources/Sine Audio Generator", 4);
  eff.end();
  return 1;
}
