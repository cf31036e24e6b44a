#include "kernels/warp/warp_rows.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

// ---- Places ----

/// Products of a row of the map with places along a row of the output.
struct Product {
  Product(const double (&line)[3], double scale, double row)
      : slope(scale * line[0]), rest(scale * (line[1] * row + line[2])) {}
  [[nodiscard]] F64xN at(F64xN column) const { return column * slope + rest; }

  double slope, rest;
};

/// In 1/256 pixel, from pixels' edges to their centres. What is not a number goes far away too.
Vector<int32_t, kLanes<F64xN>> place(F64xN edges) {
  const auto far = splat<F64xN>(40000 * kPhases);
  const F64xN held = max(min(edges - kPhases / 2, far), -far);
  return convert<Vector<int32_t, kLanes<F64xN>>>(floor(held + 0.5));
}

// ---- Probes ----

/// Lane i of every four, in all four.
template <int lane, class Vec, int... i> Vec spread(Vec v, std::integer_sequence<int, i...> /*all*/) {
  return __builtin_shufflevector(v, v, ((i & ~3) | lane)...);
}
template <int lane, class Vec> Vec spread(Vec v) {
  return spread<lane>(v, std::make_integer_sequence<int, kLanes<Vec>>());
}
/// Pair i of weights in all lanes of its block.
template <int pair> I16xN pairs(I16xN taps) { return as<I16xN>(spread<pair>(as<U32xN>(taps))); }

/// Sums down the four columns, the first two and the others: what each lane is more than it should be is the
/// same for all of a probe.
struct Columns {
  I16xN first, second;
};

/// Four by four pixels for every block.
struct Neighbourhood {
  explicit Neighbourhood(const _color_t *const (&corners)[kBlocks], int step) {
    const void *places[kBlocks];
    for (int row = 0; row < 4; ++row) {
      for (int b = 0; b < kBlocks; ++b)
        places[b] = corners[b] + ptrdiff_t{row} * step;
      rows[row] = loadBlocks<U8xN>(places);
    }
  }
  U8xN rows[4];
};

/// Of two columns: the values of rows 0 and 2, and of rows 1 and 3, in turn.
I16xN columnPair(I16xN evens0, I16xN odds0, I16xN evens1, I16xN odds1, I16xN down, int shift) {
  const int half = 1 << shift >> 1;
  const I16xN w02 = pairs<0>(down), w13 = pairs<1>(down);
  return packI16((mulAddPairs(evens0, w02) + mulAddPairs(odds0, w13) + half) >> shift,
                 (mulAddPairs(evens1, w02) + mulAddPairs(odds1, w13) + half) >> shift);
}

/// Channels alone.
struct Opaque {
  static constexpr int kSurplus = 0;

  static Columns columns(const Neighbourhood &n, I16xN down) {
    const U8xN evensLow = interleaveLow(n.rows[0], n.rows[2]), oddsLow = interleaveLow(n.rows[1], n.rows[3]);
    const U8xN evensHigh = interleaveHigh(n.rows[0], n.rows[2]),
               oddsHigh = interleaveHigh(n.rows[1], n.rows[3]);
    const auto low = [](U8xN v) { return widenLow<I16xN>(v); };
    const auto high = [](U8xN v) { return widenHigh<I16xN>(v); };
    return {columnPair(low(evensLow), low(oddsLow), high(evensLow), high(oddsLow), down, 8),
            columnPair(low(evensHigh), low(oddsHigh), high(evensHigh), high(oddsHigh), down, 8)};
  }
};

/// Channels times alpha, and alpha times 255, in quarters.
struct Premultiplied {
  static constexpr int kSurplus = 0;

  static Columns columns(const Neighbourhood &n, I16xN down) {
    I16xN low[4], high[4];
    for (int row = 0; row < 4; ++row) {
      low[row] = as<I16xN>((wideOf(widenLow(n.rows[row])) + 2) >> 2);
      high[row] = as<I16xN>((wideOf(widenHigh(n.rows[row])) + 2) >> 2);
    }
    const auto columnsOf = [down](const I16xN(&rows)[4]) {
      return columnPair(interleaveLow(rows[0], rows[2]), interleaveLow(rows[1], rows[3]),
                        interleaveHigh(rows[0], rows[2]), interleaveHigh(rows[1], rows[3]), down, 14);
    };
    return {columnsOf(low), columnsOf(high)};
  }
};

