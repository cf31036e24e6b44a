#pragma once

#include "host/geometry/geometry.h"
#include "host/model/shape.h"

namespace zol::host {

/// A geometry as effects ask for it.
class GeometryShape : public Shape {
public:
  explicit GeometryShape(const Geometry &geometry);
  void box(double out[4], double time) const override;
  int curves(double time, bool closed, void *user, t_ZoSegmentFn callback) const override;

private:
  Geometry geometry_;
  Box box_;
};

} // namespace zol::host
