// Colours for pixels of alpha 0, from those around them that have alpha.
#pragma once

#include "kernels/matte/extend_rows.h"
#include "kernels/simd/scratch.h"

namespace zol {

/// A picture at half its size, at half of that and so on down to one pixel, colours weighed by alpha. A pixel
/// of alpha 0 takes the colour of the smallest square around it in which there is any alpha, 0 where there is
/// none at all: what is hidden under alpha 0 never shows.
class ExtendedColors {
public:
  /// A picture that is not empty. Tests as false afterwards when memory ran out.
  ExtendedColors(int width, int height);

  explicit operator bool() const { return static_cast<bool>(pixels_); }

  /// Gathers the colours of the picture. Asks goesOn() after each row of each size, and gives up with false
  /// as soon as it answers false.
  template <class GoesOn> bool gather(const _color_t *pixels, GoesOn goesOn) {
    for (int i = 0; i < count_; ++i)
      for (int y = 0; y < levels_[i].height; ++y) {
        halve(pixels, i, y);
        if (!goesOn())
          return false;
      }
    for (int i = count_ - 2; i >= 0; --i)
      for (int y = 0; y < levels_[i].height; ++y) {
        adopt_(row(i + 1, y / 2), row(i, y), levels_[i].width);
        if (!goesOn())
          return false;
      }
    return true;
  }

  /// The colours for row y of the picture, one for every two pixels, as extendRow takes them.
  [[nodiscard]] const _color_t *row(int y) const { return row(0, y / 2); }

private:
  struct Level {
    int width, height;
    ptrdiff_t begin; ///< in pixels_
  };
  static constexpr int kMaxLevels = 16; ///< sizes are below 2^15

  void halve(const _color_t *pixels, int level, int y);
  [[nodiscard]] _color_t *row(int level, int y) const {
    return pixels_.data() + levels_[level].begin + ptrdiff_t{y} * levels_[level].width;
  }

  const decltype(ZOL_SELECT(halveRow)) halve_ = ZOL_SELECT(halveRow);
  const decltype(ZOL_SELECT(adoptRow)) adopt_ = ZOL_SELECT(adoptRow);
  int width_, height_;
  int count_ = 0; ///< of levels, the first of which is half the picture
  Level levels_[kMaxLevels];
  Scratch<_color_t> pixels_;
};

} // namespace zol
