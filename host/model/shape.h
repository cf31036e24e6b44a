// The geometries of effects.
#pragma once

#include "frame/zol.h"

namespace zol::host {

/// What a geometry handle names.
class Shape {
public:
  Shape() = default;
  Shape(const Shape &) = delete;
  Shape &operator=(const Shape &) = delete;
  virtual ~Shape() = default;
  /// Left, top, right, bottom in pixels of the frame.
  virtual void box(double out[4], double time) const = 0;
  /// Hands over every segment, and with `closed` a line for each gap of an open contour; 1, or 0 as soon as
  /// the callback answers 0.
  virtual int curves(double time, bool closed, void *user, t_ZoSegmentFn callback) const = 0;
};

} // namespace zol::host
