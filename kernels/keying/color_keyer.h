// The colour keyer: opacity by the distance from a colour.
#pragma once

#include "frame/picture.h"
#include "kernels/keying/color_keyer_rows.h"

namespace zol {

/// A key colour and how pixels are laid on by their distance from it. Distances are the mean over red,
/// green and blue, 0 to 255.
class ColorKey {
public:
  /// The opacity is `near` up to the distance `lower`, `far` from the distance `upper` on and linear
  /// between; all at 1.0 = 255. Any value is defined; opacities are cut to 0..1. Thresholds the wrong way
  /// round turn the ramp about.
  ColorKey(_color_t color, double lower, double upper, double near, double far);

  /// Lays foreground pixels on a row of the background. The result's alpha is the opacity laid on;
  /// `out` may be the background itself.
  void layRow(const _color_t *foreground, const _color_t *background, _color_t *out, int width) const;

private:
  _color_t color_;
  WeightAndAlpha byDistanceSum_[kDistanceSums];
};

/// The background with alpha 0, as it shows where there is no foreground; `out` may be the background.
void underlay(const _color_t *background, _color_t *out, int width);

/// A foreground laid on a background, or on blank pixels where there is none, anywhere in the frame.
class KeyedRows {
public:
  /// `out` has the place and size of the background, else of the foreground. All that is above and below the
  /// foreground is written at once.
  KeyedRows(const ColorKey &key, const pic &foreground, const pic *background, const pic &out);

  /// The number of rows that the foreground covers.
  [[nodiscard]] int count() const { return covered_.height(); }
  /// Writes one of them, 0 to count() - 1, in its whole width.
  void lay(int row) const;

private:
  const ColorKey &key_;
  const pic &foreground_;
  const _color_t *ground_; ///< pixels of the place and size of `out`
  const pic &out_;
  Area covered_;
};

} // namespace zol
