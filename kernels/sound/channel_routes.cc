#include "kernels/sound/channel_routes.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace zol {
namespace {

template <ChannelRoute Route, class Number = double> float routed(const float *frame) {
  if constexpr (Route == kRouteFirst)
    return frame[0];
  else if constexpr (Route == kRouteSecond)
    return frame[1];
  else
    return static_cast<float>((static_cast<Number>(frame[0]) + static_cast<Number>(frame[1])) * Number{0.5});
}

/// False when a sample is not finite.
template <ChannelRoute First, ChannelRoute Second, class Number>
bool routeRun(float *out, const float *in, size_t frames) {
  int infinite = 0;
  for (size_t i = 0; i < frames; ++i) {
    const float first = routed<First, Number>(in + 2 * i);
    const float second = First == Second ? first : routed<Second, Number>(in + 2 * i);
    out[2 * i] = first;
    out[2 * i + 1] = second;
    const float mean = First == kRouteMean ? first : second;
    infinite |= std::fabs(mean) <= FLT_MAX ? 0 : -1;
  }
  return infinite == 0;
}

/// Both channels of a stereo block from a stereo block. A mean is the same in float as in double, since
/// double has more than twice the digits and small sums are exact in both, unless the float sum is
/// too large.
template <ChannelRoute First, ChannelRoute Second>
void routePair(float *out, const float *in, size_t frames) {
  constexpr size_t kRun = 256;
  for (size_t done = 0; done < frames; done += kRun) {
    const size_t count = std::min(kRun, frames - done);
    if (!routeRun<First, Second, float>(out + 2 * done, in + 2 * done, count) &&
        (First == kRouteMean || Second == kRouteMean))
      routeRun<First, Second, double>(out + 2 * done, in + 2 * done, count);
  }
}

using RoutePair = void (*)(float *out, const float *in, size_t frames);

/// By the first channel's route and the second's, each less kRouteFirst.
constexpr RoutePair kPairs[3][3] = {
    {routePair<kRouteFirst, kRouteFirst>, routePair<kRouteFirst, kRouteSecond>,
     routePair<kRouteFirst, kRouteMean>},
    {routePair<kRouteSecond, kRouteFirst>, routePair<kRouteSecond, kRouteSecond>,
     routePair<kRouteSecond, kRouteMean>},
    {routePair<kRouteMean, kRouteFirst>, routePair<kRouteMean, kRouteSecond>,
     routePair<kRouteMean, kRouteMean>},
};

template <ChannelRoute Route>
void routeOne(float *out, unsigned outStep, const float *in, unsigned inStep, size_t frames) {
  for (size_t i = 0; i < frames; ++i)
    out[i * outStep] = routed<Route>(in + i * inStep);
}

/// One channel of a block of any width, silence behind the input's end.
void routeChannel(float *out, size_t frames, unsigned channels, const AudioSource &in, ChannelRoute route) {
  const size_t held = std::min(frames, in.frames);
  switch (route) {
  case kRouteOff: return;
  case kRouteFirst: routeOne<kRouteFirst>(out, channels, in.samples, in.channels, held); break;
  case kRouteSecond: routeOne<kRouteSecond>(out, channels, in.samples, in.channels, held); break;
  case kRouteMean: routeOne<kRouteMean>(out, channels, in.samples, in.channels, held); break;
  }
  for (size_t i = held; i < frames; ++i)
    out[i * channels] = 0.0F;
}

ChannelRoute effectiveRoute(int selector, const AudioSource &in) {
  if (selector < kRouteFirst || selector > kRouteMean)
    return kRouteOff;
  const unsigned taken = selector == kRouteFirst ? 1 : 2;
  return in.channels >= taken ? static_cast<ChannelRoute>(selector) : kRouteOff;
}

} // namespace

void routeChannels(float *out, size_t frames, unsigned channels, const AudioSource &in, int first,
                   int second) {
  const ChannelRoute firstRoute = effectiveRoute(first, in);
  const ChannelRoute secondRoute = effectiveRoute(second, in);
  if (channels == 2 && in.channels == 2 && firstRoute != kRouteOff && secondRoute != kRouteOff) {
    const size_t held = std::min(frames, in.frames);
    kPairs[firstRoute - kRouteFirst][secondRoute - kRouteFirst](out, in.samples, held);
    std::fill(out + 2 * held, out + 2 * frames, 0.0F);
    return;
  }
  if (channels >= 1)
    routeChannel(out, frames, channels, in, firstRoute);
  if (channels >= 2)
    routeChannel(out + 1, frames, channels, in, secondRoute);
}

} // namespace zol
