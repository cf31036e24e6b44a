#include "kernels/matte/extend_colors.h"

namespace zol {
namespace {

/// How many pixels all the smaller sizes of a picture have.
size_t pixelsOfLevels(int width, int height) {
  size_t pixels = 0;
  do {
    width = (width + 1) / 2;
    height = (height + 1) / 2;
    pixels += static_cast<size_t>(width) * static_cast<size_t>(height);
  } while (width > 1 || height > 1);
  return pixels;
}

} // namespace

ExtendedColors::ExtendedColors(int width, int height)
    : width_(width), height_(height), pixels_(pixelsOfLevels(width, height)) {
  ptrdiff_t begin = 0;
  do {
    width = (width + 1) / 2;
    height = (height + 1) / 2;
    levels_[count_++] = {width, height, begin};
    begin += ptrdiff_t{width} * height;
  } while (width > 1 || height > 1);
}

void ExtendedColors::halve(const _color_t *pixels, int level, int y) {
  const Level from = level > 0 ? levels_[level - 1] : Level{width_, height_, 0};
  const _color_t *const upper =
      level > 0 ? row(level - 1, 2 * y) : pixels + ptrdiff_t{2} * y * ptrdiff_t{width_};
  halve_(upper, 2 * y + 1 < from.height ? upper + from.width : nullptr, from.width, row(level, y));
}

} // namespace zol
