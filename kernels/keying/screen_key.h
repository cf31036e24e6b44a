// The blue and green screen over pictures of the frame.
#pragma once

#include "frame/picture.h"
#include "kernels/keying/bluescreen_rows.h"

namespace zol {

/// How pixels become a matte by how far the key channel exceeds the larger of the other two, and how they are
/// laid on by it. Bounds and opacities beyond every sense take the low bytes of what the formulas give.
class ScreenKey {
public:
  /// The matte is 0 from an excess of delta1 (1.0 = 255) on, 255 where the key channel falls short by delta2
  /// or more, and linear between; times `opacity` it is the weight of the colours.
  ScreenKey(KeyChannel channel, float delta1, float delta2, float opacity);

  // Pictures lie anywhere in the frame. `source` has the pixels, of the place and size of `key`, that the
  // matte is taken from; outside of `key` everything is transparent black.

  /// Lays `key` on `out`, whose alpha becomes the matte.
  void lay(const pic &out, const pic &key, const _color_t *source) const;

  // The same in two passes, for what happens to the matte between them.
  void writeMatte(const pic &out, const pic &key, const _color_t *source) const; ///< into the alpha of `out`
  void layByMatte(const pic &out, const pic &key) const;

private:
  /// How far the key channel may exceed, or must fall short of, the larger of the other two; 255 = 1.0.
  struct Bounds {
    double backdrop, foreground;
  };

  static uint8_t matteOf(int key, int larger, const Bounds &bounds);
  [[nodiscard]] int weightOf(int matte) const;
  void matteRowPlainly(const _color_t *source, _color_t *out, int width) const;
  void layRowPlainly(const _color_t *key, _color_t *out, int width) const;

  KeyChannel channel_;
  Bounds bounds_;
  float opacity_;
  bool tabled_; ///< whether the tables hold; else pixel by pixel
  WeightAndAlpha byDifference_[kDifferences];
  WeightAndAlpha byMatte_[256];
};

} // namespace zol
