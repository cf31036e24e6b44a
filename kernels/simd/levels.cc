#include "kernels/simd/levels.h"

#include <atomic>

namespace zol {
namespace {

std::atomic<SimdLevel> levelCap{kWidestLevel};

bool runs(SimdLevel level) {
  switch (level) {
#define ZOL_LEVEL_CASE(name, ...)                                                                            \
  case SimdLevel::name: return ZOL_RUNS_##name;
    ZOL_EVERY_LEVEL(ZOL_LEVEL_CASE, )
#undef ZOL_LEVEL_CASE
  }
  return false;
}

} // namespace

SimdLevel simdLevel() {
  int level = static_cast<int>(levelCap.load(std::memory_order_relaxed));
  while (level > 0 && !runs(static_cast<SimdLevel>(level)))
    --level;
  return static_cast<SimdLevel>(level);
}

void capSimdLevel(SimdLevel cap) { levelCap.store(cap, std::memory_order_relaxed); }

} // namespace zol
