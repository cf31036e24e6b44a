// The colour keyer: opacity by the distance from a colour.
#pragma once

#include "frame/zol.h"
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

/// Lays the foreground on the background, or on blank pixels where there is none, in `out`, which has the
/// place and size of the background, else of the foreground. Polls the host after each row that the
/// foreground covers; false when it wants to stop.
bool layOver(t_ZoHostInfo *host, const ColorKey &key, const pic &foreground, const pic *background, pic &out);

/// The background with alpha 0, as it shows where there is no foreground; `out` may be the background.
void underlay(const _color_t *background, _color_t *out, int width);

} // namespace zol
