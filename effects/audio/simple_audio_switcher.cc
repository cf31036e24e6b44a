// Simple Audio Switcher: declared, so that menus and projects find it; it has no fields and renders nothing
// yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessSimpleAudioSwitcherDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Simple Audio Switcher [rul]", "Audio/Filter/Simple Audio Switcher", 1);
  eff.iconMode("One+Saw");
  eff.end();
  return 1;
}
