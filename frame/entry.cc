// The border: the entry that a host calls once after it loaded the library.

#include "frame/effects.h"
#include "frame/export.h"
#include "frame/texts.h"
#include "frame/zol.h"

#include <algorithm>
#include <iterator>

__attribute__((visibility("default"))) const char *COMMON_STR[10];

ZOL_EXPORT int ZoDeclare(t_ZoHostInfo *host) {
  static constexpr const char *kTexts[] = {
      "O&K", "&Cancel", zol::kBackgroundLabel, zol::kMemoryAllocationError, "Geometry", "see curve",
  };
  std::copy(std::begin(kTexts), std::end(kTexts), COMMON_STR);

#define ZOL_EFFECT(name, file) Process##name##Declare(host);
#include "frame/effects.inc"
#undef ZOL_EFFECT
  ProcessStarGen2Declare();
  return 1;
}
