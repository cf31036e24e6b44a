#include "host/geometry/geometry.h"
#include "host/geometry/xml_depth.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <numbers>
#include <rapidxml/rapidxml.hpp>
#include <system_error>

namespace zol::host {
namespace {

constexpr double kLargest = 1e9; // pixels; beyond it the arithmetic of shapes loses its meaning
constexpr double kLargestArc = std::numbers::pi / 4; // angle of one cubic: 5e-6 of the radius off at most
constexpr size_t kLargestFile = size_t{64} << 20;
constexpr int kDeepest = 2000; // nested elements; the XML parser recurses

struct Point {
  double x = 0, y = 0;
};

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
Point operator*(double s, Point a) { return {s * a.x, s * a.y}; }
bool operator==(Point a, Point b) { return a.x == b.x && a.y == b.y; }

/// Collects segments; keeps track of subpaths and closes them.
class Outline {
public:
  explicit Outline(std::vector<Segment> &segments) : segments_(segments) {}

  [[nodiscard]] Point current() const { return current_; }

  void moveTo(Point to) {
    close();
    start_ = current_ = to;
  }

  void close() {
    if (!(current_ == start_))
      lineTo(start_);
    current_ = start_;
  }

  void lineTo(Point to) {
    const Point third = (1.0 / 3) * (to - current_);
    add(to, third, -1 * third);
  }

  void cubicTo(Point control0, Point control1, Point to) { add(to, control0 - current_, control1 - to); }

  void quadraticTo(Point control, Point to) {
    add(to, (2.0 / 3) * (control - current_), (2.0 / 3) * (control - to));
  }

  void arcTo(double rx, double ry, double degrees, bool large, bool sweep, Point to);

private:
  void add(Point to, Point h0, Point h1) {
    const Point zero;
    if (!(current_ == to && h0 == zero && h1 == zero))
      segments_.push_back({{current_.x, current_.y}, {to.x, to.y}, {h0.x, h0.y}, {h1.x, h1.y}});
    current_ = to;
  }

  std::vector<Segment> &segments_;
  Point start_, current_;
};

/// From the form by end points to the form by centre, in a frame where the ellipse is the unit circle.
void Outline::arcTo(double rx, double ry, double degrees, bool large, bool sweep, Point to) {
  rx = std::abs(rx);
  ry = std::abs(ry);
  if (current_ == to)
    return;
  const double angle = std::fmod(degrees, 360) * std::numbers::pi / 180;
  const double cosine = std::cos(angle), sine = std::sin(angle);
  const auto toCircle = [&](Point p) {
    return Point{(cosine * p.x + sine * p.y) / rx, (cosine * p.y - sine * p.x) / ry};
  };
  const Point from = current_;
  const Point half = rx > 0 && ry > 0 ? toCircle(0.5 * (from - to)) : Point{};
  double square = half.x * half.x + half.y * half.y;
  if (!(square > 0 && std::isfinite(square))) { // a radius of (nearly) zero
    lineTo(to);
    return;
  }
  if (square > 1) { // radii too small to reach: the smallest ellipse that does
    rx *= std::sqrt(square);
    ry *= std::sqrt(square);
    square = 1;
  }
  // The centre lies on the perpendicular bisector of the chord.
  const Point chordHalf = toCircle(0.5 * (from - to));
  const double distance = std::sqrt(std::max(0.0, 1 / square - 1)) * (large == sweep ? -1 : 1);
  const Point centre{distance * chordHalf.y, -distance * chordHalf.x}; // from the middle of the chord
  const double first = std::atan2(chordHalf.y - centre.y, chordHalf.x - centre.x);
  double turn = std::atan2(-chordHalf.y - centre.y, -chordHalf.x - centre.x) - first;
  if (sweep && turn < 0)
    turn += 2 * std::numbers::pi;
  if (!sweep && turn > 0)
    turn -= 2 * std::numbers::pi;

  const auto fromCircle = [&](Point p) {
    return Point{cosine * rx * p.x - sine * ry * p.y, sine * rx * p.x + cosine * ry * p.y};
  };
  const Point middle = 0.5 * (from + to) + fromCircle(centre);
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(turn) / kLargestArc - 1e-9)));
  const double step = turn / pieces;
  const double handle = 4.0 / 3 * std::tan(step / 4);
  for (int i = 0; i < pieces; ++i) {
    const double a = first + i * step, b = first + (i + 1) * step;
    const Point end = i + 1 == pieces ? to : middle + fromCircle({std::cos(b), std::sin(b)});
    add(end, handle * fromCircle({-std::sin(a), std::cos(a)}),
        -handle * fromCircle({-std::sin(b), std::cos(b)}));
  }
}

