#include "kernels/warp/warp_rows.h"

#include "kernels/warp/probe_lanes.h"

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

/// Whole vectors for so many pixels.
int inVectors(int count) { return (count + kPixels - 1) / kPixels * kPixels; }

// ---- Probes anywhere ----

template <class Values> class Prober {
public:
  Prober(const WarpSource &source, const Footprint &footprint, WarpFilter filter)
      : source_(source), tapsAcross_(tapsOf(filter, footprint.radiusAcross)),
        tapsDown_(tapsOf(filter, footprint.radiusDown)),
        mayBeWhole_(std::is_same_v<Values, OpaqueInParts> && footprint.radiusDown == kLeastRadius) {}

  void beginLine(int /*v*/) {}

  /// What at() gives is found so far from these places now.
  void place(const int *u, const int *v, int right, int down, int count) {
    const int lastLeft = source_.width - 4, lastTop = source_.height - 4;
    for (int i = 0; i < count; i += kPixels) {
      const I32xN x = load<I32xN>(u + i) + right, y = load<I32xN>(v + i) + down;
      const I32xN left = (x >> 8) - 1, top = (y >> 8) - 1;
      store(corners_ + i, (top * source_.step + left) * int{sizeof(_color_t)});
      store(across_ + i, (x & (kPhases - 1)) * int{sizeof(Taps)});
      store(down_ + i, (y & (kPhases - 1)) * int{sizeof(Taps)});
      store(left_ + i, left);
      store(top_ + i, top);
      atEdge_[i / kPixels] = anySet((left < 0) | (top < 0) | (left > lastLeft) | (top > lastTop));
      nearWhole_[i / kPixels] = mayBeWhole_ && isNearWhole(y);
    }
  }

  [[gnu::always_inline]] Sums at(int i) const {
    if (atEdge_[i / kPixels])
      return sumsAtEdges(i);
    if (nearWhole_[i / kPixels])
      return wideSums(source_.pixels, source_.step, corners_ + i, i);
    return sums<Values>(source_.pixels, source_.step, corners_ + i, i);
  }

private:
  template <class Summed>
  [[gnu::always_inline]] Sums sums(const _color_t *pixels, int step, const int *corners, int i) const {
    const _color_t *rows[4];
    for (int k = 0; k < 4; ++k)
      rows[k] = pixels + ptrdiff_t{k} * step;
    return sumsOf([&](int j) {
      const auto row = [&](int k) { return loadAt<U8xN>(rows[k], corners, j); };
      const Columns columns =
          Summed::columns({{row(0), row(1), row(2), row(3)}}, loadAt<I16xN>(tapsDown_, down_ + i, j));
      return acrossColumns(columns, loadAt<I16xN>(tapsAcross_, across_ + i, j), Summed::kSurplus);
    });
  }
  /// With weights that do not come in parts.
  [[gnu::noinline]] Sums wideSums(const _color_t *pixels, int step, const int *corners, int i) const {
    return sums<InWhole<Values>>(pixels, step, corners, i);
  }
  /// From copies of what the pixels see around them.
  [[gnu::noinline]] Sums sumsAtEdges(int i) const {
    _color_t patches[kPixels][16];
    int corners[kPixels];
    for (int k = 0; k < kPixels; ++k) {
      corners[k] = k * int{sizeof patches[k]};
      int columns[4];
      for (int x = 0; x < 4; ++x)
        columns[x] = heldWithin(left_[i + k] + x, source_.width, source_.beyond);
      for (int y = 0; y < 4; ++y) {
        const ptrdiff_t row =
            ptrdiff_t{heldWithin(top_[i + k] + y, source_.height, source_.beyond)} * source_.step;
        for (int x = 0; x < 4; ++x)
          patches[k][4 * y + x] = source_.pixels[row + columns[x]];
      }
    }
    return wideSums(patches[0], 4, corners, i);
  }

  const WarpSource &source_;
  const Taps *tapsAcross_, *tapsDown_;
  bool mayBeWhole_;
  int corners_[kMostProbed], across_[kMostProbed], down_[kMostProbed]; // in bytes
  int left_[kMostProbed], top_[kMostProbed];
  bool atEdge_[kMostProbed / kPixels], nearWhole_[kMostProbed / kPixels];
};

// ---- Probes along a row ----

