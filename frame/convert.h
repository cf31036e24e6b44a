// The border: conversions that hosts can drive out of range; none of them is undefined.
#pragma once

#include <cstdint>

namespace zol {

/// Toward zero. What does not fit, NaN included, gives the least integer, as the processor's own
/// conversion does.
inline int truncate(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : INT32_MIN;
}

} // namespace zol