class PathReader {
public:
  PathReader(std::string_view text, std::vector<Segment> &segments) : text_(text), outline_(segments) {}

  void run() {
    skipSpace();
    while (place_ < text_.size()) {
      const char command = text_[place_];
      if (std::string_view("MmZzLlHhVvCcSsQqTtAa").find(command) == std::string_view::npos)
        fail("a command expected");
      if (!begun_ && command != 'M' && command != 'm')
        fail("M expected first");
      begun_ = true;
      ++place_;
      runCommand(command);
      skipSpace();
    }
    outline_.close();
  }

private:
  [[noreturn]] void fail(const std::string &what) const { failAt(what, place_); }

  [[noreturn]] static void failAt(const std::string &what, size_t place) {
    throw GeometryError("path data, character " + std::to_string(place + 1) + ": " + what, place);
  }

  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
  [[nodiscard]] char peek(size_t ahead = 0) const {
    return place_ + ahead < text_.size() ? text_[place_ + ahead] : '\0';
  }

  void skipSpace() {
    while (place_ < text_.size() &&
           std::string_view(" \t\r\n\f").find(text_[place_]) != std::string_view::npos)
      ++place_;
  }

  void skipComma() {
    skipSpace();
    if (peek() == ',') {
      ++place_;
      skipSpace();
    }
  }

  size_t skipDigits() {
    const size_t begin = place_;
    while (isDigit(peek()))
      ++place_;
    return place_ - begin;
  }

  [[nodiscard]] bool numberFollows() const {
    const size_t sign = peek() == '+' || peek() == '-' ? 1 : 0;
    return isDigit(peek(sign)) || (peek(sign) == '.' && isDigit(peek(sign + 1)));
  }

  double number() {
    skipComma();
    if (!numberFollows())
      fail("a number expected");
    if (peek() == '+')
      ++place_;
    const size_t begin = place_;
    if (peek() == '-')
      ++place_;
    skipDigits();
    if (peek() == '.') {
      ++place_;
      skipDigits();
    }
    bool tiny = false;
    if (peek() == 'e' || peek() == 'E') {
      const size_t sign = peek(1) == '+' || peek(1) == '-' ? 1 : 0;
      if (isDigit(peek(1 + sign))) {
        tiny = peek(1) == '-';
        place_ += 1 + sign;
        skipDigits();
      }
    }
    double value = 0;
    const auto result = std::from_chars(text_.data() + begin, text_.data() + place_, value);
    if (result.ec == std::errc::result_out_of_range && tiny)
      value = 0;
    else if (result.ec != std::errc() || !(std::abs(value) <= kLargest))
      failAt("the number is too large", begin);
    return value;
  }

  bool flag() {
    skipComma();
    if (peek() != '0' && peek() != '1')
      fail("a flag, 0 or 1, expected");
    return text_[place_++] == '1';
  }

  Point checked(Point point) const {
    if (!(std::abs(point.x) <= kLargest && std::abs(point.y) <= kLargest))
      fail("the point is too far away");
    return point;
  }

