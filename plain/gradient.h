// Gradients in their plain form, one pixel at a time.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zol::plain {

/// The ramp's place, of 4096, of a position, 65536 = 1.0; `ends` is 0 to hold, 1 to repeat, 2 to mirror.
inline int32_t rampPlace(int64_t position, int32_t offset, int ends) {
  position -= offset;
  if (ends == 0)
    position = std::clamp<int64_t>(position, 0, 65536);
  else if (ends == 1)
    position &= 65535;
  else if ((position & 131071) > 65536)
    position = 131072 - (position & 131071);
  else
    position &= 131071;
  return static_cast<int32_t>(position >> 4);
}

inline int64_t linearPosition(int64_t first, int64_t step, int x) {
  return static_cast<int32_t>((first + step * x) >> 16);
}

inline int64_t radialPosition(float u, float v, float scale) {
  return static_cast<int64_t>(std::min(std::sqrt(u * u + v * v) * scale, 0x1p30F));
}

/// `angle` is of 65536.
inline int64_t conicalPosition(float u, float v, int angle) {
  const float x = std::fabs(u), y = std::fabs(v);
  const float z = std::min(x, y) / std::max(std::max(x, y), 0x1p-100F);
  const float coefficients[] = {549.131795F, -1214.37226F, 2018.69935F, -3469.38194F, 10430.1407F};
  float sum = -122.235020F;
  for (const float c : coefficients)
    sum = sum * (z * z) + c;
  int turn = static_cast<int>(z * sum + 0.5F);
  turn = y > x ? 16384 - turn : turn;
  turn = u < 0 ? 32768 - turn : turn;
  turn = v < 0 ? -turn : turn;
  return (turn - angle) & 65535;
}

} // namespace zol::plain
