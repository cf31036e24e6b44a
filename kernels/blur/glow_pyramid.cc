#include "kernels/blur/glow_pyramid.h"

#include <cmath>

namespace zol {
namespace {

/// Pixels from a row to the next: margins let the kernels read and write whole vectors.
size_t stepOf(int width) { return static_cast<size_t>(width) + 2 * kGlowMargin; }

int half(int size) { return (size + 1) / 2; }

/// Where the widest level is `widest`, each one's weight; all of them are 1.
void addProfile(int widest, double falloff, double share, double *weights) {
  double sum = 0;
  const auto weight = [=](int level) { return widest == 0 ? 1 : std::pow(1 - falloff, widest - level); };
  const int nearest = std::min(widest, 1);
  for (int level = nearest; level <= widest; ++level)
    sum += weight(level);
  for (int level = nearest; level <= widest; ++level)
    weights[level] += share * weight(level) / sum;
}

/// Repeats the pixels at the ends of a row.
void repeatEnds(WidePixel *row, int width) {
  row[-1] = row[0];
  row[width] = row[width + 1] = row[width - 1];
}

} // namespace

GlowProfile::GlowProfile(double radius, double falloff) {
  // A level's light lies as far out as that of a soft disc of its own pixels.
  const double widest = std::log2(std::clamp(0.577 * radius, 1.0, 0x1p30));
  const int steps = static_cast<int>(widest * 4096);
  const int whole = steps >> 12;
  const double rest = (steps & 4095) / 4096.0;
  double weights[kMostLevels] = {};
  addProfile(whole, falloff, 1 - rest, weights);
  if (rest > 0)
    addProfile(whole + 1, falloff, rest, weights);
  levels_ = rest > 0 ? whole + 1 : whole;
  double sum = 0; // of this level and the wider ones
  for (int level = levels_; level >= 0; --level) {
    sum += weights[level];
    parts_[level] = static_cast<int>(std::floor(4096 * weights[level] / sum + 0.5));
  }
}

GlowPyramid::GlowPyramid(const GlowProfile &profile, int width, int height)
    : profile_(profile), pixels_([&] {
        size_t count = 0;
        for (int level = 0; level <= profile.levels(); ++level) {
          const int rows = level == 0 ? kLightRows : height;
          levels_[level] = {width, height, stepOf(width), nullptr};
          count += static_cast<size_t>(rows) * stepOf(width);
          width = half(width);
          height = half(height);
        }
        return count;
      }()),
      rows_(2 * stepOf(levels_[0].width)) {
  WidePixel *next = pixels_.data();
  for (int level = 0; next != nullptr && level <= profile_.levels(); ++level) {
    Level &l = levels_[level];
    l.pixels = next + kGlowMargin;
    next += static_cast<size_t>(level == 0 ? kLightRows : l.height) * l.step;
  }
}

void GlowPyramid::halve(int level, int y) {
  const int width = levels_[level - 1].width;
  const auto above = [&](int offset) { return rowOf(level - 1, 2 * y + offset); };
  WidePixel *column = rows_.data() + kGlowMargin;
  ZOL_SELECT(halveColumns)(above(-1), above(0), above(1), above(2), column, width);
  repeatEnds(column, width);
  ZOL_SELECT(halveRow)(column, rowOf(level, y), levels_[level].width);
}

/// Row y of a level, made from the next wider one.
const WidePixel *GlowPyramid::doubled(int level, int y) {
  const int width = levels_[level + 1].width;
  WidePixel *column = rows_.data() + kGlowMargin, *row = column + stepOf(levels_[0].width);
  ZOL_SELECT(doubleColumns)
  (rowOf(level + 1, y / 2), rowOf(level + 1, y % 2 == 0 ? y / 2 - 1 : y / 2 + 1), column, width);
  repeatEnds(column, width);
  ZOL_SELECT(doubleRow)(column, row, width);
  return row;
}

void GlowPyramid::mix(int level, int y) {
  ZOL_SELECT(mixWide)(rowOf(level, y), doubled(level, y), 4096 - profile_.part(level), levels_[level].width);
}

const WidePixel *GlowPyramid::row(int y, WidePixel *light) {
  if (profile_.levels() == 0)
    return light;
  const WidePixel *wider = doubled(0, y);
  if (!needsLight())
    return wider;
  ZOL_SELECT(mixWide)(light, wider, 4096 - profile_.part(0), levels_[0].width);
  return light;
}

} // namespace zol
