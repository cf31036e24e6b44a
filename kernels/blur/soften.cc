#include "kernels/blur/soften.h"

#include "kernels/simd/transpose.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zol {

SoftBox::SoftBox(double radius) {
  if (!(radius > 0))
    return;
  constexpr double kMaxRadius = 65536; // the weights of all lines within reach still fit 16 bits
  const double r = std::min(radius, kMaxRadius);
  const double variance = r * r / 18;
  reach = static_cast<int>((std::sqrt(1 + 12 * variance) - 1) / 2);
  const double m = reach;
  const double end = (2 * m + 1) * (m * (m + 1) - 3 * variance) / (6 * (variance - (m + 1) * (m + 1)));
  for (whole = 256;; whole /= 2) {
    part = static_cast<int>(whole * end + 0.5);
    sum = static_cast<uint32_t>(whole * (2 * reach + 1) + 2 * part);
    if (sum <= 65536)
      break;
  }
  if (isCopy())
    return;
  const uint32_t half = sum / 2; // odd sums are not scaled
  int scale = 1;
  while (sum * static_cast<uint32_t>(scale) <= 32768)
    scale *= 2;
  whole *= scale;
  part *= scale;
  sum *= static_cast<uint32_t>(scale);
  rounding = half * static_cast<uint32_t>(scale);

  // 2^47 / sum, rounded to the nearer side: off by at most 2^15 / sum, which no n below 2^32 makes a whole
  // one of. Rounded down it takes an n that is one more.
  const uint64_t one = uint64_t{1} << 47;
  const uint64_t rest = one % sum;
  const bool up = rest == 0 || rest > sum / 2;
  reciprocal = static_cast<uint32_t>(one / sum + (up && rest != 0 ? 1 : 0));
  if (!up)
    ++rounding;
}

Softening::Softening(double horizontalRadius, double verticalRadius, int width, int height)
    : width_(width), height_(height), along_(horizontalRadius), down_(verticalRadius),
      lines_(isCopy() ? 0 : 3 * static_cast<size_t>(std::max(width, height)) * kSoftLanes) {}

/// The strips of columns whose turn it is: they are spread evenly over as many turns as there are rows.
void Softening::downStrips(uint16_t *plane, int turn) const {
  const auto soften = ZOL_SELECT(softenLines);
  const int strips = (width_ + kSoftLanes - 1) / kSoftLanes;
  const auto before = [&](int y) { return static_cast<int>(int64_t{strips} * y / height_); };
  for (int strip = before(turn); strip < before(turn + 1); ++strip) {
    uint16_t *const columns = plane + ptrdiff_t{strip} * kSoftLanes;
    if (const int lanes = width_ - strip * kSoftLanes; lanes >= kSoftLanes)
      soften(down_, columns, width_, height_, work(height_), columns, width_);
    else
      softenFew(columns, lanes);
  }
}

/// The last columns, where they are too few: beside any others, which the plane does not see.
void Softening::softenFew(uint16_t *columns, int lanes) const {
  uint16_t *const lines = lines_.data();
  const size_t bytes = static_cast<size_t>(lanes) * sizeof *lines;
  for (int y = 0; y < height_; ++y)
    std::memcpy(lines + ptrdiff_t{y} * kSoftLanes, columns + ptrdiff_t{y} * width_, bytes);
  ZOL_SELECT(softenLines)(down_, lines, kSoftLanes, height_, work(height_), lines, kSoftLanes);
  for (int y = 0; y < height_; ++y)
    std::memcpy(columns + ptrdiff_t{y} * width_, lines + ptrdiff_t{y} * kSoftLanes, bytes);
}

void Softening::alongBand(uint16_t *plane, int top) const {
  uint16_t *const band = plane + ptrdiff_t{top} * width_;
  uint16_t *const lines = lines_.data();
  const int rows = std::min(kSoftLanes, height_ - top);
  transpose(band, width_, rows, width_, lines, kSoftLanes);
  ZOL_SELECT(softenLines)(along_, lines, kSoftLanes, width_, work(width_), lines, kSoftLanes);
  transpose(lines, kSoftLanes, width_, rows, band, width_);
}

} // namespace zol
