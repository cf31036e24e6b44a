#include "kernels/exports/transformed_shape.h"

#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/shape/shape_fill.h"

#include <cstring>

namespace zol {
namespace {

/// Fills the shape into the picture; 0 when memory runs out or the host wants to stop.
int fill(t_ZoHostInfo *host, const ShapeSegments &segments, pic *picture, unsigned colour) {
  ShapeFill shape(segments, Area::of(*picture));
  if (!shape)
    return 0;
  // A picture of one pixel more each way has room for the edges.
  const OwnedPic edges(host, host->Services->PicCreate(picture->Width + 1, picture->Height + 1));
  if (!edges) {
    showMessage(host, "FillText: Memory allocation failure");
    return 0;
  }
  for (int line = 0; line < shape.lineCount(); ++line) {
    if (aborted(host))
      return 0;
    shape.orderLine(line);
  }
  shape.blend(picture->Pixels, reinterpret_cast<uint8_t *>(edges->Pixels), colour);
  return 1;
}

} // namespace

int fillShapeTransformed(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour, const Affine &matrix) {
  if (picture == nullptr || geometry == nullptr || errorText == nullptr) {
    if (errorText != nullptr)
      std::strcpy(errorText, "Illegal parameter(s)");
    return 0;
  }
  errorText[0] = '\0';
  ShapeSegments segments;
  if (!fetchShape(host, geometry, time, ShapeUse::filling, matrix, segments)) {
    std::strcpy(errorText, "GeoGetCurves returns error");
    return 0;
  }
  return fill(host, segments, picture, colour);
}

} // namespace zol
