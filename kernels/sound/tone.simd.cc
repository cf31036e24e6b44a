#include "kernels/sound/tone.h"

namespace zol::ZOL_LEVEL {

void sineTurns(float *turns, uint32_t first, int count, double start, float rate, float frequency) {
  for (int i = 0; i < count; ++i) {
    const float seconds = static_cast<float>(first + static_cast<uint32_t>(i)) / rate;
    turns[i] = frequency * static_cast<float>(start + static_cast<double>(seconds));
  }
}

// sin(p) for the rounded product p = 2 pi * turns, as (-1)^k sin(r) with r = p - k pi and k = 2 turns
// rounded, |k| <= 2^26, |r| < pi / 2 * (1 + 2^-20).
//
// Error of the bounds' middle, in units of 2^-53:
//   2 pi is kTwoPiHigh + kTwoPiLow; the former has 27 bits, so its multiple and p minus it are exact;
//   k / 2 * kTwoPiLow < 1/8 is off by 1/16 + 1/8 (rounding, kTwoPiLow's own), r's rounding adds 1  1.2
//   the polynomial, coefficients as rounded, is within 1.51e-16 of the sine                        1.4
//   what it adds to the leading r, at most 0.571 in size, with seven roundings at most             4.0
//   that last addition, at most 1 in size                                                          0.5
//   adding 1 here and in the plain form, taking the bound, a last place of the library's sine      4.0
// which is 11.1 together and less than kBound = 16. Rounding to float keeps the order, so the plain
// form's float lies between the two bounds.
bool sineSwing(const float *turns, float *low, float *high, int count) {
  constexpr double kTwoPi = 6.283185307179586;
  constexpr double kTwoPiHigh = 0x1.921fb54p+2;
  constexpr double kTwoPiLow = 0x1.10b4611a62633p-28;
  constexpr double kRounder = 0x1.8p51; // added and taken away again, it rounds to the nearest half
  constexpr double kBound = 0x1p-49;
  int32_t differing = 0;
  for (int i = 0; i < count; ++i) {
    const double turn = static_cast<double>(turns[i]);
    const double rounding = turn + kRounder; // its lowest bit is k's
    const double halfK = rounding - kRounder;
    const double r = kTwoPi * turn - halfK * kTwoPiHigh - halfK * kTwoPiLow;
    const double z = r * r;
    double odd = -0x1.9e97b98f9df4ap-41;
    odd = odd * z + 0x1.60e2462a866ccp-33;
    odd = odd * z - 0x1.ae63354367c43p-26;
    odd = odd * z + 0x1.71de3790c6c8ap-19;
    odd = odd * z - 0x1.a01a0198a6a4bp-13;
    odd = odd * z + 0x1.111111110726ap-7;
    odd = odd * z - 0x1.5555555555421p-3;
    const double sine = r + r * z * odd;
    const uint64_t sign = __builtin_bit_cast(uint64_t, rounding) << 63;
    const double swing = __builtin_bit_cast(double, __builtin_bit_cast(uint64_t, sine) ^ sign) + 1.0;
    low[i] = static_cast<float>(swing - kBound);
    high[i] = static_cast<float>(swing + kBound);
    differing |= low[i] != high[i] ? -1 : 0;
  }
  return differing == 0;
}

void sineSpread(float *samples, const float *swing, int count, unsigned channels, float volume) {
  if (channels == 2) {
    for (int i = 0; i < count; ++i)
      samples[2 * i] = samples[2 * i + 1] = volume * (swing[i] * 0.5F);
    return;
  }
  for (int i = 0; i < count; ++i) {
    const float sample = volume * (swing[i] * 0.5F);
    for (unsigned c = 0; c < channels; ++c)
      *samples++ = sample;
  }
}

} // namespace zol::ZOL_LEVEL
