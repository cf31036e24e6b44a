#include "kernels/simd/levels.h"

#include <atomic>

namespace zol {
namespace {

std::atomic<SimdLevel> levelCap{SimdLevel::avx2};

} // namespace

SimdLevel simdLevel() {
  const SimdLevel cap = levelCap.load(std::memory_order_relaxed);
  return cap == SimdLevel::avx2 && __builtin_cpu_supports("avx2") ? SimdLevel::avx2 : SimdLevel::sse2;
}

void capSimdLevel(SimdLevel cap) { levelCap.store(cap, std::memory_order_relaxed); }

} // namespace zol
