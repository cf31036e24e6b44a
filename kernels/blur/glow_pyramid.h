// Light spread over a picture: a bright core and a wide tail, at one price for every radius.
#pragma once

#include "kernels/blur/glow_rows.h"
#include "kernels/simd/scratch.h"

#include <algorithm>

namespace zol {

/// How far light spreads, and how it thins out.
class GlowProfile {
public:
  static constexpr int kMostLevels = 32;

  /// `radius` in pixels, 0 for less; falloff 0 to 1: the greater, the less of the light stays near its
  /// source.
  GlowProfile(double radius, double falloff);

  /// The widest level, and each one's part (4096 = 1.0) in its mixture with the wider ones.
  [[nodiscard]] int levels() const { return levels_; }
  [[nodiscard]] int part(int level) const { return parts_[level]; }

private:
  int levels_;
  int parts_[kMostLevels];
};

/// Halves the light again and again, and doubles it again while the levels are mixed: level 0 is the light
/// itself, which is made when it is needed and never kept. The picture is not empty.
class GlowPyramid {
public:
  GlowPyramid(const GlowProfile &profile, int width, int height);
  /// Whether memory could be had.
  explicit operator bool() const { return pixels_ && rows_; }

  /// Whether row() looks at the light.
  [[nodiscard]] bool needsLight() const { return profile_.part(0) != 0; }

  /// Spreads the light, of which light(y, row) writes row y, each once and from the top on. Asks goesOn()
  /// after each row of all levels, and gives up with false as soon as it answers false.
  template <class Light, class GoesOn> bool spread(Light light, GoesOn goesOn) {
    int next = 0; // row of the light
    for (int level = 1; level <= profile_.levels(); ++level)
      for (int y = 0; y < levels_[level].height; ++y) {
        for (; level == 1 && next < levels_[0].height && next <= 2 * y + 2; ++next)
          light(next, rowOf(0, next));
        halve(level, y);
        if (!goesOn())
          return false;
      }
    for (int level = profile_.levels() - 1; level >= 1; --level)
      for (int y = 0; y < levels_[level].height; ++y) {
        mix(level, y);
        if (!goesOn())
          return false;
      }
    return true;
  }

  /// Row y of the spread light, from row y of the light where it is needed; valid until the next call.
  const WidePixel *row(int y, WidePixel *light);

private:
  /// Of level 0 a few rows are kept at a time.
  struct Level {
    int width, height;
    size_t step;
    WidePixel *pixels;
  };
  static constexpr int kLightRows = 4;

  [[nodiscard]] WidePixel *rowOf(int level, int y) const {
    const Level &l = levels_[level];
    const int kept = std::clamp(y, 0, l.height - 1);
    return l.pixels + static_cast<size_t>(level == 0 ? kept % kLightRows : kept) * l.step;
  }
  void halve(int level, int y);
  const WidePixel *doubled(int level, int y);
  void mix(int level, int y);

  GlowProfile profile_;
  Level levels_[GlowProfile::kMostLevels];
  Scratch<WidePixel> pixels_;
  Scratch<WidePixel> rows_; ///< two, to work in
};

} // namespace zol
