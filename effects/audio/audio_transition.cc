// Audio Transition: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

ZOL_EXPORT int ProcessAudioTransitionDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Audio Transition [PW]", "Audio/Transitions/Audio Transition", 1);
  eff.iconMode("one");
  eff.end();
  return 1;
}
