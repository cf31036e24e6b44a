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

U32xN visible(U32xN pixels) { return pixels < 0x01000000 ? U32xN{} : pixels; }

/// A channel that is bits of a row, or none of them.
struct Cut {
  const _color_t *row;
  int shift;
  uint32_t kept, turned; ///< bits of a byte
};

void cutChannels(const Cut (&cuts)[4], bool areAll, _color_t *out, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto channel = [=](const Cut &cut) {
      return (load<U32xN>(cut.row + i, n) >> cut.shift & cut.kept) ^ cut.turned;
    };
    const U32xN pixels =
        channel(cuts[0]) | channel(cuts[1]) << 8 | channel(cuts[2]) << 16 | channel(cuts[3]) << 24;
    store(out + i, areAll ? visible(pixels) : pixels, n);
  });
}

/// Adds a channel for which more than bits of one row are needed.
template <bool isLuminance>
void addChannel(int channel, const PixelRoute &route, const RoutedRows &rows, _color_t *out, int count) {
  const auto weights =
      as<I16xN>(splat<U32xN>(static_cast<uint32_t>(route.weight << 16 | (4096 - route.weight))));
  const _color_t *const second = route.weight > 0 ? rows.second : rows.first;
  const int shift = 8 * static_cast<int>(route.source);
  const uint32_t turned = route.inverts ? 0xFF : 0;
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto take = [=](const _color_t *row) {
      const auto pixels = load<U32xN>(row + i, n);
      return isLuminance ? luminance(pixels) : pixels >> shift & 0xFF;
    };
    const U32xN pair = take(rows.first) | take(second) << 16;
    const U32xN mixed = as<U32xN>(mulAddPairs(as<I16xN>(pair), weights)) >> 12;
    store(out + i, load<U32xN>(out + i, n) | (mixed ^ turned) << (8 * channel), n);
  });
}

/// Whether every channel is that of the same two pictures, in the same shares.
bool isDissolve(const PixelRoute (&routes)[4], const RoutedRows (&rows)[4]) {
  bool same = routes[0].weight > 0;
  for (int channel = 0; channel < 4; ++channel)
    same &= routes[channel].source == static_cast<ChannelSource>(channel) && !routes[channel].inverts &&
            routes[channel].weight == routes[0].weight && rows[channel].first == rows[0].first;
  return same;
}

void dissolve(int weight, const RoutedRows &rows, _color_t *out, int count) {
  const auto weights = as<I16xN>(splat<U32xN>(static_cast<uint32_t>(weight << 16 | (4096 - weight))));
  const auto mixed = [=](U16xN x, U16xN y) {
    const auto mix = [=](U16xN pairs) { return mulAddPairs(as<I16xN>(pairs), weights) >> 12; };
    return packI16(mix(interleaveLow(x, y)), mix(interleaveHigh(x, y)));
  };
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto x = as<U8xN>(load<U32xN>(rows.first + i, n)), y = as<U8xN>(load<U32xN>(rows.second + i, n));
    const auto low = mixed(widenLow(x), widenLow(y)), high = mixed(widenHigh(x), widenHigh(y));
    store(out + i, visible(as<U32xN>(packU8(low, high))), n);
  });
}

} // namespace

void routeChannels(const PixelRoute (&routes)[4], const RoutedRows (&rows)[4], _color_t *out, int count) {
  if (isDissolve(routes, rows))
    return dissolve(routes[0].weight, rows[0], out, count);
  Cut cuts[4];
  bool areAll = true, needsMore[4];
  for (int channel = 0; channel < 4; ++channel) {
    const auto &[source, inverts, weight] = routes[channel];
    const bool isEven = source >= ChannelSource::none;
    needsMore[channel] = !isEven && (weight > 0 || source == ChannelSource::luminance);
    areAll &= !needsMore[channel];
    if (isEven || needsMore[channel])
      cuts[channel] = {out, 0, 0, isEven && (source == ChannelSource::full) != inverts ? 255U : 0U};
    else
      cuts[channel] = {rows[channel].first, 8 * static_cast<int>(source), 0xFF, inverts ? 255U : 0U};
  }
  cutChannels(cuts, areAll, out, count);
  for (int channel = 0; channel < 4; ++channel)
    if (needsMore[channel])
      (routes[channel].source == ChannelSource::luminance
           ? addChannel<true>
           : addChannel<false>)(channel, routes[channel], rows[channel], out, count);
  if (!areAll)
    forEachVector<U32xN>(count, [=](int i, int n) { store(out + i, visible(load<U32xN>(out + i, n)), n); });
}

} // namespace zol::ZOL_LEVEL
