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
  const F64xN held = max(min(edges - 0.5 * kPhases, far), -far);
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

protected:
  int corners_[kMostProbed], across_[kMostProbed], down_[kMostProbed]; // in bytes

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
  int left_[kMostProbed], top_[kMostProbed];
  bool atEdge_[kMostProbed / kPixels], nearWhole_[kMostProbed / kPixels];
};

/// Of a footprint for each pixel: one probe of radii of its own.
template <class Values> class EachProber : public Prober<Values> {
public:
  EachProber(const WarpSource &source, WarpFilter filter) : Prober<Values>(source, {}, filter) {}

  void place(const int *u, const int *v, const int *radiiAcross, const int *radiiDown, int count) {
    Prober<Values>::place(u, v, 0, 0, count);
    const auto add = [](int *offsets, const int *radii) {
      constexpr int kTable = kPhases * int{sizeof(Taps)};
      store(offsets, load<I32xN>(offsets) + (load<I32xN>(radii) - kLeastRadius) * kTable);
    };
    for (int i = 0; i < count; i += kPixels) {
      add(this->across_ + i, radiiAcross + i);
      add(this->down_ + i, radiiDown + i);
    }
  }
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
    if constexpr (std::is_same_v<Values, OpaqueInParts>)
      if (mayBeWhole_ && isNearWhole(splat<I32xN>(v)))
        return sumColumns<InWhole<Values>>(rows, down);
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

/// Calls put(i, sums) for every vector of places.
template <class Values, class Put>
void forEachSums(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
                 const int *radiiAcross, const int *radiiDown, int count, Put put) {
  EachProber<Values> prober(source, filter);
  prober.place(u, v, radiiAcross, radiiDown, count);
  for (int i = 0; i < count; i += kPixels)
    put(i, prober.at(i));
}

// ---- Pixels of many probes, each its own ----

template <class Values> U32xN finishedPixels(const Sums &means) {
  if constexpr (std::is_same_v<Values, Premultiplied>)
    return dividedByAlpha(means);
  else
    return opaquePixels(means);
}

/// The number of probes along a step of that length and how far they are apart, as a share of it. Lengths
/// are in 1/256 pixel, `whole` the step's own and `length` what counts of it.
struct StepProbes {
  StepProbes(F32xN whole, F32xN length, F32xN radius) {
    const F32xN ratio = length / radius, rest = length * length - radius * radius;
    const I32xN cut = convert<I32xN>(ratio);
    const I32xN n = convert<F32xN>(cut) < ratio ? cut + 1 : cut;
    const auto one = length <= radius, two = length <= radius * 1.25F;
    const F32xN squares = convert<F32xN>(n * n - 1);
    const F32xN apart = squareRoot(two ? rest * 2.0F / 3.0F : rest / squares);
    count = one ? splat<I32xN>(1) : two ? splat<I32xN>(2) : 2 * n - 1;
    share = one ? F32xN{} : apart / whole;
  }
  I32xN count;
  F32xN share;
};

struct StepFootprints {
  explicit StepFootprints(const PlaceSteps &steps, int size) {
    for (int i = 0; i < size; i += kPixels) {
      const auto lane = [i](const int *from) { return convert<F32xN>(load<I32xN>(from + i)); };
      const F32xN px = lane(steps.rightU), py = lane(steps.rightV), qx = lane(steps.downU),
                  qy = lane(steps.downV);
      const F32xN p = squareRoot(px * px + py * py), q = squareRoot(qx * qx + qy * qy);
      const auto held = [](F32xN v, float least, float most) {
        return max(min(v, splat<F32xN>(most)), splat<F32xN>(least));
      };
      const F32xN lengthP = held(p, 0, PlaceSteps::kLongest), lengthQ = held(q, 0, PlaceSteps::kLongest);
      const F32xN quarter = held(min(lengthP, lengthQ), kPhases, 2 * kPhases) * 0.25F;
      const I32xN cut = convert<I32xN>(quarter);
      const I32xN radius64 = convert<F32xN>(cut) < quarter ? cut + 1 : cut;
      const F32xN radius = convert<F32xN>(radius64) * 4.0F;
      const StepProbes alongP(p, lengthP, radius), alongQ(q, lengthQ, radius);
      store(radii + i, radius64);
      store(across + i, alongP.count);
      store(down + i, alongQ.count);
      store(acrossU + i, px * alongP.share);
      store(acrossV + i, py * alongP.share);
      store(downU + i, qx * alongQ.share);
      store(downV + i, qy * alongQ.share);
    }
  }

  int radii[kMostProbed], across[kMostProbed], down[kMostProbed]; ///< numbers of probes
  float acrossU[kMostProbed], acrossV[kMostProbed], downU[kMostProbed], downV[kMostProbed]; ///< between them
};

/// The four channels of a pixel.
using Channels = Vector<int32_t, 4>;

Channels meanOf(Channels sums, int total) {
  using Floats = Vector<float, 4>;
  return convert<Channels>(convert<Floats>(sums + total / 2) / static_cast<float>(total)); // exact
}

template <class Values> class StepProber {
public:
  StepProber(const WarpSource &source, WarpFilter filter, const StepFootprints &footprints,
             const int *columns, _color_t *out)
      : source_(source), filter_(filter), footprints_(footprints), columns_(columns), out_(out) {
    for (int i = 0; i < kMostProbed; ++i)
      u_[i] = v_[i] = radii_[i] = kLeastRadius;
  }

  /// Pixel k, one after the other.
  void add(int k, int u, int v) {
    const int across = footprints_.across[k], down = footprints_.down[k];
    if (probes_ + across * down > kMostProbed)
      finish(k);
    const float stepU = footprints_.acrossU[k], stepV = footprints_.acrossV[k];
    for (int j = 0; j < down; ++j) {
      const float s = static_cast<float>(j) - static_cast<float>(down - 1) * 0.5F;
      const float rowU = s * footprints_.downU[k], rowV = s * footprints_.downV[k];
      for (int i = 0; i < across; ++i, ++probes_) {
        const float t = static_cast<float>(i) - static_cast<float>(across - 1) * 0.5F;
        u_[probes_] = u + nearest(t * stepU + rowU);
        v_[probes_] = v + nearest(t * stepV + rowV);
        radii_[probes_] = footprints_.radii[k];
      }
    }
  }

  /// Of the pixels before `end` that were added.
  void finish(int end) {
    int32_t sums[kMostProbed][4];
    forEachSums<Values>(source_, filter_, u_, v_, radii_, radii_, probes_, [&](int i, const Sums &found) {
      for (int j = 0; j < 4; ++j) {
        void *places[kBlocks];
        for (int b = 0; b < kBlocks; ++b)
          places[b] = sums[i + 4 * b + j];
        storeBlocks(places, found.sums[j]);
      }
    });
    int32_t means[kMostProbed][4] = {};
    const auto *probe = sums;
    for (int k = begin_; k < end; ++k) {
      Channels all{};
      const int across = footprints_.across[k], down = footprints_.down[k];
      for (int j = 0; j < down; ++j) {
        Channels line{};
        for (int i = 0; i < across; ++i)
          line += load<Channels>(probe++) * weight(i, across);
        all += (across > 1 ? meanOf(line, total(across)) : line) * weight(j, down);
      }
      store(means[k - begin_], down > 1 ? meanOf(all, total(down)) : all);
    }
    for (int i = 0; i < end - begin_; i += kPixels) {
      _color_t pixels[kPixels];
      store(pixels, finishedPixels<Values>(sumsOf([&](int j) {
              const void *places[kBlocks];
              for (int b = 0; b < kBlocks; ++b)
                places[b] = means[i + 4 * b + j];
              return loadBlocks<I32xN>(places);
            })));
      for (int k = 0; k < kPixels && begin_ + i + k < end; ++k)
        out_[columns_[begin_ + i + k]] = pixels[k];
    }
    begin_ = end;
    probes_ = 0;
  }

private:
  static int nearest(float place) {
    const float above = place + 0.5F;
    const int whole = static_cast<int>(above);
    return whole - (static_cast<float>(whole) > above ? 1 : 0);
  }
  static int weight(int i, int count) { return count == 2 ? 1 : 1 + (i < count - 1 - i ? i : count - 1 - i); }
  static int total(int count) { return count == 2 ? 2 : (count + 1) / 2 * ((count + 1) / 2); }

  const WarpSource &source_;
  WarpFilter filter_;
  const StepFootprints &footprints_;
  const int *columns_;
  _color_t *out_;
  int begin_ = 0, probes_ = 0;
  int u_[kMostProbed], v_[kMostProbed], radii_[kMostProbed];
};

template <class Values>
void takeSteps(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
               const PlaceSteps &steps, const int *columns, int count, _color_t *out) {
  const StepFootprints footprints(steps, count);
  StepProber<Values> prober(source, filter, footprints, columns, out);
  for (int k = 0; k < count; ++k)
    prober.add(k, u[columns[k]], v[columns[k]]);
  prober.finish(count);
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

void probeEach(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
               const int *radiiAcross, const int *radiiDown, int count, _color_t *out) {
  const auto take = [=, &source](auto values) {
    using Values = decltype(values);
    forEachSums<Values>(source, filter, u, v, radiiAcross, radiiDown, count, [=](int i, const Sums &sums) {
      store(out + i, finishedPixels<Values>(sums), count - i < kPixels ? count - i : kPixels);
    });
  };
  if (source.opaque)
    take(OpaqueInParts());
  else
    take(Premultiplied());
  for (int i = 0; i < count; ++i)
    if (((u[i] | v[i]) & (kPhases - 1)) == 0 && radiiAcross[i] == kLeastRadius &&
        radiiDown[i] == kLeastRadius)
      out[i] = pixelOf(source, u[i] >> 8, v[i] >> 8);
}

void probeSteps(const WarpSource &source, WarpFilter filter, const int *u, const int *v,
                const PlaceSteps &steps, const int *columns, int count, _color_t *out) {
  const auto take = source.opaque ? takeSteps<OpaqueInParts> : takeSteps<Premultiplied>;
  take(source, filter, u, v, steps, columns, count, out);
}

void pickEach(const WarpSource &source, const int *u, const int *v, int count, _color_t *out) {
  const int last = source.width - 1, lowest = source.height - 1;
  const auto seen = source.opaque ? 0xFF000000 : 0, least = uint32_t{1} << 24;
  const auto *pixels = reinterpret_cast<const uint32_t *>(source.pixels);
  forEachVector<U32xN>(count, [=, &source](int i, int n) {
    const I32xN x = (load<I32xN>(u + i, n) + kPhases / 2) >> 8,
                y = (load<I32xN>(v + i, n) + kPhases / 2) >> 8;
    if (anySet((x < 0) | (y < 0) | (x > last) | (y > lowest))) {
      for (int k = 0; k < n; ++k)
        out[i + k] = pixelOf(source, x[k], y[k]);
      return;
    }
    const U32xN p = gather(pixels, as<U32xN>(y * source.step + x)) | seen;
    store(out + i, p >= least ? p : U32xN{}, n);
  });
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
