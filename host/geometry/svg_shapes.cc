#include "host/geometry/svg_shapes.h"

#include "host/geometry/outline.h"
#include "host/geometry/path.h"
#include "host/geometry/svg_values.h"
#include "host/model/text.h"

#include <algorithm>
#include <cmath>

namespace zol::host {
namespace {

void drawEllipse(Outline &outline, Point centre, double rx, double ry) {
  if (!(rx > 0 && ry > 0))
    return;
  const Point right = centre + Point{rx, 0};
  outline.moveTo(right);
  outline.arcTo(rx, ry, 0, false, true, centre - Point{rx, 0});
  outline.arcTo(rx, ry, 0, false, true, right);
  outline.close();
}

/// Corners are rounded where both radii are above 0.
void drawRect(Outline &outline, Point at, Point size, double rx, double ry) {
  if (!(size.x > 0 && size.y > 0))
    return;
  rx = std::clamp(rx, 0.0, size.x / 2);
  ry = std::clamp(ry, 0.0, size.y / 2);
  if (rx == 0 || ry == 0)
    rx = ry = 0;
  const Point end = at + size;
  const auto corner = [&](Point from, Point to) {
    outline.lineTo(from);
    outline.arcTo(rx, ry, 0, false, true, to);
  };
  outline.moveTo({at.x + rx, at.y});
  corner({end.x - rx, at.y}, {end.x, at.y + ry});
  corner({end.x, end.y - ry}, {end.x - rx, end.y});
  corner({at.x + rx, end.y}, {at.x, end.y - ry});
  corner({at.x, at.y + ry}, {at.x + rx, at.y});
  outline.close();
}

void drawLines(Outline &outline, const std::vector<Point> &points, bool closed) {
  for (size_t i = 0; i < points.size(); ++i)
    i == 0 ? outline.moveTo(points[i]) : outline.lineTo(points[i]);
  if (closed)
    outline.close();
}

} // namespace

double length(const XmlReader &element, std::string_view name, double whole, double otherwise) {
  const auto text = element.attribute(name);
  if (!text || trimmed(*text) == "auto")
    return otherwise;
  return readAt(element, [&] { return readLength(*text, whole); });
}

bool isShape(std::string_view name) {
  return name == "path" || name == "rect" || name == "circle" || name == "ellipse" || name == "line" ||
         name == "polyline" || name == "polygon";
}

Geometry shapeOf(const XmlReader &element, double width, double height) {
  const auto x = [&](const char *name, double otherwise = 0) {
    return length(element, name, width, otherwise);
  };
  const auto y = [&](const char *name, double otherwise = 0) {
    return length(element, name, height, otherwise);
  };
  const std::string_view name = element.name();
  if (name == "path") {
    const std::string data = element.attribute("d").value_or("");
    return readAt(element, [&] { return readPath(data); });
  }
  Geometry geometry;
  Outline outline(geometry);
  if (name == "rect") {
    const double rx = x("rx", -1), ry = y("ry", rx); // each is the other's where it is not given
    drawRect(outline, {x("x"), y("y")}, {x("width"), y("height")}, rx < 0 ? ry : rx, ry);
  } else if (name == "circle") {
    const double r = length(element, "r", std::hypot(width, height) / std::sqrt(2.0));
    drawEllipse(outline, {x("cx"), y("cy")}, r, r);
  } else if (name == "ellipse") {
    const double rx = x("rx", -1), ry = y("ry", rx);
    drawEllipse(outline, {x("cx"), y("cy")}, rx < 0 ? ry : rx, ry);
  } else if (name == "line") {
    drawLines(outline, {{x("x1"), y("y1")}, {x("x2"), y("y2")}}, false);
  } else { // polyline, polygon
    const std::string points = element.attribute("points").value_or("");
    drawLines(outline, readAt(element, [&] { return readPoints(points); }), name == "polygon");
  }
  return geometry;
}

} // namespace zol::host
