#include "kernels/exports/alpha_shrink.h"

#include "frame/host.h"
#include "kernels/matte/plane_erosion.h"
#include "kernels/simd/alpha_plane.h"

// Alpha alone is worked on, and put back when all is done.
ZOL_EXPORT int AlphaShrink(t_ZoHostInfo *host, pic *picture, float horizontalRadius, float verticalRadius) {
  const int width = picture->Width;
  const int height = picture->Height;
  if (width <= 0 || height <= 0)
    return 1;
  const zol::PlaneErosion erosion(horizontalRadius, verticalRadius, width, height);
  if (erosion.isCopy())
    return 1;
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  const zol::Scratch<uint8_t> alpha(pixels);
  if (!alpha || !erosion)
    return 0;
  zol::takeAlpha(picture->Pixels, pixels, alpha.data());
  const bool done = zol::forEachRow(host, height, [&](int y) {
    if (y % zol::PlaneErosion::kBandRows == 0)
      erosion.alongBand(alpha.data(), y);
  });
  if (!done)
    return 0;
  erosion.down(alpha.data());
  zol::putAlpha(picture->Pixels, alpha.data(), pixels, picture->Pixels);
  return 1;
}
