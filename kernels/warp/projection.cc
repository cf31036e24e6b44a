#include "kernels/warp/projection.h"

namespace zol {
namespace {

/// The minor without row r and column c, signed.
double cofactor(const double (&m)[3][3], int r, int c) {
  const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
  return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
}

} // namespace

Projection Projection::inverse() const {
  Projection back;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      back.rows[r][c] = cofactor(rows, c, r);
  return back;
}

double Projection::determinant() const {
  return rows[0][0] * cofactor(rows, 0, 0) +
         (rows[0][1] * cofactor(rows, 0, 1) + rows[0][2] * cofactor(rows, 0, 2));
}

Point Projection::of(const Point &p) const {
  const auto product = [&](int r) { return rows[r][0] * p.x + (rows[r][1] * p.y + rows[r][2]); };
  return {product(0) / divisor(p), product(1) / divisor(p)};
}

Projection operator*(const Projection &a, const Projection &b) {
  Projection both;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      both.rows[r][c] =
          a.rows[r][0] * b.rows[0][c] + (a.rows[r][1] * b.rows[1][c] + a.rows[r][2] * b.rows[2][c]);
  return both;
}

/// Of the unit square: what a parallelogram lacks is in the two entries of the divisor.
Projection Projection::ofRectangle(double width, double height, const Point (&corners)[4]) {
  const auto &[p, q, r, s] = corners;
  const double x1 = q.x - r.x, y1 = q.y - r.y, x2 = s.x - r.x, y2 = s.y - r.y;
  const double x3 = (p.x - q.x) + (r.x - s.x), y3 = (p.y - q.y) + (r.y - s.y);
  const double scale = x1 * y2 - x2 * y1, g = x3 * y2 - x2 * y3, h = x1 * y3 - x3 * y1;
  const Projection square = {{{(q.x - p.x) * scale + g * q.x, (s.x - p.x) * scale + h * s.x, p.x * scale},
                              {(q.y - p.y) * scale + g * q.y, (s.y - p.y) * scale + h * s.y, p.y * scale},
                              {g, h, scale}}};
  return square * scaled(1 / width, 1 / height);
}

} // namespace zol
