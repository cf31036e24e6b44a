// The border: the bounding boxes of geometries.
#pragma once

#include "frame/convert.h"

#include <algorithm>
#include <cstdint>

namespace zol {

struct PixelBox {
  int left, top, width, height;
};

/// The pixels that a box touches, at least one. An edge that lies exactly on a pixel border adds none.
inline PixelBox pixelsOfBox(const double box[4]) {
  constexpr double kBorder = 0.001;
  const int left = truncate(box[0]);
  const int top = truncate(box[1]);
  const int right = truncate(box[2] - kBorder);
  const int bottom = truncate(box[3] - kBorder);
  const auto extent = [](int first, int last) {
    return static_cast<int>(std::clamp<int64_t>(int64_t{last} - first + 1, 1, INT32_MAX));
  };
  return {left, top, extent(left, right), extent(top, bottom)};
}

} // namespace zol
