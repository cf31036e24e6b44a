// Pixels laid over others, in straight alpha and any blending mode.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

namespace zol {

/// What becomes of a lower channel l under an upper one u where both are opaque.
enum class LayMode {
  normal,
  multiply,
  screen,
  overlay,
  darken,
  lighten,
  colorDodge,
  colorBurn,
  hardLight,
  softLight,
  difference,
  exclusion,
  add,
  subtract,
  color,      ///< the upper hue and saturation at the lower luma
  luminosity, ///< the lower hue and saturation at the upper luma
};
inline constexpr int kLayModes = 16;

struct Laying {
  LayMode mode = LayMode::normal;
  int opacity = 4096;  ///< of the upper pixels, 0 to 4096 = 1.0
  bool inside = false; ///< the lower alpha stays, and nothing shows where it is 0
};

/// Lays `upper` over `lower`, pixel by pixel. With m the upper alpha times the opacity, d the lower alpha and
/// B what the mode makes of both colours, w = m d + m (255 - d) + d (255 - m): the alpha becomes w / 255 and
/// a colour (m d B + m (255 - d) u + d (255 - m) l) / w; inside, a colour (m B + (255 - m) l) / 255. All are
/// rounded down. Where m is 0 the pixel stays as it is.
ZOL_LEVELS_TO(avx2, void layPixels(_color_t *lower, const _color_t *upper, int count, const Laying &laying);)

} // namespace zol
