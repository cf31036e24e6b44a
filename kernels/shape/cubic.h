// One coordinate of a curve's segment, as a cubic.
#pragma once

namespace zol {

/// The values at both ends and the Hermite tangents there.
struct HermiteCubic {
  double q0, q1, t0, t1;
};

/// The value at t by the Hermite basis; at 0 and 1 the ends themselves, without arithmetic.
double valueAt(const HermiteCubic &cubic, double t);

/// Coefficients of ((a t + b) t + c) t + d.
struct Polynomial {
  double a, b, c, d;
};
Polynomial polynomialOf(const HermiteCubic &cubic);

/// Roots of the derivative, in the order of the formula; a discriminant within the tolerance of 0 counts
/// as one root. Without a cubic term the roots are not finite.
struct Extrema {
  int count;
  double t[2];
};
Extrema extremaOf(const Polynomial &polynomial, double tolerance);

/// The least and the greatest value from end to end.
struct Extent {
  double low, high;
};
Extent rangeOf(const HermiteCubic &cubic);

} // namespace zol
