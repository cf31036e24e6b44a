#include "host/geometry/svg_values.h"

#include "host/geometry/scanner.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace zol::host {
namespace {

double radians(double degrees) { return std::fmod(degrees, 360) * std::numbers::pi / 180; }

/// One transform with the `count` numbers of its brackets; false where it takes another count.
bool readOne(std::string_view name, const double *v, int count, Matrix *result) {
  if (name == "matrix" && count == 6)
    *result = {v[0], v[1], v[2], v[3], v[4], v[5]};
  else if (name == "translate" && (count == 1 || count == 2))
    *result = translation(v[0], count == 2 ? v[1] : 0);
  else if (name == "scale" && (count == 1 || count == 2))
    *result = scaling(v[0], v[count - 1]);
  else if (name == "rotate" && (count == 1 || count == 3)) {
    const double cosine = std::cos(radians(v[0])), sine = std::sin(radians(v[0]));
    *result = {cosine, sine, -sine, cosine, 0, 0};
    if (count == 3)
      *result = translation(v[1], v[2]) * *result * translation(-v[1], -v[2]);
  } else if (name == "skewX" && count == 1)
    *result = {1, 0, std::tan(radians(v[0])), 1, 0, 0};
  else if (name == "skewY" && count == 1)
    *result = {1, std::tan(radians(v[0])), 0, 1, 0, 0};
  else
    return false;
  return true;
}

} // namespace

Matrix translation(double x, double y) { return {1, 0, 0, 1, x, y}; }
Matrix scaling(double x, double y) { return {x, 0, 0, y, 0, 0}; }

Matrix readTransform(std::string_view text) {
  Scanner scanner(text, "transform");
  Matrix all;
  for (scanner.skipSpace(); !scanner.atEnd(); scanner.skipComma()) {
    const std::string_view name = scanner.word();
    scanner.skipSpace();
    if (!scanner.skip('('))
      scanner.fail("a transform expected");
    double numbers[6];
    int count = 0;
    for (scanner.skipSpace(); !scanner.skip(')') && count < 6; scanner.skipSpace())
      numbers[count++] = scanner.number();
    Matrix one;
    if (!readOne(name, numbers, count, &one))
      scanner.fail("no such transform");
    all = all * one;
  }
  return all;
}

double readLength(std::string_view text, double whole) {
  const std::pair<std::string_view, double> units[] = {
      {"", 1},           {"px", 1},         {"in", 96}, {"cm", 96 / 2.54}, {"mm", 9.6 / 2.54},
      {"Q", 2.4 / 2.54}, {"pt", 96 / 72.0}, {"pc", 16}, {"%", whole / 100}};
  Scanner scanner(text, "length");
  const double number = scanner.number();
  const std::string_view word = scanner.word();
  scanner.skipSpace();
  const auto *unit = std::find_if(std::begin(units), std::end(units),
                                  [word](const auto &known) { return known.first == word; });
  if (unit == std::end(units) || !scanner.atEnd())
    scanner.fail("this unit is not read");
  return number * unit->second;
}

std::vector<Point> readPoints(std::string_view text) {
  Scanner scanner(text, "points");
  std::vector<Point> points;
  for (scanner.skipSpace(); !scanner.atEnd(); scanner.skipSpace()) {
    const double x = scanner.number();
    points.push_back({x, scanner.number()});
  }
  return points;
}

ViewBox readViewBox(std::string_view text) {
  Scanner scanner(text, "viewBox");
  double numbers[4];
  for (double &number : numbers)
    number = scanner.number();
  scanner.skipSpace();
  if (!scanner.atEnd())
    scanner.fail("four numbers expected");
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

Matrix fit(const ViewBox &box, double width, double height, std::string_view aspectRatio) {
  const auto says = [aspectRatio](std::string_view word) { return aspectRatio.find(word) != word.npos; };
  double x = width / box.width, y = height / box.height;
  if (!says("none"))
    x = y = says("slice") ? std::max(x, y) : std::min(x, y);
  const auto shift = [](double room, bool isLeast, bool isMost) {
    return isLeast ? 0 : isMost ? room : room / 2;
  };
  return translation(shift(width - x * box.width, says("xMin"), says("xMax")),
                     shift(height - y * box.height, says("YMin"), says("YMax"))) *
         scaling(x, y) * translation(-box.x, -box.y);
}

} // namespace zol::host
