// Media Source: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

namespace {

void declareRecord(t_ZoHostInfo *host, const char *sign, const char *name, int version) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin(sign, name, version);
  eff.iconMode("One+Saw");
  eff.end();
}

} // namespace

ZOL_EXPORT int ProcessMediaSourceDeclare(t_ZoHostInfo *host) {
  if (zol::hostIs(host, "Quorbel")) {
    declareRecord(host, "Qb5 VideoSource [rul]", "Sources/Video Source", 1);
    declareRecord(host, "Qb5 AudioSource [rul]", "Sources/Audio Source", 1);
  } else {
    declareRecord(host, "Media Source Zo2 native", "Sources/Media Source", 10);
  }
  return 1;
}
