#include "kernels/sound/crossfade.h"

#include <cstdint>

namespace zol::ZOL_LEVEL {
namespace {

// In units of 2^-53 of |a| + |b|, for places and gains within 0 to 1: the place is off by 1, or by 2
// where its start had to be rounded too, its complement by 1 more, a product by 1, the sum by 1, and
// taking the bound adds 1. That is 6 at most, the extended form's own 2^-64 included.
constexpr double kBound = 8 * 0x1p-53;

int32_t bits(float value) { return __builtin_bit_cast(int32_t, value); }
float magnitude(float value) { return __builtin_bit_cast(float, bits(value) & INT32_MAX); }

template <bool FadeA, bool FadeB>
bool bounds(float *low, float *high, const float *a, const float *b, const double *frame, int count,
            double first, double position, double step) {
  int32_t differing = 0;
  for (int i = 0; i < count; ++i) {
    const double place = position + (first + frame[i]) * step;
    const double outgoing = FadeA ? static_cast<double>(a[i]) * (1.0 - place) : static_cast<double>(a[i]);
    const double incoming = FadeB ? static_cast<double>(b[i]) * place : static_cast<double>(b[i]);
    const double sum = outgoing + incoming;
    const double bound = static_cast<double>(magnitude(a[i]) + magnitude(b[i])) * kBound;
    low[i] = static_cast<float>(sum - bound);
    high[i] = static_cast<float>(sum + bound);
    differing |= bits(low[i]) ^ bits(high[i]);
  }
  return differing == 0;
}

} // namespace

bool crossfadeBounds(float *low, float *high, const float *a, bool fadeA, const float *b, bool fadeB,
                     const double *frame, int count, double first, double position, double step) {
  const auto run = fadeA && fadeB ? bounds<true, true> : fadeA ? bounds<true, false> : bounds<false, true>;
  return run(low, high, a, b, frame, count, first, position, step);
}

bool fadeBounds(float *low, float *high, const float *in, const double *frame, int count, double first,
                double position, double step) {
  int32_t differing = 0;
  for (int i = 0; i < count; ++i) {
    const double faded = static_cast<double>(in[i]) * (position + (first + frame[i]) * step);
    const double bound = static_cast<double>(magnitude(in[i])) * kBound;
    low[i] = static_cast<float>(faded - bound);
    high[i] = static_cast<float>(faded + bound);
    differing |= bits(low[i]) ^ bits(high[i]);
  }
  return differing == 0;
}

} // namespace zol::ZOL_LEVEL
