// The sine tone of the generator: a sine of the absolute time that swings between 0 and the volume.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Fills `frames` frames of `channels` interleaved samples each, every channel alike. The first frame
/// is number `firstFrame` of a block that starts at `start` seconds and has `rate` frames a second;
/// `frequency` is in hertz. Time and phase are rounded to float on the way, so late times make the
/// phase coarse; that belongs to the generator's sound. No value of any argument is an error.
void sineTone(float *samples, uint32_t firstFrame, size_t frames, unsigned channels, double start,
              uint32_t rate, float frequency, float volume);

/// Up to this many turns the level functions know the phase well enough.
inline constexpr float kSineTurnsLimit = 0x1p25F;

ZOL_LEVELS(
    /// The phase of frames first .. first + count - 1 in turns.
    void sineTurns(float *turns, uint32_t first, int count, double start, float rate, float frequency);

    /// Bounds of the float nearest to sin(2 pi turns) + 1 as the C library's sine gives it: where low
    /// and high are equal, both are that float. False when some differ.
    bool sineSwing(const float *turns, float *low, float *high, int count);

    /// Writes half of volume * swing to every channel of each frame.
    void sineSpread(float *samples, const float *swing, int count, unsigned channels, float volume);)

} // namespace zol