#if defined(__AVX2__)
/// Channels alone, by the two parts of weights: 128 high + low. All sums fit 16 bits, the last one modulo
/// 2^16 until it is halved.
struct OpaqueInParts {
  static constexpr int kSurplus = 8192;

  static Columns columns(const Neighbourhood &n, I16xN down) {
    const auto pair = [down](int byte) {
      return as<I8xN>(
          shuffle(as<U8xN>(down), as<U8xN>(splat<U16xN>(static_cast<uint16_t>(byte | (byte + 1) << 8)))));
    };
    const I8xN high02 = pair(8), high13 = pair(10), low02 = pair(12), low13 = pair(14);
    const auto sums = [&](U8xN rows02, U8xN rows13) {
      const I16xN high = mulAddPairs(rows02, high02) + mulAddPairs(rows13, high13);
      const I16xN low = mulAddPairs(rows02, low02) + mulAddPairs(rows13, low13);
      return as<I16xN>(as<U16xN>(high + (low >> 7) + (2 * kSurplus + 1)) >> 1);
    };
    return {sums(interleaveLow(n.rows[0], n.rows[2]), interleaveLow(n.rows[1], n.rows[3])),
            sums(interleaveHigh(n.rows[0], n.rows[2]), interleaveHigh(n.rows[1], n.rows[3]))};
  }
};
#else
using OpaqueInParts = Opaque;
#endif

template <class Values> I32xN probeAt(const Neighbourhood &n, I16xN across, I16xN down) {
  const Columns c = Values::columns(n, down);
  const I32xN sums = mulAddPairs(interleaveLow(c.first, c.second), pairs<0>(across)) +
                     mulAddPairs(interleaveHigh(c.first, c.second), pairs<1>(across));
  return (sums + (8192 - 16384 * Values::kSurplus)) >> 14;
}

/// What a vector's pixels gather: pixel 4 b + j in block b of sums[j].
struct Sums {
  I32xN sums[4];
};

class Prober {
public:
  Prober(const WarpSource &source, const Footprint &footprint, const Taps *taps)
      : source_(source), taps_(taps), mayBeWhole_(footprint.radius == kLeastRadius) {}

  template <class Values> [[nodiscard]] Sums at(I32xN u, I32xN v) const {
    const I32xN left = (u >> 8) - 1, top = (v >> 8) - 1;
    const auto inside = (as<U32xN>(left) <= static_cast<uint32_t>(source_.width - 4)) &
                        (as<U32xN>(top) <= static_cast<uint32_t>(source_.height - 4));
    int corners[kPixels], across[kPixels], down[kPixels];
    store(across, u & (kPhases - 1));
    store(down, v & (kPhases - 1));
    if (source_.width < 4 || source_.height < 4 || !allSet(inside)) {
      _color_t patches[kPixels][16];
      int columns[kPixels], rows[kPixels];
      store(columns, left);
      store(rows, top);
      for (int i = 0; i < kPixels; ++i) {
        fillPatch(columns[i], rows[i], patches[i]);
        corners[i] = 16 * i;
      }
      return gather<Values>(patches[0], corners, 4, across, down);
    }
    store(corners, top * source_.step + left);
    return gather<Values>(source_.pixels, corners, source_.step, across, down);
  }

  /// Whether there may be a weight that does not come in parts.
  [[nodiscard]] bool isNearWhole(I32xN v) const {
    return mayBeWhole_ && anySet(((v + 1) & (kPhases - 1)) < 3);
  }

private:
  void fillPatch(int left, int top, _color_t *patch) const {
    int columns[4];
    for (int x = 0; x < 4; ++x)
      columns[x] = heldWithin(left + x, source_.width, source_.beyond);
    for (int y = 0; y < 4; ++y) {
      const ptrdiff_t row = ptrdiff_t{heldWithin(top + y, source_.height, source_.beyond)} * source_.step;
      for (int x = 0; x < 4; ++x)
        *patch++ = source_.pixels[row + columns[x]];
    }
  }

