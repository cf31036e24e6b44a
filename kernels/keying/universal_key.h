// The universal key: what a pixel is measured by, and how far from the key it is opaque.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

enum class KeyMethod { chroma, color, hue, luma, saturation, difference, alpha };
inline constexpr int kKeyMethods = 7;

/// A key. Every pixel, black where it has no alpha, has a distance from it of 0 to 4096, as are shares:
///
///   chroma      4096 less the share of key light in the pixel. It is linear in mixtures: a pixel of one part
///               key colour and three parts grey has a quarter.
///   color       the mean distance of the channels.
///   hue         the distance on the wheel of hues; pixels with little colour are far.
///   luma        the distance of lumas.
///   saturation  the distance of what the greatest channel exceeds the least by.
///   difference  the greatest distance of a channel from the plate.
///   alpha       the pixel's alpha.
///
/// By chroma of a key with hardly any colour it is a key by color.
struct UniversalKey {
  /// Of the hues around the key's a `hueRange` of 1 counts as key light for all that is in it.
  UniversalKey(KeyMethod method, _color_t color, double hueRange);

  /// Whether there is a share of key light that spill is known by.
  [[nodiscard]] bool tellsLight() const {
    return perChroma != 0 && (method == KeyMethod::chroma || method == KeyMethod::color);
  }

  KeyMethod method;
  _color_t color;
  int blue = 0, red = 0; ///< the direction of its chroma, 16384 = 1.0
  int narrowing = 0;     ///< how much light less for chroma across that direction, 256 = 1.0
  int perChroma = 0;     ///< 2^24 divided by the length of its chroma, or 0

  int shadows = 0;             ///< how much of the light that is missing in the dark is made up for
  int first = 0, range = 4096; ///< the matte is 0 up to the distance `first`, and 255 from `range` further on
  bool inverts = false;
  int spill = 0; ///< how much of the key light colours lose, 0 unless tellsLight()
};

// universalMatteRow  the matte of pixels; the plate of the same places is read by difference alone.
// universalColorRow  the pixels with their matte times their alpha as alpha (by alpha: with their matte), and
//                    without key light: a part s goes as far as it is there and what is left grows by up to
//                    1 / (1 - s), but no further than the matte says that there was key light. 0 where alpha
//                    is.
ZOL_LEVELS_TO(avx2, void universalMatteRow(const UniversalKey &key, const _color_t *pixels,
                                           const _color_t *plate, uint8_t *matte, int count);
              void universalColorRow(const UniversalKey &key, const _color_t *pixels, const uint8_t *matte,
                                     _color_t *out, int count);)

} // namespace zol
