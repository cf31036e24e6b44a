#include "kernels/warp/warp_places.h"

#include "kernels/warp/warp_rows.h"

#include <algorithm>

namespace zol {
namespace {

Places moved(const Places &places, int by) { return {places.u + by, places.v + by}; }

} // namespace

void warpPlaces(const WarpSource &source, const Places &places, const Places &above, const Places &below,
                WarpFilter filter, _color_t *out, int count) {
  if (filter == WarpFilter::pixels) {
    ZOL_SELECT(pickEach)(source, places.u, places.v, count, out);
    return;
  }
  const auto find = ZOL_SELECT(findRadii);
  const auto take = ZOL_SELECT(probeEach);
  const auto takeSteps = ZOL_SELECT(probeSteps);
  int radiiAcross[kMostProbed], radiiDown[kMostProbed], rest[kMostProbed];
  std::fill_n(radiiAcross, kMostProbed, kLeastRadius); // for vectors that are wider
  std::fill_n(radiiDown, kMostProbed, kLeastRadius);
  PlaceSteps steps = {};
  for (int x = 0; x < count; x += kMostProbed) {
    const int few = std::min(kMostProbed, count - x);
    const Places own = moved(places, x);
    const int left = find(own, moved(above, x), moved(below, x), radiiAcross, radiiDown, rest, steps, few);
    if (left < few)
      take(source, filter, own.u, own.v, radiiAcross, radiiDown, few, out + x);
    if (left > 0)
      takeSteps(source, filter, own.u, own.v, steps, rest, left, out + x);
  }
}

} // namespace zol