  template <class Values>
  [[nodiscard]] Sums gather(const _color_t *pixels, const int *corners, int step, const int *across,
                            const int *down) const {
    Sums sums;
    for (int j = 0; j < 4; ++j) {
      const _color_t *at[kBlocks];
      const void *tapsAcross[kBlocks], *tapsDown[kBlocks];
      for (int b = 0; b < kBlocks; ++b) {
        at[b] = pixels + corners[4 * b + j];
        tapsAcross[b] = taps_ + across[4 * b + j];
        tapsDown[b] = taps_ + down[4 * b + j];
      }
      sums.sums[j] = probeAt<Values>(Neighbourhood(at, step), loadBlocks<I16xN>(tapsAcross),
                                     loadBlocks<I16xN>(tapsDown));
    }
    return sums;
  }

  const WarpSource &source_;
  const Taps *taps_;
  bool mayBeWhole_;
};

// ---- Means ----

/// sums / total, rounded.
I32xN mean(I32xN sums, int total) {
  using Doubles = Vector<double, kLanes<I32xN>>;
  return convert<I32xN>(convert<Doubles>(sums + total / 2) / total);
}

U32xN packed(const I32xN (&channels)[4]) {
  return as<U32xN>(packU8(packI16(channels[0], channels[1]), packI16(channels[2], channels[3])));
}

U32xN opaquePixels(const Sums &means) {
  I32xN channels[4];
  for (int j = 0; j < 4; ++j)
    channels[j] = (means.sums[j] + 32) >> 6;
  return packed(channels) | 0xFF000000;
}

/// Floats are exact here: dividends that matter are integers below 2^24 and a quotient, if it is not whole,
/// is further from the next integer than rounding can take it.
U32xN dividedByAlpha(const Sums &means) {
  const auto alphaLanes = as<I32xN>(interleaveLow(U64xN{}, splat<U64xN>(0xFFFFFFFF00000000)));
  I32xN channels[4];
  for (int j = 0; j < 4; ++j) {
    const I32xN sums = means.sums[j], alphas = alphaOfEach(sums);
    const I32xN dividend = select(alphaLanes, 4 * sums + 127, 255 * sums + (alphas >> 1));
    const I32xN divisor = select(alphaLanes, splat<I32xN>(255), alphas);
    const I32xN quotient = convert<I32xN>(convert<F32xN>(dividend) / convert<F32xN>(divisor));
    channels[j] = alphas > 0 ? quotient : I32xN{};
  }
  const U32xN pixels = packed(channels);
  return pixels >= 0x01000000 ? pixels : U32xN{};
}

