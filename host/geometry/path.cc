#include "host/geometry/path.h"

#include "host/geometry/outline.h"
#include "host/geometry/scanner.h"

#include <cctype>
#include <cmath>

namespace zol::host {
namespace {

class PathReader {
public:
  PathReader(std::string_view text, Geometry &geometry) : text_(text, "path data"), outline_(geometry) {}

  void run() {
    for (text_.skipSpace(); !text_.atEnd(); text_.skipSpace()) {
      const char command = text_.peek();
      if (std::string_view("MmZzLlHhVvCcSsQqTtAa").find(command) == std::string_view::npos)
        text_.fail("a command expected");
      if (!begun_ && command != 'M' && command != 'm')
        text_.fail("M expected first");
      begun_ = true;
      text_.advance();
      runCommand(command);
    }
  }

private:
  bool flag() {
    text_.skipComma();
    const bool set = text_.peek() == '1';
    if (!set && text_.peek() != '0')
      text_.fail("a flag, 0 or 1, expected");
    text_.advance();
    return set;
  }

  Point checked(Point point) const {
    if (!(std::abs(point.x) <= kLargest && std::abs(point.y) <= kLargest))
      text_.fail("the point is too far away");
    return point;
  }

  Point point(bool relative) {
    const double x = text_.number();
    const double y = text_.number();
    return checked(relative ? outline_.current() + Point{x, y} : Point{x, y});
  }

  /// One command with all its repetitions.
  void runCommand(char command) {
    const bool relative = command >= 'a';
    char kind = static_cast<char>(std::toupper(static_cast<unsigned char>(command)));
    if (kind == 'Z') {
      outline_.close();
      previous_ = 'Z';
      return;
    }
    do {
      draw(kind, relative);
      previous_ = kind;
      if (kind == 'M')
        kind = 'L'; // further pairs are lines
      text_.skipSpace();
    } while (text_.peek() == ',' || text_.numberFollows());
  }

  void draw(char kind, bool relative) {
    const Point from = outline_.current();
    switch (kind) {
    case 'M': outline_.moveTo(point(relative)); break;
    case 'L': outline_.lineTo(point(relative)); break;
    case 'H': {
      const double x = text_.number();
      outline_.lineTo(checked({relative ? from.x + x : x, from.y}));
      break;
    }
    case 'V': {
      const double y = text_.number();
      outline_.lineTo(checked({from.x, relative ? from.y + y : y}));
      break;
    }
    case 'C':
    case 'S': {
      const Point control0 = kind == 'C'                            ? point(relative)
                             : previous_ == 'C' || previous_ == 'S' ? checked(from + (from - control_))
                                                                    : from;
      control_ = point(relative);
      outline_.cubicTo(control0, control_, point(relative));
      break;
    }
    case 'Q':
    case 'T': {
      if (kind == 'Q')
        control_ = point(relative);
      else
        control_ = previous_ == 'Q' || previous_ == 'T' ? checked(from + (from - control_)) : from;
      outline_.quadraticTo(control_, point(relative));
      break;
    }
    default: {
      const double rx = text_.number();
      const double ry = text_.number();
      const double angle = text_.number();
      const bool large = flag();
      const bool sweep = flag();
      outline_.arcTo(rx, ry, angle, large, sweep, point(relative));
      break;
    }
    }
  }

  Scanner text_;
  Outline outline_;
  bool begun_ = false;
  char previous_ = 'Z';
  Point control_; ///< The last control point of the previous curve.
};

} // namespace

Geometry readPath(std::string_view pathData) {
  Geometry geometry;
  PathReader(pathData, geometry).run();
  return geometry;
}

} // namespace zol::host