  Point point(bool relative) {
    const double x = number();
    const double y = number();
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
      skipSpace();
    } while (peek() == ',' || numberFollows());
  }

  void draw(char kind, bool relative) {
    const Point from = outline_.current();
    switch (kind) {
    case 'M': outline_.moveTo(point(relative)); break;
    case 'L': outline_.lineTo(point(relative)); break;
    case 'H': {
      const double x = number();
      outline_.lineTo(checked({relative ? from.x + x : x, from.y}));
      break;
    }
    case 'V': {
      const double y = number();
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
      const double rx = number();
      const double ry = number();
      const double angle = number();
      const bool large = flag();
      const bool sweep = flag();
      outline_.arcTo(rx, ry, angle, large, sweep, point(relative));
      break;
    }
    }
  }

  std::string_view text_;
  size_t place_ = 0;
  Outline outline_;
  bool begun_ = false;
  char previous_ = 'Z';
  Point control_; ///< The last control point of the previous curve.
};

/// A third of the derivative of one coordinate: a t^2 + b t + c.
struct Slope {
  double a, b, c;

  Slope(const Segment &s, int axis) {
    const double d0 = s.H0[axis], d2 = -s.H1[axis];
    const double d1 = (s.P1[axis] + s.H1[axis]) - (s.P0[axis] + s.H0[axis]);
    a = d0 - 2 * d1 + d2;
    b = 2 * (d1 - d0);
    c = d0;
  }
  [[nodiscard]] double at(double t) const { return (a * t + b) * t + c; }
};

/// Parameters strictly inside the segment where a coordinate has its extrema; how many (at most 2).
int extrema(const Slope &slope, double found[2]) {
  constexpr double kNearEnd = 1e-9;
  const double discriminant = slope.b * slope.b - 4 * slope.a * slope.c;
  if (!(discriminant > 0))
    return 0; // none, or a point of inflection
  const double q = -0.5 * (slope.b + std::copysign(std::sqrt(discriminant), slope.b));
  int count = 0;
  for (const double t : {q / slope.a, slope.c / q})
    if (t > kNearEnd && t < 1 - kNearEnd)
      found[count++] = t;
  return count;
}

/// Removes what rounding leaves of a slope against the direction of a monotonic piece.
void makeMonotonic(Segment &piece, int axis) {
  const double way = piece.P1[axis] - piece.P0[axis];
  if (way * piece.H0[axis] <= 0)
    piece.H0[axis] = 0;
  if (way * piece.H1[axis] >= 0)
    piece.H1[axis] = 0;
}

const rapidxml::xml_node<> *firstPath(const rapidxml::xml_node<> *node) {
  for (; node != nullptr; node = node->next_sibling()) {
    const std::string_view name(node->name(), node->name_size());
    if (name == "path" || name.ends_with(":path"))
      return node;
    if (const auto *found = firstPath(node->first_node()))
      return found;
  }
  return nullptr;
}

std::string pathDataOf(const std::string &file) {
  const auto refuse = [&](const std::string &why) {
    throw GeometryError("cannot read " + file + ": " + why, 0);
  };
  std::ifstream stream(file, std::ios::binary);
  if (!stream)
    refuse(std::generic_category().message(errno));
  std::string xml, block(size_t{64} << 10, '\0');
  while (stream && xml.size() <= kLargestFile) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    xml.append(block, 0, static_cast<size_t>(stream.gcount()));
  }
  if (stream.bad() || xml.empty())
    refuse("nothing could be read");
  if (xml.size() > kLargestFile)
    refuse("the file is too large");
  std::string data;
  try {
    if (nestsDeeperThan(kDeepest, xml))
      throw std::runtime_error("its elements are nested too deep");
    rapidxml::xml_document<> document;
    document.parse<0>(xml.data());
    const rapidxml::xml_node<> *path = firstPath(document.first_node());
    if (path == nullptr)
      refuse("no path in it");
    const rapidxml::xml_attribute<> *attribute = path->first_attribute("d");
    if (attribute == nullptr)
      refuse("its first path has no data");
    data.assign(attribute->value(), attribute->value_size());
  } catch (const GeometryError &) {
    throw;
  } catch (const std::exception &error) {
    refuse(std::string("not well-formed: ") + error.what());
  }
  return data;
}

} // namespace