/// Of pixels that lie in one row of the source, in order: sums down its columns serve all of them.
template <class Values> class RowProber {
public:
  /// Of so many pixels from u on.
  RowProber(const WarpSource &source, const Footprint &footprint, WarpFilter filter, const int *u, int count)
      : source_(source), tapsAcross_(tapsOf(filter, footprint.radiusAcross)),
        tapsDown_(tapsOf(filter, footprint.radiusDown)), mayBeWhole_(footprint.radiusDown == kLeastRadius) {
    const int first = u[0] >> 8, last = u[inVectors(count) - 1] >> 8, reach = footprint.first.reach() + 2;
    begin_ = (first < last ? first : last) - reach;
    count_ = inVectors((first < last ? last - first : first - last) + 2 * reach + 1);
  }

  /// Whether there is room.
  [[nodiscard]] bool holdsAll() const { return count_ <= kMostColumns; }

  /// Probes lie at v from now on.
  void beginLine(int v) {
    const _color_t *rows[4];
    for (int k = 0; k < 4; ++k)
      rows[k] = columnsOf((v >> 8) - 1 + k, copies_[k]);
    const void *taps[kBlocks];
    for (const void *&ofBlock : taps)
      ofBlock = tapsDown_ + (v & (kPhases - 1));
    const auto down = loadBlocks<I16xN>(taps);
    if (mayBeWhole_ && isNearWhole(splat<I32xN>(v)))
      sumColumns<InWhole<Values>>(rows, down);
    else
      sumColumns<Values>(rows, down);
  }

  void place(const int *u, const int * /*v*/, int right, int /*down*/, int count) {
    for (int i = 0; i < count; i += kPixels) {
      const I32xN x = load<I32xN>(u + i) + right;
      store(places_ + i, ((x >> 8) - 1 - begin_) * int{sizeof *columns_});
      store(across_ + i, (x & (kPhases - 1)) * int{sizeof(Taps)});
    }
  }

  [[gnu::always_inline]] Sums at(int i) const {
    return sumsOf([&](int j) {
      const Columns c{loadAt<I16xN>(columns_, places_ + i, j), loadAt<I16xN>(columns_ + 2, places_ + i, j)};
      return acrossColumns(c, loadAt<I16xN>(tapsAcross_, across_ + i, j), surplus_);
    });
  }

private:
  static constexpr int kMostColumns = 1280; // 64 pixels at 1/16 and what lies around them

  /// The columns of row y, from begin_ on; in the copy where not all of them lie within the source.
  const _color_t *columnsOf(int y, _color_t *copy) const {
    const _color_t *row =
        source_.pixels + ptrdiff_t{heldWithin(y, source_.height, source_.beyond)} * source_.step;
    const int end = begin_ + count_;
    if (begin_ >= 0 && end <= source_.width)
      return row + begin_;
    const int from = begin_ < 0 ? 0 : begin_, to = end < source_.width ? end : source_.width;
    if (from < to)
      __builtin_memcpy(copy + (from - begin_), row + from, static_cast<size_t>(to - from) * sizeof *row);
    for (int x = begin_; x < end; ++x)
      if (x < 0 || x >= source_.width)
        copy[x - begin_] = row[heldWithin(x, source_.width, source_.beyond)];
    return copy;
  }

  template <class Summed> void sumColumns(const _color_t *const *rows, I16xN down) {
    surplus_ = Summed::kSurplus;
    for (int i = 0; i < count_; i += kPixels) {
      const auto row = [&](int k) { return load<U8xN>(rows[k] + i); };
      const Columns c = Summed::columns({{row(0), row(1), row(2), row(3)}}, down);
      storeWide(columns_ + i, as<U16xN>(c.first), as<U16xN>(c.second));
    }
  }

  const WarpSource &source_;
  const Taps *tapsAcross_, *tapsDown_;
  bool mayBeWhole_;
  int begin_, count_, surplus_ = 0;
  int places_[kMostProbed], across_[kMostProbed]; // in bytes
  WidePixel columns_[kMostColumns];
  _color_t copies_[4][kMostColumns];
};

// ---- Pixels ----

