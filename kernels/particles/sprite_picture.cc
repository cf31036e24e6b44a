#include "kernels/particles/sprite_picture.h"

#include "kernels/color/wide.h"
#include "kernels/particles/particle_rows.h"

#include <algorithm>

namespace zol {
namespace {

constexpr int halfOf(int size) { return (size + 1) / 2; }

/// A border on every side, one more pixel that samples read and do not count.
size_t pixelsOf(int width, int height) {
  return (static_cast<size_t>(width) + 3) * (static_cast<size_t>(height) + 3);
}

/// Of a picture and all of its halves.
size_t pixelsOfAll(int width, int height) {
  if (width <= 0 || height <= 0)
    return 0;
  size_t count = pixelsOf(width, height);
  while (width > 1 || height > 1) {
    width = halfOf(width);
    height = halfOf(height);
    count += pixelsOf(width, height);
  }
  return count;
}

WidePixel *rowOf(const SpriteSize &size, int y) { // within the border
  return const_cast<WidePixel *>(size.picture.pixels) + ptrdiff_t{y + 1} * size.picture.step() + 1;
}
int columnsOf(const SpriteSize &size) { return size.picture.width - 2; }
int rowsOf(const SpriteSize &size) { return size.picture.height - 2; }

} // namespace

SpritePicture::SpritePicture(const pic &picture, bool usesAlpha)
    : width_(picture.Width), height_(picture.Height), pixels_(pixelsOfAll(width_, height_)),
      row_(static_cast<size_t>(std::max(width_, 0))) {
  if (*this && !isEmpty())
    fill(picture, usesAlpha);
}

void SpritePicture::fill(const pic &picture, bool usesAlpha) {
  const size_t all = pixelsOfAll(width_, height_);
  std::fill_n(pixels_.data(), all, WidePixel{});
  WidePixel *at = pixels_.data();
  int width = width_, height = height_;
  for (double scale = 1;; scale *= 2) {
    sizes_[count_++] = {{at, width + 2, height + 2}, width_ / scale, height_ / scale};
    if (width == 1 && height == 1)
      break;
    at += pixelsOf(width, height);
    width = halfOf(width);
    height = halfOf(height);
  }
  for (int y = 0; y < height_; ++y) {
    std::copy_n(picture.Pixels + ptrdiff_t{y} * width_, width_, row_.data());
    for (int x = 0; !usesAlpha && x < width_; ++x)
      row_[static_cast<size_t>(x)].a = 255;
    ZOL_SELECT(toWide)(row_.data(), rowOf(sizes_[0], y), width_);
  }
  for (int i = 1; i < count_; ++i)
    halve(sizes_[i - 1], sizes_[i]);
  uint16_t *lanes = &pixels_.data()->b;
  for (size_t i = 0; i < 4 * all; ++i)
    lanes[i] ^= 0x8000;
}

/// Beyond an odd number of pixels the border is taken for one more.
void SpritePicture::halve(const SpriteSize &from, const SpriteSize &to) const {
  const auto halveRow = ZOL_SELECT(halveValues);
  for (int y = 0; y < rowsOf(to); ++y)
    halveRow(rowOf(from, 2 * y), rowOf(from, 2 * y + 1), rowOf(to, y), columnsOf(to));
}

const SpriteSize &SpritePicture::atLeast(double width) const {
  int i = 0;
  while (i + 1 < count_ && sizes_[i + 1].width >= width)
    ++i;
  return sizes_[i];
}

} // namespace zol
