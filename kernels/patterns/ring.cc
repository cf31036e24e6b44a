#include "kernels/patterns/ring.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

constexpr int kLines = 16;          // that are looked at in a row
constexpr int kFull = 256 * kLines; // the area of a pixel

uint8_t mixed(int under, int over, int cover) {
  return static_cast<uint8_t>((under * (kFull - cover) + over * cover + kFull / 2) / kFull);
}

} // namespace

Ring::Ring(const Ellipse &outer, const Ellipse &inner, int width)
    : outer_(outer), inner_(inner), width_(width), area_(static_cast<size_t>(width) + 2) {}

/// Where a line of the height y crosses the disc.
void Ring::addDisc(const Ellipse &disc, double y, int sign) {
  const double away = (y - disc.y) / disc.radiusY;
  if (!(disc.radiusX > 0 && disc.radiusY > 0 && std::fabs(away) < 1))
    return;
  const double half = disc.radiusX * std::sqrt(1 - away * away);
  const auto addEdge = [this](double x, int by) {
    const int at = static_cast<int>(std::floor(256 * std::clamp<double>(x, 0, width_) + 0.5));
    area_[static_cast<size_t>(at >> 8)] += by * (256 - (at & 255));
    area_[static_cast<size_t>(at >> 8) + 1] += by * (at & 255);
  };
  addEdge(disc.x - half, sign);
  addEdge(disc.x + half, -sign);
}

void Ring::drawRow(int y, _color_t color, _color_t *row) {
  std::fill_n(area_.data(), width_ + 2, 0);
  for (int line = 0; line < kLines; ++line) {
    const double at = y + (line + 0.5) / kLines;
    addDisc(outer_, at, 1);
    addDisc(inner_, at, -1);
  }
  int cover = 0;
  for (int x = 0; x < width_; ++x) {
    cover += area_[static_cast<size_t>(x)];
    if (cover != 0)
      row[x] = {mixed(row[x].b, color.b, cover), mixed(row[x].g, color.g, cover),
                mixed(row[x].r, color.r, cover), 255};
  }
}

} // namespace zol
