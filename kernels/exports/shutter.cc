#include "kernels/exports/shutter.h"

#include "frame/host.h"
#include "frame/values.h"
#include "kernels/compositing/shutter.h"

#include <algorithm>
#include <cmath>

ZOL_EXPORT int shutter_radial_alpha(t_ZoHostInfo *host, pic *picture, double centerX, double centerY,
                                    double angle, double opening, int sectors, double softness) {
  constexpr double kFar = 1e7;
  const double aspect = zol::shownAspect(host);
  const zol::ShutterMask mask({.kind = zol::ShutterKind::radial,
                               .blades = std::clamp(sectors, 1, zol::kShutterBlades),
                               .angle = std::isfinite(angle) ? angle : 0,
                               .centerX = zol::within(centerX, -kFar, kFar),
                               .centerY = zol::within(centerY, -kFar, kFar),
                               .width = picture->Width,
                               .height = picture->Height,
                               .aspect = aspect,
                               .softness = zol::within(softness, 0, kFar) * aspect,
                               .border = 0,
                               .endsEdges = false},
                              zol::within(opening, 0, 1));
  const auto cover = ZOL_SELECT(coverAlpha);
  return zol::forEachRow(host, picture->Height,
                         [&](int row) {
                           constexpr int kStretch = 512;
                           uint16_t coverage[kStretch];
                           for (int x = 0; x < picture->Width; x += kStretch) {
                             const int count = std::min(kStretch, picture->Width - x);
                             mask.innerRow(picture->Y + row, picture->X + x, count, coverage);
                             cover(picture->Pixels + ptrdiff_t{row} * picture->Width + x, coverage, count);
                           }
                         })
             ? 1
             : 0;
}
