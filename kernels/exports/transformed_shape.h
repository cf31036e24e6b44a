// Geometries of a host filled into its pictures, as every effect that fills them does.
#pragma once

#include "frame/zol.h"
#include "kernels/exports/fetch_shape.h"

namespace zol {

/// Fills the geometry, as it is at `time` and with every point taken through the matrix, into the picture.
/// Colour, alpha, errors and answers are those of FillShape, and so are the bytes where the matrix changes
/// nothing.
int fillShapeTransformed(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour, const Affine &matrix);

} // namespace zol
