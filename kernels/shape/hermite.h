// The Hermite basis, in the one order of operations that every kernel of curves rounds in.
#pragma once

namespace zol {

/// The value at t of a cubic with ends q0, q1 and tangents t0, t1 there. Real is a double or a vector of
/// them; always inlined, so that a level's code stays in that level.
template <class Real> [[gnu::always_inline]] inline Real hermite(Real t, Real q0, Real q1, Real t0, Real t1) {
  const Real squared = t * t;
  const Real cubed = squared * t;
  const Real h00 = 2.0 * cubed - 3.0 * squared + 1.0;
  const Real h01 = -2.0 * cubed + 3.0 * squared;
  const Real h10 = cubed - 2.0 * squared + t;
  const Real h11 = cubed - squared;
  return h00 * q0 + h01 * q1 + h10 * t0 + h11 * t1;
}

} // namespace zol
