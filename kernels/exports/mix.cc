#include "kernels/exports/mix.h"

#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/compositing/mix.h"

ZOL_EXPORT pic *mix_pics_union(pic *a, pic *b, float ratio, t_ZoHostInfo *host) {
  const zol::Area area = zol::unionOf(zol::Area::of(*a), zol::Area::of(*b));
  zol::OwnedPic out(host, host->Services->PicCreate(area.width(), area.height()));
  if (!out) {
    zol::showMemoryError(host);
    return nullptr;
  }
  zol::placeAt(*out, area);
  const zol::UnionMix mix(*a, *b, ratio, area, out->Pixels);
  for (int y = area.top; y < area.bottom;)
    for (const int end = y + mix.band(y); y < end; ++y)
      if (zol::aborted(host))
        return nullptr;
  return out.release();
}

ZOL_EXPORT pic *mix_pics_intersect(pic *a, pic *b, float ratio, t_ZoHostInfo *host) {
  const zol::Area area = zol::intersectionOf(zol::Area::of(*a), zol::Area::of(*b));
  zol::OwnedPic out(host, host->Services->PicCreate(area.width(), area.height()));
  if (!out)
    return nullptr;
  zol::placeAt(*out, area);
  const zol::RowBlend blend(ratio);
  const bool finished = zol::forEachRow(host, area.height(), [&](int row) {
    const int y = area.top + row;
    if (area.width() > 0)
      blend(zol::pixelAt(*a, area.left, y), zol::pixelAt(*b, area.left, y),
            out->Pixels + area.index(area.left, y), area.width());
  });
  return finished ? out.release() : nullptr;
}
