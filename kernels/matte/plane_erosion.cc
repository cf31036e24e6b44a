#include "kernels/matte/plane_erosion.h"

#include "kernels/simd/transpose.h"

#include <algorithm>

namespace zol {
namespace {

constexpr int kLanes = kErodeMaxLanes;

/// A radius in lines of which there are `count`; beyond the last of them it reaches nothing new.
ErodeReach reachOf(float radius, int count) {
  if (!(radius > 0))
    return {0, 0};
  if (radius >= static_cast<float>(count - 1))
    return {count - 1, 0};
  const int whole = static_cast<int>(radius);
  return {whole, static_cast<int>((radius - static_cast<float>(whole)) * 256 + 0.5F)};
}

} // namespace

PlaneErosion::PlaneErosion(float horizontalRadius, float verticalRadius, int width, int height)
    : width_(width), height_(height), along_(reachOf(horizontalRadius, width)),
      down_(reachOf(verticalRadius, height)),
      columns_(isCopy() ? 0 : static_cast<size_t>(std::max(2 * width, height)) * kLanes),
      work_(isCopy() ? 0 : std::max(along_.workLines(), down_.workLines()) * kLanes) {}

// Transposed, so that both directions are one filter over lines.
void PlaneErosion::alongBand(uint8_t *plane, int top) const {
  if (!along_.reaches())
    return;
  const int rows = std::min(kBandRows, height_ - top);
  uint8_t *const band = plane + ptrdiff_t{top} * width_;
  uint8_t *const eroded = columns_.data() + ptrdiff_t{width_} * kLanes;
  transpose(band, width_, rows, width_, columns_.data(), kLanes);
  ZOL_SELECT(erodeLines)(columns_.data(), kLanes, width_, rows, along_, work_.data(), eroded, kLanes);
  transpose(eroded, kLanes, width_, rows, band, width_);
}

void PlaneErosion::down(uint8_t *plane) const {
  if (!down_.reaches())
    return;
  const auto erode = ZOL_SELECT(erodeLines);
  for (int x = 0; x < width_; x += kLanes) {
    const int lanes = std::min(kLanes, width_ - x);
    erode(plane + x, width_, height_, lanes, down_, work_.data(), columns_.data(), kLanes);
    for (int y = 0; y < height_; ++y)
      std::copy_n(columns_.data() + ptrdiff_t{y} * kLanes, lanes, plane + ptrdiff_t{y} * width_ + x);
  }
}

} // namespace zol
