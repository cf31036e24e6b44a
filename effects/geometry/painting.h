// What effects have in common that paint shapes in one colour over their input.
#pragma once

#include "frame/canvas.h"
#include "frame/convert.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/compositing/lay_color.h"
#include "kernels/exports/fetch_shape.h"
#include "kernels/shape/coverage.h"

#include <algorithm>

namespace zol {

/// A copy of the input's frame or, where none is assigned, a transparent frame: to be painted on. Null
/// silently where the input's frame cannot be had, and after a message where memory runs out.
inline pic *createGround(t_ZoHostInfo *host, int inputField) {
  if (void *assigned = input(host, inputField)) {
    const pic *frame = frameOf(host, assigned);
    return frame != nullptr ? copyOf(host, frame) : nullptr;
  }
  pic *ground = createAt(host, Area::ofSize(host->Width, host->Height));
  if (ground != nullptr)
    std::fill_n(ground->Pixels, ptrdiff_t{ground->Width} * ground->Height, _color_t{});
  return ground;
}

/// 0xAARRGGBB; an opacity that is not a number is 0.
inline unsigned readPaint(t_ZoHostInfo *host, int colorField, int alphaField) {
  const _color_t color = paramColor(host, colorField);
  const int opacity = std::clamp(truncate(paramDouble(host, alphaField) * 255), 0, 255);
  return static_cast<unsigned>(opacity) << 24 | static_cast<unsigned>(color.r) << 16 |
         static_cast<unsigned>(color.g) << 8 | color.b;
}

inline bool isOpaqueAtAll(unsigned paint) { return paint >> 24 != 0; }

/// From the frame's pixels to the ground's, as wide as they are high.
inline Affine squareSpace(const t_ZoHostInfo *host, const pic &ground) {
  const double aspect = pixelAspect(host);
  return {aspect, 0, 0, 1, -ground.X * aspect, static_cast<double>(-ground.Y)};
}

/// Nothing yet, over the ground, of shapes in that space.
inline Coverage coverageOf(const t_ZoHostInfo *host, const pic &ground) {
  return {ground.Width, ground.Height, pixelAspect(host)};
}

/// The geometry as it is drawn, in that space. False after a message.
inline bool fetchDrawn(t_ZoHostInfo *host, void *geometry, const pic &ground, ShapeSegments &segments) {
  if (fetchShape(host, geometry, host->FrameTime, ShapeUse::drawing, squareSpace(host, ground), segments))
    return true;
  showMessage(host, "GeoGetCurves returns error");
  return false;
}

/// Lays the paint where the mask is: rows of bytes, `stride` apart. False when the host wants to stop.
inline bool layPaint(t_ZoHostInfo *host, const pic &ground, const uint8_t *mask, ptrdiff_t stride,
                     unsigned paint) {
  const auto layRow = ZOL_SELECT(layColorOnBytes);
  return forEachRow(host, ground.Height, [&](int y) {
    layRow(ground.Pixels + ptrdiff_t{y} * ground.Width, mask + y * stride, ground.Width, paint);
  });
}

/// Lays the paint where the polygons are that the coverage was drawn of. False when the host wants to stop
/// or, after a message, when memory ran out.
inline bool layPaint(t_ZoHostInfo *host, const pic &ground, Coverage &coverage, unsigned paint) {
  coverage.merge();
  if (coverage)
    return layPaint(host, ground, coverage.row(0), coverage.stride(), paint);
  showMemoryError(host);
  return false;
}

} // namespace zol
