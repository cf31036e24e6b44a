#include "kernels/exports/deinterlace.h"

#include "kernels/fields/repair_combing.h"

#include <algorithm>

ZOL_EXPORT int deinterlace(unsigned *dst, unsigned *src, int width, int height, int threshold, int edge,
                           bool blend) {
  if (width > 0 && height > 0)
    zol::repairCombing(src, dst, width, height, threshold, edge, blend);
  return 1;
}

ZOL_EXPORT int mydeinterlace(t_ZoHostInfo *host, _color_t *dst, _color_t *src, int width, int height,
                             int method) {
  if (height == 1)
    std::copy_n(src, std::max(width, 0), dst);
  if (width <= 0 || height <= 1)
    return 1;
  const _color_t *field = method == 0 ? src + width : src;
  host->Services->PicResample(host, field, 2 * width, width, height >> 1, dst, width, width, height, 2);
  return 1;
}
