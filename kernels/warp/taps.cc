#include "kernels/warp/taps.h"

#include <algorithm>
#include <cstdlib>
#include <pthread.h>

namespace zol {
namespace {

constexpr int kOne = 16384;
constexpr int kOrder[4] = {0, 2, 1, 3};

struct Weights {
  int w[4];
};

/// What rounding leaves goes to the nearest pixel.
Weights completed(Weights weights, int phase) {
  const int sum = weights.w[0] + weights.w[1] + weights.w[2] + weights.w[3];
  weights.w[phase < kPhases / 2 ? 1 : 2] += kOne - sum;
  return weights;
}

Weights tent(int radius, int phase) {
  Weights weights;
  int sum = 0;
  for (int i = 0; i < 4; ++i) {
    weights.w[i] = std::max(0, 4 * radius - std::abs(kPhases * (i - 1) - phase));
    sum += weights.w[i];
  }
  for (int &w : weights.w)
    w = (kOne * w + sum / 2) / sum;
  return weights;
}

/// Through the pixels themselves, with the slopes of their neighbours' distances.
Weights cubic(int f) {
  Weights weights = {{-f * f * f + 512 * f * f - 65536 * f, 3 * f * f * f - 1280 * f * f + (1 << 25),
                      -3 * f * f * f + 1024 * f * f + 65536 * f, f * f * f - 256 * f * f}};
  for (int &w : weights.w)
    w = (w + 1024) >> 11;
  return weights;
}

/// From the cubic to the tent within a quarter of a pixel of the radius.
Weights sharp(int radius, int phase) {
  const int share = std::min(16, radius - kLeastRadius);
  Weights smooth = tent(radius, phase);
  const Weights own = cubic(phase);
  for (int i = 0; i < 4; ++i)
    smooth.w[i] = (smooth.w[i] * share + own.w[i] * (16 - share) + 8) >> 4;
  return smooth;
}

/// Whether the parts' sums of products with bytes fit: of two pixels each, and of all four of the low ones.
bool fits(const Taps &taps) {
  const auto within = [](const int8_t *parts, int from, int count) {
    int least = 0, most = 0;
    for (int i = from; i < from + count; ++i)
      (parts[i] < 0 ? least : most) += parts[i];
    return least >= -128 && most <= 128; // 255 times that
  };
  return within(taps.high, 0, 2) && within(taps.high, 2, 2) && within(taps.low, 0, 4);
}

/// Rounds some of the high parts up and the others down.
void split(Taps &taps) {
  for (int up = 0; up < 16; ++up) {
    bool inRange = true;
    for (int i = 0; i < 4; ++i) {
      const int high = (taps.weights[i] >> 7) + (up >> i & 1), low = taps.weights[i] - 128 * high;
      inRange &= high <= 127 && low >= -128;
      taps.high[i] = static_cast<int8_t>(high);
      taps.low[i] = static_cast<int8_t>(low);
    }
    if (inRange && fits(taps))
      return;
  }
}

struct Tables {
  Taps taps[kMostRadius - kLeastRadius + 1][kPhases];
};

/// Made when it is asked for first. Statics with constructors would bring in what threads keep for
/// exceptions, and with it the loader's own library.
template <Weights (*weightsOf)(int radius, int phase)> const Tables &tables() {
  static Tables all;
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, [] {
    for (int radius = kLeastRadius; radius <= kMostRadius; ++radius)
      for (int phase = 0; phase < kPhases; ++phase) {
        const Weights weights = completed(weightsOf(radius, phase), phase);
        Taps &taps = all.taps[radius - kLeastRadius][phase];
        for (int i = 0; i < 4; ++i)
          taps.weights[i] = static_cast<int16_t>(weights.w[kOrder[i]]);
        split(taps);
      }
  });
  return all;
}

} // namespace

const Taps *tapsOf(WarpFilter filter, int radius) {
  const Tables &all = filter == WarpFilter::smooth ? tables<tent>() : tables<sharp>();
  return all.taps[radius - kLeastRadius];
}

} // namespace zol
