// Runs a check at every SIMD level that the machine has.
#pragma once

#include "kernels/simd/levels.h"

#include <gtest/gtest.h>

namespace zol::test {

template <class Check> void atEveryLevel(Check check) {
  for (const SimdLevel level : {SimdLevel::sse2, SimdLevel::avx2}) {
    capSimdLevel(level);
    if (simdLevel() == level) {
      SCOPED_TRACE(level == SimdLevel::avx2 ? "avx2" : "sse2");
      check();
    }
  }
  capSimdLevel(SimdLevel::avx2);
}

} // namespace zol::test
