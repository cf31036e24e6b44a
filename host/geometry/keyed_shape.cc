#include "host/geometry/keyed_shape.h"

#include "host/geometry/shape.h"
#include "host/model/text.h"

#include <algorithm>
#include <utility>

namespace zol::host {
namespace {

template <class Geometry, class Visit> void forEachCoordinate(Geometry &geometry, Visit visit) {
  for (auto &contour : geometry.contours)
    for (auto &segment : contour.segments)
      for (auto *point : {segment.P0, segment.P1, segment.H0, segment.H1})
        for (int axis = 0; axis < 2; ++axis)
          visit(point[axis]);
}

class KeyedShape : public Shape {
public:
  KeyedShape(Geometry build, PathCurve coordinates)
      : build_(std::move(build)), coordinates_(std::move(coordinates)) {}

  void box(double out[4], double time) const override { at(time).box(out, time); }
  int curves(double time, bool closed, void *user, t_ZoSegmentFn callback) const override {
    return at(time).curves(time, closed, user, callback);
  }

private:
  [[nodiscard]] GeometryShape at(double time) const {
    Geometry geometry = build_;
    const PathCurve::Value values = coordinates_.at(time);
    auto value = values.begin();
    forEachCoordinate(geometry, [&](double &coordinate) { coordinate = *value++; });
    return GeometryShape(geometry);
  }

  Geometry build_;
  PathCurve coordinates_;
};

std::string buildText(const Geometry &geometry) {
  std::string text;
  for (const Contour &contour : geometry.contours)
    text +=
        (text.empty() ? "" : "+") + std::to_string(contour.segments.size()) + (contour.closed ? "" : " open");
  return text.empty() ? "no segments" : text + " segments";
}

} // namespace

std::unique_ptr<Shape> shapeOf(const std::vector<GeometryKey> &keys) {
  const GeometryKey &first = keys.front();
  if (keys.size() == 1)
    return std::make_unique<GeometryShape>(first.geometry);
  PathCurve coordinates;
  const std::string build = buildText(first.geometry);
  for (const GeometryKey &key : keys) {
    if (const std::string other = buildText(key.geometry); other != build)
      throw GeometryError("the paths at " + numberText(first.time) + " and " + numberText(key.time) +
                              " s are not of equal build: " + build + ", " + other,
                          0);
    PathCurve::Value values;
    forEachCoordinate(key.geometry, [&](double coordinate) { values.push_back(coordinate); });
    coordinates.set(key.time, values, key.course);
  }
  return std::make_unique<KeyedShape>(first.geometry, std::move(coordinates));
}

} // namespace zol::host
