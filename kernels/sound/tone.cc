#include "kernels/sound/tone.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

constexpr int kRun = 128; // frames at a time
constexpr int kGroup = 8; // frames looked at together; divides kRun

constexpr int wholeGroups(int count) { return (count + kGroup - 1) / kGroup * kGroup; }

bool withinLimit(float turns) { return std::fabs(turns) <= kSineTurnsLimit; }

/// swing[i] as the C library gives it. Late phases are so coarse that neighbours are often equal.
void settle(const float *turns, float *swing, int i) {
  constexpr double kTwoPi = 6.283185307179586;
  swing[i] = i > 0 && turns[i] == turns[i - 1]
                 ? swing[i - 1]
                 : static_cast<float>(std::sin(kTwoPi * static_cast<double>(turns[i])) + 1.0);
}

/// Settles the frames whose bounds differ. That happens to one in thousands, and more often only where
/// a coarse phase keeps meeting the lowest point, at which every place of the sine is heard.
void settleDiffering(const float *turns, float *low, const float *high, int count) {
  for (int group = 0; group < count; group += kGroup) {
    int differing = 0;
    for (int i = group; i < group + kGroup; ++i)
      differing |= low[i] != high[i] ? -1 : 0;
    if (differing != 0)
      for (int i = group; i < std::min(group + kGroup, count); ++i)
        if (low[i] != high[i])
          settle(turns, low, i);
  }
}

} // namespace

void sineTone(float *samples, uint32_t firstFrame, size_t frames, unsigned channels, double start,
              uint32_t rate, float frequency, float volume) {
  const auto computeTurns = ZOL_SELECT(sineTurns);
  const auto computeSwing = ZOL_SELECT(sineSwing);
  const auto spread = ZOL_SELECT(sineSpread);
  alignas(32) float turns[kRun], swing[kRun], high[kRun];
  while (frames > 0) {
    const int count = static_cast<int>(std::min<size_t>(frames, kRun));
    computeTurns(turns, firstFrame, wholeGroups(count), start, static_cast<float>(rate), frequency);
    // Time and phase run in one direction, so the run's ends are its extremes.
    if (!withinLimit(turns[0]) || !withinLimit(turns[count - 1])) {
      for (int i = 0; i < count; ++i)
        settle(turns, swing, i);
    } else if (!computeSwing(turns, swing, high, wholeGroups(count))) {
      settleDiffering(turns, swing, high, count);
    }
    spread(samples, swing, count, channels, volume);
    samples += static_cast<size_t>(count) * channels;
    firstFrame += static_cast<uint32_t>(count);
    frames -= static_cast<size_t>(count);
  }
}

} // namespace zol
