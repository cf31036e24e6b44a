// Outlines as cubic segments, read from SVG path data.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// One cubic: ends P0 and P1, and the vectors from each end to its control point. All x, y in pixels.
struct Segment {
  double P0[2], P1[2], H0[2], H1[2];
};

struct Box {
  double left = 0, top = 0, right = 0, bottom = 0;
};

/// Path data that cannot be read: what is wrong, in one line, and the character (from 0) where.
struct GeometryError : std::runtime_error {
  GeometryError(const std::string &what, size_t where) : std::runtime_error(what), position(where) {}
  size_t position;
};

/// A shape for filling: every subpath closed, one after another, without segments of zero length.
class Geometry {
public:
  /// Reads SVG path data, all commands. Curves are kept exactly, elliptical arcs within 5e-6 of their radius.
  /// Throws GeometryError, whose text has the character's place from 1.
  static Geometry fromPath(std::string_view pathData);

  /// Path data, or `@file.svg`: the data of the first `path` element of that file.
  static Geometry fromText(const std::string &text);

  std::vector<Segment> segments;

  /// Bounds of the curves themselves; all 0 without segments.
  [[nodiscard]] Box box() const;

  /// The same curves cut where x or y turns back, so that each piece is monotonic in both. Pieces share their
  /// ends exactly.
  [[nodiscard]] std::vector<Segment> splitAtExtrema() const;

  [[nodiscard]] Geometry translated(double x, double y) const;
  [[nodiscard]] Geometry scaled(double x, double y) const;
};

/// The point of a segment at parameter t.
void pointAt(const Segment &segment, double t, double point[2]);

} // namespace zol::host
