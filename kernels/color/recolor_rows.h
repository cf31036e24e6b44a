// Colours turned, saturated, lightened and tinted, all or those near one hue.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

/// What is done to colours, step after step; 4096 = 1.0. A step at 0 is left out.
struct Recoloring {
  static constexpr int kOne = 4096;

  int turn = 0;            ///< of the hue, in steps of the wheel: 0..1529
  bool keepsLuma = false;  ///< the turned colour has the input's luma
  int saturation = 0;      ///< -4096 leaves grey; above 0 colours grow fuller while none clips
  int lightness = 0;       ///< to black at -4096, to white at 4096
  int tintAmount = 0;      ///< 0..4096, towards the colour of `tint` for the luma
  uint32_t tint[256] = {}; ///< 0xRRGGBB
  bool isLimited = false;  ///< to hues near `hue`; all that follows is for this alone
  int hue = 0;             ///< as rgbToHls has it
  int range = 0,
      fading = 1;     ///< hues up to `range` / 16 away change fully, from `fading` / 16 beyond not at all
  int fullChroma = 0; ///< colours of less chroma change less
};

ZOL_LEVELS( /// `out` may be `in`. Alpha stays.
    void recolorRow(const _color_t *in, _color_t *out, int width, const Recoloring &how);)

} // namespace zol
