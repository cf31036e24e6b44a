// Outlines as contours of cubic segments.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zol::host {

/// One cubic: ends P0 and P1, and the vectors from each end to its control point. All x, y in pixels.
struct Segment {
  double P0[2], P1[2], H0[2], H1[2];
};

struct Box {
  double left = 0, top = 0, right = 0, bottom = 0;
};

/// x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
};

/// `inner` first, then `outer`.
Matrix operator*(const Matrix &outer, const Matrix &inner);

/// Segments that join exactly, end to start. A closed contour ends where it begins.
struct Contour {
  std::vector<Segment> segments; // at least one
  bool closed = false;

  /// The line from the end of an open contour back to its start, where these differ.
  [[nodiscard]] std::optional<Segment> closingLine() const;
};

struct Geometry {
  std::vector<Contour> contours;

  /// Bounds of the curves themselves; all 0 without contours.
  [[nodiscard]] Box box() const;
  [[nodiscard]] Geometry transformed(const Matrix &matrix) const;
};

/// A text that no geometry can be read from: what is wrong, in one line, and the character (from 0) where.
struct GeometryError : std::runtime_error {
  GeometryError(const std::string &what, size_t where) : std::runtime_error(what), position(where) {}
  size_t position;
};

/// The point of a segment at parameter t.
void pointAt(const Segment &segment, double t, double point[2]);

/// Parameters strictly inside the segment where x (axis 0) or y (axis 1) turns back; how many (at most 2).
int extrema(const Segment &segment, int axis, double found[2]);

} // namespace zol::host
