// A geometry as a mask, for effects that work within one.
#pragma once

#include "frame/canvas.h"
#include "frame/host.h"
#include "kernels/exports/shape.h"

namespace zol {

/// A new picture of the area whose alpha is the geometry's coverage at the context's frame time; its colours
/// mean nothing. Null when the host wants to stop or, after a message, when it cannot be had.
inline pic *createShapeMask(t_ZoHostInfo *host, const Area &area, void *geometry) {
  OwnedPic mask(host, createAt(host, area));
  if (!mask)
    return nullptr;
  char error[256];
  if (FillShape(host, error, mask.get(), geometry, host->FrameTime, 0xFFFFFFFF) == 1)
    return mask.release();
  if (error[0] != '\0')
    showMessage(host, error);
  return nullptr;
}

} // namespace zol