Geometry Geometry::fromPath(std::string_view pathData) {
  Geometry geometry;
  PathReader(pathData, geometry.segments).run();
  return geometry;
}

Geometry Geometry::fromText(const std::string &text) {
  return text.starts_with('@') ? fromPath(pathDataOf(text.substr(1))) : fromPath(text);
}

void pointAt(const Segment &segment, double t, double point[2]) {
  const double s = 1 - t;
  for (int axis = 0; axis < 2; ++axis) {
    const double control0 = segment.P0[axis] + segment.H0[axis],
                 control1 = segment.P1[axis] + segment.H1[axis];
    point[axis] = s * s * s * segment.P0[axis] + 3 * s * s * t * control0 + 3 * s * t * t * control1 +
                  t * t * t * segment.P1[axis];
  }
}

Box Geometry::box() const {
  if (segments.empty())
    return {};
  double low[2] = {segments[0].P0[0], segments[0].P0[1]};
  double high[2] = {low[0], low[1]};
  for (const Segment &segment : segments)
    for (int axis = 0; axis < 2; ++axis) {
      double parameters[2];
      const int count = extrema(Slope(segment, axis), parameters);
      const auto include = [&](double value) {
        low[axis] = std::min(low[axis], value);
        high[axis] = std::max(high[axis], value);
      };
      include(segment.P0[axis]);
      include(segment.P1[axis]);
      for (int i = 0; i < count; ++i) {
        double point[2];
        pointAt(segment, parameters[i], point);
        include(point[axis]);
      }
    }
  return {low[0], low[1], high[0], high[1]};
}

std::vector<Segment> Geometry::splitAtExtrema() const {
  constexpr double kSame = 1e-9;
  std::vector<Segment> pieces;
  pieces.reserve(segments.size());
  for (const Segment &segment : segments) {
    const Slope slopes[2] = {Slope(segment, 0), Slope(segment, 1)};
    double found[4];
    int extremes = extrema(slopes[0], found);
    extremes += extrema(slopes[1], found + extremes);
    double cuts[6] = {0};
    size_t count = 1;
    for (double last = 0; extremes > 0; --extremes) { // the smallest first
      std::iter_swap(std::min_element(found, found + extremes), found + extremes - 1);
      if (found[extremes - 1] - last >= kSame)
        cuts[count++] = last = found[extremes - 1];
    }
    if (count == 1) {
      pieces.push_back(segment);
      continue;
    }
    cuts[count] = 1;
    Segment piece = segment;
    for (size_t i = 0; i < count; ++i) {
      const double from = cuts[i], to = cuts[i + 1];
      if (i > 0)
        std::copy(std::begin(pieces.back().P1), std::end(pieces.back().P1), piece.P0);
      if (i + 1 < count)
        pointAt(segment, to, piece.P1);
      else
        std::copy(std::begin(segment.P1), std::end(segment.P1), piece.P1);
      for (int axis = 0; axis < 2; ++axis) {
        piece.H0[axis] = slopes[axis].at(from) * (to - from);
        piece.H1[axis] = -slopes[axis].at(to) * (to - from);
        makeMonotonic(piece, axis);
      }
      pieces.push_back(piece);
    }
  }
  return pieces;
}

Geometry Geometry::translated(double x, double y) const {
  Geometry result = *this;
  for (Segment &segment : result.segments)
    for (double *point : {segment.P0, segment.P1}) {
      point[0] += x;
      point[1] += y;
    }
  return result;
}

Geometry Geometry::scaled(double x, double y) const {
  Geometry result = *this;
  for (Segment &segment : result.segments)
    for (double *vector : {segment.P0, segment.P1, segment.H0, segment.H1}) {
      vector[0] *= x;
      vector[1] *= y;
    }
  return result;
}

} // namespace zol::host