template <bool opaque, class Prober> class Sampler {
public:
  Sampler(const WarpSource &source, const Footprint &footprint, Prober &prober)
      : source_(source), footprint_(footprint), prober_(prober),
        mayBeWhole_(footprint.radiusAcross == kLeastRadius && footprint.radiusDown == kLeastRadius) {}

  void take(const int *u, const int *v, int count, _color_t *out) {
    if (footprint_.isOneProbe())
      takeOne(u, v, count, out);
    else
      takeMean(u, v, count, out);
  }

private:
  void takeOne(const int *u, const int *v, int count, _color_t *out) {
    prober_.beginLine(v[0]);
    prober_.place(u, v, 0, 0, count);
    for (int i = 0; i < count; i += kPixels) {
      const auto across = load<I32xN>(u + i), down = load<I32xN>(v + i);
      const auto whole = ((across | down) & (kPhases - 1)) == 0;
      if (!mayBeWhole_ || !allSet(whole))
        put(out + i, finished(prober_.at(i)), count - i);
      if (mayBeWhole_ && anySet(whole))
        putWhole(u, v, i, count, out);
    }
  }
  /// Pixels that lie on one of the source are that.
  void putWhole(const int *u, const int *v, int i, int count, _color_t *out) const {
    for (const int end = i + kPixels; i < count && i < end; ++i)
      if (((u[i] | v[i]) & (kPhases - 1)) == 0)
        out[i] = pixelOf(source_, u[i] >> 8, v[i] >> 8);
  }

  void takeMean(const int *u, const int *v, int count, _color_t *out) {
    const ProbeLine &p = footprint_.first, &q = footprint_.second;
    Sums all[kMostProbed / kPixels], line[kMostProbed / kPixels];
    for (int row = 0; row < q.count; ++row) {
      const double s = q.distance(row);
      prober_.beginLine(v[0] + nearest(s * q.along.y));
      for (int column = 0; column < p.count; ++column) {
        const double t = p.distance(column);
        const int right = nearest(t * p.along.x + s * q.along.x),
                  down = nearest(t * p.along.y + s * q.along.y);
        prober_.place(u, v, right, down, count);
        for (int i = 0; i < count; i += kPixels)
          add(line[i / kPixels], prober_.at(i), p.weight(column), column == 0);
      }
      for (int i = 0; i < count; i += kPixels)
        add(all[i / kPixels], meanOf(line[i / kPixels], p.totalWeight()), q.weight(row), row == 0);
    }
    for (int i = 0; i < count; i += kPixels)
      put(out + i, finished(meanOf(all[i / kPixels], q.totalWeight())), count - i);
  }

  static int nearest(double pixels) {
    const double place = kPhases * pixels + 0.5;
    const int whole = static_cast<int>(place);
    return whole - (whole > place ? 1 : 0);
  }
  static void put(_color_t *out, U32xN pixels, int count) {
    if (count >= kPixels)
      store(out, pixels);
    else
      store(out, pixels, count);
  }
  static void add(Sums &sums, const Sums &more, int weight, bool first) {
    for (int j = 0; j < 4; ++j) {
      const I32xN weighted = mulAddPairs(as<I16xN>(more.sums[j]), as<I16xN>(splat<I32xN>(weight)));
      sums.sums[j] = first ? weighted : sums.sums[j] + weighted;
    }
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
  Prober &prober_;
  bool mayBeWhole_;
};

template <bool opaque>
void takeProbes(const WarpSource &source, const Footprint &footprint, WarpFilter filter, bool inRow,
                const int *u, const int *v, int count, _color_t *out) {
  using Values = std::conditional_t<opaque, OpaqueInParts, Premultiplied>;
  if (inRow) {
    RowProber<Values> prober(source, footprint, filter, u, count);
    if (prober.holdsAll())
      return Sampler<opaque, RowProber<Values>>(source, footprint, prober).take(u, v, count, out);
  }
  Prober<Values> prober(source, footprint, filter);
  Sampler<opaque, Prober<Values>>(source, footprint, prober).take(u, v, count, out);
}

} // namespace

void findPlaces(const WarpMap &map, int y, int x, int count, int *u, int *v) {
  const auto &[a, b, g] = map.toSource().rows;
  const double row = y + 0.5;
  const Product across(a, kPhases, row), down(b, kPhases, row), divisor(g, 1, row);
  F64xN steps;
  for (int i = 0; i < kLanes<F64xN>; ++i)
    steps[i] = i + 0.5;
  for (int i = 0; i < inVectors(count); i += kLanes<F64xN>) {
    const F64xN column = steps + (x + i);
    F64xN right = across.at(column), below = down.at(column);
    if (!map.isAffine()) {
      const F64xN inverse = 1.0 / divisor.at(column);
      right *= inverse;
      below *= inverse;
    }
    store(u + i, place(right));
    store(v + i, place(below));
  }
}

void probe(const WarpSource &source, const Footprint &footprint, WarpFilter filter, bool inRow, const int *u,
           const int *v, int count, _color_t *out) {
  const auto take = source.opaque ? takeProbes<true> : takeProbes<false>;
  take(source, footprint, filter, inRow, u, v, count, out);
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
