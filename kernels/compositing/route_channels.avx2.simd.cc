#include "kernels/compositing/route_channels.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

U32xN luminance(U32xN pixels) {
  const auto blueRed = as<I16xN>(pixels & 0x00FF00FF), green = as<I16xN>(pixels >> 8 & 0xFF);
  const auto sum = mulAddPairs(blueRed, as<I16xN>(splat<U32xN>(54 << 16 | 19))) +
                   mulAddPairs(green, as<I16xN>(splat<U32xN>(183)));
  return as<U32xN>(sum) >> 8;
}

/// Takes one value of pixels, in the lowest byte.
template <bool isLuminance> struct Taken {
  int shift;

  U32xN operator()(U32xN pixels) const { return isLuminance ? luminance(pixels) : pixels >> shift & 0xFF; }
};

U32xN visible(U32xN pixels) { return pixels < 0x01000000 ? U32xN{} : pixels; }

/// Adds a channel that is value(i, n) to what was written before.
template <class Value> void addChannel(int channel, bool inverts, _color_t *out, int count, Value value) {
  const uint32_t turned = inverts ? 0xFF : 0;
  forEachVector<U32xN>(count, [=](int i, int n) {
    const U32xN before = channel == 0 ? U32xN{} : load<U32xN>(out + i, n);
    const U32xN pixels = before | (value(i, n) ^ turned) << (8 * channel);
    store(out + i, channel == 3 ? visible(pixels) : pixels, n);
  });
}

template <bool isLuminance>
void route(int channel, const PixelRoute &route, const RoutedRows &rows, _color_t *out, int count) {
  const Taken<isLuminance> take{8 * static_cast<int>(route.source)};
  if (route.weight == 0)
    return addChannel(channel, route.inverts, out, count,
                      [=](int i, int n) { return take(load<U32xN>(rows.first + i, n)); });
  const auto weights =
      as<I16xN>(splat<U32xN>(static_cast<uint32_t>(route.weight << 16 | (4096 - route.weight))));
  addChannel(channel, route.inverts, out, count, [=](int i, int n) {
    const U32xN first = take(load<U32xN>(rows.first + i, n)), second = take(load<U32xN>(rows.second + i, n));
    return as<U32xN>(mulAddPairs(as<I16xN>(first | second << 16), weights)) >> 12;
  });
}

} // namespace

void routeChannels(const PixelRoute (&routes)[4], const RoutedRows (&rows)[4], _color_t *out, int count) {
  for (int channel = 0; channel < 4; ++channel) {
    const PixelRoute &r = routes[channel];
    if (r.source == ChannelSource::none || r.source == ChannelSource::full) {
      const uint32_t even = r.source == ChannelSource::full ? 255 : 0;
      addChannel(channel, r.inverts, out, count, [=](int, int) { return splat<U32xN>(even); });
    } else {
      (r.source == ChannelSource::luminance ? route<true> : route<false>)(channel, r, rows[channel], out,
                                                                          count);
    }
  }
}

} // namespace zol::ZOL_LEVEL
