// Comparing pictures: where they lie and every byte of them.
#pragma once

#include "frame/zol.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace zol::test {

/// The same place, size and pixels; says where they first differ.
inline testing::AssertionResult samePixels(const pic &got, const pic &want) {
  if (got.X != want.X || got.Y != want.Y || got.Width != want.Width || got.Height != want.Height)
    return testing::AssertionFailure()
           << got.Width << " by " << got.Height << " at " << got.X << ", " << got.Y << " instead of "
           << want.Width << " by " << want.Height << " at " << want.X << ", " << want.Y;
  for (ptrdiff_t i = 0; i < ptrdiff_t{want.Width} * want.Height; ++i)
    if (std::memcmp(&got.Pixels[i], &want.Pixels[i], sizeof(_color_t)) != 0)
      return testing::AssertionFailure() << "pixel " << i % want.Width << ", " << i / want.Width;
  return testing::AssertionSuccess();
}

} // namespace zol::test
