// Where two pictures of the frame meet.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstddef>

namespace zol {

/// The part of one picture that another covers: columns left to right and rows top to bottom of the one,
/// the ends not included, within the picture. Where they do not meet, left = right and top = bottom.
struct Overlap {
  int left, top, right, bottom;

  Overlap(const pic &picture, const pic &cover)
      : left(std::clamp(cover.X - picture.X, 0, std::max<int>(picture.Width, 0))),
        top(std::clamp(cover.Y - picture.Y, 0, std::max<int>(picture.Height, 0))),
        right(std::clamp(cover.X + cover.Width - picture.X, left, std::max<int>(picture.Width, left))),
        bottom(std::clamp(cover.Y + cover.Height - picture.Y, top, std::max<int>(picture.Height, top))) {
    if (left == right || top == bottom) {
      right = left;
      bottom = top;
    }
  }
};

/// The pixel of `cover` at the same place of the frame as (x, y) of `picture`.
inline size_t coverIndex(const pic &picture, const pic &cover, int x, int y) {
  return static_cast<size_t>(picture.Y - cover.Y + y) * static_cast<size_t>(cover.Width) +
         static_cast<size_t>(picture.X - cover.X + x);
}

} // namespace zol
