#include "kernels/compositing/shadow_rows.h"

#include "kernels/compositing/cast_shadow.h"

#include <algorithm>
#include <utility>

namespace zol {

ShadowRows::ShadowRows(const uint16_t *alphas, int width, int height, int left, int top,
                       const ShadowLook &look)
    : alphas_(alphas), width_(width), height_(height), left_(left), top_(top), look_(look), x_(-look.right),
      y_(-look.down), values_(3 * (static_cast<size_t>(width) + 1)) {}

/// Row y of the plane, or the nearest one: moved by whole pixels, filled up at its ends, with its gain.
const uint16_t *ShadowRows::prepared(int y) {
  y = std::clamp(y, 0, height_ - 1);
  const int count = width_ + 1;
  uint16_t *row = values_.data() + (y & 1) * count;
  if (std::exchange(held_[y & 1], y) == y)
    return row;
  const uint16_t *from = alphas_ + ptrdiff_t{y} * width_;
  const int begin = std::clamp(-x_.whole, 0, count), end = std::clamp(width_ - x_.whole, begin, count);
  std::fill_n(row, begin, from[0]);
  std::copy_n(from + begin + x_.whole, end - begin, row + begin);
  std::fill_n(row + end, count - end, from[width_ - 1]);
  if (look_.gain != 4096)
    ZOL_SELECT(thicken)(row, count, look_.gain);
  return row;
}

void ShadowRows::cast(int y, const _color_t *hidden, _color_t *out) {
  const uint16_t *above = prepared(y + y_.whole), *below = prepared(y + y_.whole + 1);
  uint16_t *seen = values_.data() + 2 * (static_cast<size_t>(width_) + 1);
  ZOL_SELECT(sampleRow)(above, below, SampleWeights(x_.part, y_.part), seen, width_);
  const Rounding rounding = look_.dithers ? Rounding::dithered(left_, top_ + y) : Rounding::nearest();
  ZOL_SELECT(castShadow)(seen, look_.opacity, rounding, look_.color, hidden, out, width_);
}

} // namespace zol
