// Routing of the two channels of a stereo sound.
#pragma once

#include "kernels/sound/samples.h"

#include <cstddef>

namespace zol {

/// What an output channel takes: an input channel, or the mean of both. The values are those of the
/// effect's selectors.
enum ChannelRoute { kRouteOff, kRouteFirst, kRouteSecond, kRouteMean };

/// Routes into the first and second of the `channels` interleaved channels of `out`. A channel is not
/// written at all when its route is none of the above, and when the input lacks a channel that the
/// route takes; every further channel is left alone. Past the input's end the routed channels get
/// silence.
void routeChannels(float *out, size_t frames, unsigned channels, const AudioSource &in, int first,
                   int second);

} // namespace zol
