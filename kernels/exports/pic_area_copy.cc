#include "kernels/exports/pic_area_copy.h"

#include "frame/picture.h"

ZOL_EXPORT int PicAreaCopy(pic *dst, const pic *src) {
  zol::copyShared(*dst, *src);
  return zol::coveredPart(zol::Area::of(*dst), zol::Area::of(*src)).height();
}
