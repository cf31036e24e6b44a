// Runs a check at every SIMD level that the machine has.
#pragma once

#include "kernels/simd/levels.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol::test {

inline std::vector<SimdLevel> levels() {
  std::vector<SimdLevel> runs;
  for (int i = 0; i < kSimdLevels; ++i) {
    const auto level = static_cast<SimdLevel>(i);
    capSimdLevel(level);
    if (simdLevel() == level)
      runs.push_back(level);
  }
  capSimdLevel(kWidestLevel);
  return runs;
}

template <class Check> void atEveryLevel(Check check) {
  for (const SimdLevel level : levels()) {
    capSimdLevel(level);
    SCOPED_TRACE(levelName(level));
    check();
  }
  capSimdLevel(kWidestLevel);
}

} // namespace zol::test
