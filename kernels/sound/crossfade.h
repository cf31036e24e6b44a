// Linear fades of one or two sounds over a common ramp.
#pragma once

#include "kernels/simd/levels.h"
#include "kernels/sound/samples.h"

#include <cstddef>

namespace zol {

/// Where a block lies within a transition: frame i is at `position + i * step`, 0 where the transition
/// starts and 1 where it ends.
struct Ramp {
  float position, step;
};

/// Fills `frames` frames of `channels` interleaved samples with `outgoing` plus `incoming` (either may
/// be null, not both). A fading outgoing sound is scaled by 1 - r and a fading incoming one by r, r
/// being the place on the ramp; otherwise a sound is taken as it is. All in extended precision, rounded
/// once.
void crossfade(float *out, size_t frames, unsigned channels, const AudioSource *outgoing, bool fadeOut,
               const AudioSource *incoming, bool fadeIn, Ramp ramp);

// The level functions bound the exactly computed float: low and high are neighbours of it, and where
// both have the same bits (-0 and 0 are two floats) they are that float. False when some differ. frame[i] is
// the number of sample i's frame after `first`.
ZOL_LEVELS(
    /// Two sounds, of which one at least fades; every place on the ramp lies within 0 to 1.
    bool crossfadeBounds(float *low, float *high, const float *a, bool fadeA, const float *b, bool fadeB,
                         const double *frame, int count, double first, double position, double step);

    /// One sound by the gain `position + frame * step`, which lies within 0 to 1.
    bool fadeBounds(float *low, float *high, const float *in, const double *frame, int count, double first,
                    double position, double step);)

} // namespace zol
