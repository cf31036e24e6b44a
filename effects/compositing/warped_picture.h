// Pictures that lie in the frame as maps say, for effects that lay them over a background.
#pragma once

#include "frame/canvas.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/motion/frame_average.h"
#include "kernels/simd/scratch.h"
#include "kernels/warp/warp_row.h"

#include <span>

namespace zol {

// In the order of WarpFilter.
inline constexpr const char *kWarpFilters[] = {"Sharp", "Smooth", "Pixels"};

inline WarpFilter paramWarpFilter(t_ZoHostInfo *host, int field) {
  constexpr int kLast = static_cast<int>(WarpFilter::pixels);
  return static_cast<WarpFilter>(std::clamp(paramInt(host, field), 0, kLast));
}

inline constexpr int kMostMaps = 64;

struct WarpedPicture {
  WarpSource source;
  std::span<const WarpMap> maps; ///< from the frame; 1 to kMostMaps, the average of which shows
  WarpFilter filter;
  int opacity = 4096; ///< 4096 = 1.0
};

/// The area that an effect writes: the background's, or the frame's where there is none.
inline Area groundOf(const t_ZoHostInfo *host, const pic *background) {
  return background != nullptr ? Area::of(*background) : Area::ofSize(host->Width, host->Height);
}

/// Writes the ground's pixels: the background, or nothing where it is null, and the picture over it. False
/// when the host wants to stop or, after a message, when memory runs out.
bool layWarped(t_ZoHostInfo *host, const Area &ground, const pic *background, const WarpedPicture &picture,
               const Laying &laying, _color_t *out);

/// The same as a new picture; null where false.
pic *renderWarped(t_ZoHostInfo *host, const pic *background, const WarpedPicture &picture,
                  const Laying &laying);

} // namespace zol
