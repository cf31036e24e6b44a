#include "kernels/warp/warp_source.h"

#include <cstring>

namespace zol {
namespace {

bool isOpaque(const _color_t *pixels, int count) {
  uint32_t all = 0xFF000000;
  for (int i = 0; i < count; ++i) {
    uint32_t pixel;
    std::memcpy(&pixel, pixels + i, sizeof pixel);
    all &= pixel;
  }
  return all == 0xFF000000;
}

} // namespace

WarpSource WarpSource::of(const _color_t *pixels, int step, int width, int height) {
  bool opaque = true;
  for (int y = 0; opaque && y < height; ++y)
    opaque = isOpaque(pixels + ptrdiff_t{y} * step, width);
  return {pixels, step, width, height, opaque};
}

WarpSource WarpSource::of(const pic &picture) {
  return of(picture.Pixels, picture.Width, picture.Width, picture.Height);
}

} // namespace zol