template <bool opaque> class Sampler {
public:
  Sampler(const WarpSource &source, const Footprint &footprint, const Taps *taps)
      : source_(source), footprint_(footprint), prober_(source, footprint, taps) {}

  void one(const int *u, const int *v, int count, _color_t *out) const {
    forEachVector<U32xN>(count, [&](int i, int n) {
      const auto across = load<I32xN>(u + i, n), down = load<I32xN>(v + i, n);
      const auto whole = ((across | down) & (kPhases - 1)) == 0;
      if (footprint_.radius != kLeastRadius || !anySet(whole))
        return store(out + i, finished(probeAt(across, down)), n);
      if (!allSet(whole))
        store(out + i, finished(probeAt(across, down)), n);
      for (int k = i; k < i + n; ++k)
        if (((u[k] | v[k]) & (kPhases - 1)) == 0)
          out[k] = pixelOf(source_, u[k] >> 8, v[k] >> 8);
    });
  }

  void many(const int *u, const int *v, int count, _color_t *out) const {
    constexpr int kVectors = kMostProbed / kPixels;
    const ProbeLine &p = footprint_.across, &q = footprint_.downwards;
    const int vectors = (count + kPixels - 1) / kPixels;
    I32xN us[kVectors], vs[kVectors];
    Sums all[kVectors] = {};
    forEachVector<U32xN>(count, [&](int i, int n) {
      us[i / kPixels] = load<I32xN>(u + i, n);
      vs[i / kPixels] = load<I32xN>(v + i, n);
    });
    for (int row = 0; row < q.count; ++row) {
      Sums line[kVectors] = {};
      for (int column = 0; column < p.count; ++column) {
        const double t = p.distance(column), s = q.distance(row);
        const int right = nearest(t * p.along.x + s * q.along.x),
                  down = nearest(t * p.along.y + s * q.along.y);
        for (int i = 0; i < vectors; ++i)
          add(line[i], probeAt(us[i] + right, vs[i] + down), p.weight(column));
      }
      for (int i = 0; i < vectors; ++i)
        add(all[i], meanOf(line[i], p.totalWeight()), q.weight(row));
    }
    forEachVector<U32xN>(
        count, [&](int i, int n) { store(out + i, finished(meanOf(all[i / kPixels], q.totalWeight())), n); });
  }

private:
  static int nearest(double pixels) {
    const double place = kPhases * pixels + 0.5;
    const int whole = static_cast<int>(place);
    return whole - (whole > place ? 1 : 0);
  }

  [[nodiscard]] Sums probeAt(I32xN u, I32xN v) const {
    if constexpr (!opaque)
      return prober_.at<Premultiplied>(u, v);
    else if (prober_.isNearWhole(v))
      return prober_.at<Opaque>(u, v);
    else
      return prober_.at<OpaqueInParts>(u, v);
  }

  static void add(Sums &sums, const Sums &more, int weight) {
    for (int j = 0; j < 4; ++j)
      sums.sums[j] += mulAddPairs(as<I16xN>(more.sums[j]), as<I16xN>(splat<I32xN>(weight)));
  }
  static Sums meanOf(const Sums &sums, int total) {
    if (total == 1)
      return sums;
    Sums means;
    for (int j = 0; j < 4; ++j)
      means.sums[j] = mean(sums.sums[j], total);
    return means;
  }
  static U32xN finished(const Sums &means) {
    if constexpr (opaque)
      return opaquePixels(means);
    else
      return dividedByAlpha(means);
  }

  const WarpSource &source_;
  const Footprint &footprint_;
  Prober prober_;
};

template <bool opaque>
void probePixels(const WarpSource &source, const Footprint &footprint, const Taps *taps, const int *u,
                 const int *v, int count, _color_t *out) {
  const Sampler<opaque> sampler(source, footprint, taps);
  if (footprint.isOneProbe())
    sampler.one(u, v, count, out);
  else
    sampler.many(u, v, count, out);
}

} // namespace

void findPlaces(const WarpMap &map, int y, int x, int count, int *u, int *v) {
  const auto &[a, b, g] = map.toSource().rows;
  const double row = y + 0.5;
  const Product across(a, kPhases, row), down(b, kPhases, row), divisor(g, 1, row);
  F64xN steps;
  for (int i = 0; i < kLanes<F64xN>; ++i)
    steps[i] = i + 0.5;
  forEachVector<F64xN>(count, [&](int i, int n) {
    const F64xN column = steps + (x + i);
    F64xN right = across.at(column), below = down.at(column);
    if (!map.isAffine()) {
      const F64xN inverse = 1.0 / divisor.at(column);
      right *= inverse;
      below *= inverse;
    }
    store(u + i, place(right), n);
    store(v + i, place(below), n);
  });
}

void probe(const WarpSource &source, const Footprint &footprint, const Taps *taps, const int *u, const int *v,
           int count, _color_t *out) {
  const auto take = source.opaque ? probePixels<true> : probePixels<false>;
  take(source, footprint, taps, u, v, count, out);
}

void copyOpaque(const _color_t *pixels, int count, _color_t *out) {
  forEachVector<U32xN>(count,
                       [=](int i, int n) { store(out + i, load<U32xN>(pixels + i, n) | 0xFF000000, n); });
}

void copyVisible(const _color_t *pixels, int count, _color_t *out) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    store(out + i, p >= 0x01000000 ? p : U32xN{}, n);
  });
}

void fade(_color_t *pixels, int count, int opacity) {
  const auto weight = as<I16xN>(splat<U32xN>(static_cast<uint32_t>(opacity)));
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    const U32xN alpha = (as<U32xN>(mulAddPairs(as<I16xN>(p >> 24), weight)) + 2048) >> 12;
    store(pixels + i, alpha > 0 ? (p & 0x00FFFFFF) | alpha << 24 : U32xN{}, n);
  });
}

} // namespace zol::ZOL_LEVEL
