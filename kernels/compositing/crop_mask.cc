#include "kernels/compositing/crop_mask.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

double inWhole256ths(double pixels) { return std::floor(256 * pixels + 0.5) / 256; }

/// No wider than twice what is cut: a side that is not cut stays hard, and none jumps when it begins to be.
double fadeOf(double cut, double softness) { return std::max(1.0, std::min(softness, 2 * cut)); }

/// Of a pixel whose centre lies so far inside a side.
int sideCoverage(double inside, double fade) {
  const auto t = static_cast<int>(std::clamp(std::floor(256 * (inside + 0.5) / fade + 0.5), 0.0, 256.0));
  return fade > 1 ? t * t * (768 - 2 * t) >> 16 : t;
}

/// In heights of a pixel.
double insetOf(int width, int height, const CropLook &look) {
  return look.inset * std::min(width * look.aspect, double(height)) / 2;
}
CropSpan columnsOf(int width, int height, const CropLook &look) {
  const double inset = insetOf(width, height, look) / look.aspect;
  return {width, look.left * width + inset, look.right * width + inset, look.softness};
}
CropSpan rowsOf(int width, int height, const CropLook &look) {
  const double inset = insetOf(width, height, look);
  return {height, look.top * height + inset, look.bottom * height + inset, look.softness * look.aspect};
}

} // namespace

CropSpan::CropSpan(int pixels, double cutBefore, double cutBehind, double softness)
    : size(pixels), begin(inWhole256ths(cutBefore)), end(pixels - inWhole256ths(cutBehind)),
      fadeBefore(fadeOf(cutBefore, softness)), fadeBehind(fadeOf(cutBehind, softness)) {}

int CropSpan::coverage(int pixel) const {
  const double center = pixel + 0.5;
  const int before = sideCoverage(center - begin, fadeBefore);
  return std::max(0, before + sideCoverage(end - center, fadeBehind) - 256);
}

CropPixels CropSpan::touched() const {
  const int first = static_cast<int>(std::clamp<double>(std::floor(begin), 0, size - 1));
  return {first, static_cast<int>(std::clamp<double>(std::ceil(end), first + 1, size))};
}

CropMask::CropMask(int width, int height, const CropLook &look)
    : columns_(columnsOf(width, height, look)), down_(rowsOf(width, height, look)), aspect_(look.aspect),
      radius_(look.roundness * std::max(0.0, std::min(columns_.length() * aspect_, down_.length())) / 2),
      rows_(2 * size_t(width)) {
  for (int x = 0; rows_ && x < width; ++x)
    rows_[size_t(x)] = static_cast<uint16_t>(columns_.coverage(x));
}

const uint16_t *CropMask::row(int y) {
  const double center = y + 0.5;
  const bool hasCorners = center < down_.begin + radius_ || center > down_.end - radius_;
  const int coverage = down_.coverage(y);
  if (coverage == 256 && !hasCorners)
    return rows_.data();
  uint16_t *const row = rows_.data() + columns_.size;
  ZOL_SELECT(scaleCoverage)(rows_.data(), coverage, row, columns_.size);
  if (hasCorners && radius_ > 0)
    roundEnds(center, row);
  return row;
}

void CropMask::roundEnds(double center, uint16_t *row) const {
  const bool above = center < (down_.begin + down_.end) / 2;
  const double down = above ? down_.begin + radius_ - center : center - (down_.end - radius_);
  const double fadeDown = (above ? down_.fadeBefore : down_.fadeBehind) - 1;
  const double across = radius_ / aspect_;
  const auto roundEnd = [&](int first, int end, double middle, double fade) {
    const RoundCorner corner = {static_cast<float>((first + 0.5 - middle) * aspect_),
                                static_cast<float>(aspect_),
                                static_cast<float>(down),
                                static_cast<float>(radius_),
                                static_cast<float>((fade - 1) * aspect_),
                                static_cast<float>(fadeDown)};
    if (end > first)
      ZOL_SELECT(roundCoverage)(corner, row + first, end - first);
  };
  // Pixels whose centres lie before the corner's circle's, or behind it.
  const auto column = [this](double x) {
    return static_cast<int>(std::clamp<double>(std::ceil(x - 0.5), 0, columns_.size));
  };
  roundEnd(0, column(columns_.begin + across), columns_.begin + across, columns_.fadeBefore);
  roundEnd(column(columns_.end - across), columns_.size, columns_.end - across, columns_.fadeBehind);
}

} // namespace zol
