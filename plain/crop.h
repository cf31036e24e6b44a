// A crop in its plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cmath>

namespace zol::plain {

/// Of pixel i of a round corner's row, in the numbers of that row.
template <class Corner> int cornerCoverage(const Corner &corner, int i) {
  const float across = corner.start + corner.perColumn * static_cast<float>(i);
  const float squareAcross = across * across, square = squareAcross + corner.down * corner.down;
  const float x = squareAcross / std::max(square, 1e-6F), y = 1 - x;
  const float pixel = corner.perColumn * x + y;
  const float faded = pixel + (corner.fadeAcross * x + corner.fadeDown * y);
  const float width = std::max(pixel, std::min(faded, 2 * corner.radius));
  const float inside = 256 * (corner.radius - std::sqrt(square)) + 128 * pixel;
  const int t = static_cast<int>(std::clamp(inside / width + 0.5F, 0.0F, 256.0F));
  return width > pixel ? t * t * (768 - 2 * t) >> 16 : t;
}

struct Crop {
  int width, height;
  double left, right, top, bottom, inset, roundness; ///< shares
  double softness, aspect;

  /// What is kept of the picture's pixel, 256 = whole.
  [[nodiscard]] int coverage(int x, int y) const {
    const Side w = sideOf(left * width + insetAcross(), softness);
    const Side e = sideOf(right * width + insetAcross(), softness);
    const Side n = sideOf(top * height + insetDown(), softness * aspect);
    const Side s = sideOf(bottom * height + insetDown(), softness * aspect);
    const auto pair = [](const Side &a, const Side &b, double before, double behind) {
      return std::max(0, a.coverage(before - a.cut) + b.coverage(behind - b.cut) - 256);
    };
    const double px = x + 0.5, py = y + 0.5;
    const int both = (pair(w, e, px, width - px) * pair(n, s, py, height - py) + 128) >> 8;
    const double across = width - w.cut - e.cut, down = height - n.cut - s.cut;
    const double radius = roundness * std::max(0.0, std::min(across * aspect, down)) / 2;
    const bool isWest = px<w.cut + radius / aspect, isEast = px> width - e.cut - radius / aspect;
    const bool isNorth = py<n.cut + radius, isSouth = py> height - s.cut - radius;
    if (radius == 0 || !(isWest || isEast) || !(isNorth || isSouth))
      return both;
    // From the corner's centre.
    const double dx =
        (isWest ? w.cut + radius / aspect - px : px - (width - e.cut - radius / aspect)) * aspect;
    const double dy = isNorth ? n.cut + radius - py : py - (height - s.cut - radius);
    const double square = std::max(1e-6, dx * dx + dy * dy), distance = std::sqrt(square);
    const double ofX = dx * dx / square, ofY = 1 - ofX, pixel = aspect * ofX + ofY;
    const double fade =
        std::max(0.0, ((isWest ? w : e).fade - 1) * aspect * ofX + ((isNorth ? n : s).fade - 1) * ofY);
    const double wide = std::max(pixel, std::min(pixel + fade, 2 * radius));
    return std::min(both, smooth((radius - distance + pixel / 2) / wide, wide > pixel));
  }

private:
  static int smooth(double ramp, bool isWide) {
    const int t = static_cast<int>(std::clamp(std::floor(256 * ramp + 0.5), 0.0, 256.0));
    return isWide ? t * t * (768 - 2 * t) >> 16 : t;
  }
  struct Side {
    double cut, fade;
    [[nodiscard]] int coverage(double inside) const { return smooth((inside + 0.5) / fade, fade > 1); }
  };
  static Side sideOf(double cut, double softness) {
    return {std::floor(256 * cut + 0.5) / 256, std::max(1.0, std::min(softness, 2 * cut))};
  }
  [[nodiscard]] double insetDown() const { return inset * std::min(width * aspect, double(height)) / 2; }
  [[nodiscard]] double insetAcross() const { return insetDown() / aspect; }
};

} // namespace zol::plain
