#include "kernels/exports/mix.h"

#include "frame/convert.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/compositing/mix_rows.h"

#include <algorithm>
#include <iterator>

namespace zol {
namespace {

/// The weight of B, 4096 = 1.0.
int weightOf(float ratio) { return truncate(ratio * kMixOne); }

bool withinOne(int weightB) { return weightB >= 0 && weightB <= kMixOne; }

/// The nearest of the edges beyond `at`, or the end where that is nearer.
int nextEdge(int at, int end, std::initializer_list<int> edges) {
  for (const int edge : edges)
    if (edge > at)
      end = std::min(end, edge);
  return end;
}

// ---- Weights beyond 0 to 4096: sums wrap at 32 bits ----

int wrappedSum(int a, int b, int weightB, int remainder) {
  const auto b32 = static_cast<uint32_t>(weightB);
  return static_cast<int>(static_cast<uint32_t>(a) * (kMixOne - b32) + static_cast<uint32_t>(b) * b32 +
                          static_cast<uint32_t>(remainder));
}

class LimitedMix {
public:
  explicit LimitedMix(int weightB) : weightB_(weightB) {}

  _color_t operator()(_color_t a, _color_t b) {
    return {channel(a.b, b.b, remainders_[0]), channel(a.g, b.g, remainders_[1]),
            channel(a.r, b.r, remainders_[2]), channel(a.a, b.a, remainders_[3])};
  }

private:
  [[nodiscard]] uint8_t channel(int a, int b, int &remainder) const {
    constexpr int kFull = 255 * kMixOne;
    const int sum = wrappedSum(a, b, weightB_, remainder);
    const int value = sum > kFull ? 255 : sum < 0 ? 0 : sum / kMixOne;
    remainder = static_cast<int>(static_cast<uint32_t>(sum) - static_cast<uint32_t>(value * kMixOne));
    return static_cast<uint8_t>(value);
  }

  int weightB_;
  int remainders_[4] = {};
};

void mixRowsLimited(const MixStretch &s, int rows, LimitedMix *mixes) {
  for (int row = 0; row < rows; ++row)
    for (int x = 0; x < s.width; ++x)
      s.out[row * s.outStep + x] =
          mixes[row](s.a[row * s.aStep + x], s.b != nullptr ? s.b[row * s.bStep + x] : _color_t{});
}

void blendRowWrapped(const _color_t *a, const _color_t *b, _color_t *out, int width, int weightB) {
  const auto channel = [weightB](int ca, int cb) {
    return static_cast<uint8_t>(wrappedSum(ca, cb, weightB, 0) >> 12);
  };
  for (int x = 0; x < width; ++x)
    out[x] = {channel(a[x].b, b[x].b), channel(a[x].g, b[x].g), channel(a[x].r, b[x].r),
              channel(a[x].a, b[x].a)};
}

} // namespace
} // namespace zol

using namespace zol;

ZOL_EXPORT pic *mix_pics_union(pic *a, pic *b, float ratio, t_ZoHostInfo *host) {
  const Area areaA = Area::of(*a);
  const Area areaB = Area::of(*b);
  const Area area = unionOf(areaA, areaB);
  OwnedPic out(host, host->Services->PicCreate(area.width(), area.height()));
  if (!out) {
    showMemoryError(host);
    return nullptr;
  }
  placeAt(*out, area);

  const int weightB = weightOf(ratio);
  const auto mixRowsOfLevel = ZOL_SELECT(mixRows);
  for (int y = area.top; y < area.bottom;) {
    const bool rowsInA = areaA.hasRow(y);
    const bool rowsInB = areaB.hasRow(y);
    const int end = nextEdge(y, area.bottom, {areaA.top, areaA.bottom, areaB.top, areaB.bottom});
    const int rows = std::min(end - y, kMixRows);
    MixRemainders remainders;
    std::fill(std::begin(remainders.lanes), std::end(remainders.lanes), MixRemainders::kNone);
    LimitedMix limited[kMixRows] = {LimitedMix(weightB), LimitedMix(weightB), LimitedMix(weightB),
                                    LimitedMix(weightB)};
    for (int x = area.left; x < area.right;) {
      const int edge = nextEdge(x, area.right, {areaA.left, areaA.right, areaB.left, areaB.right});
      _color_t *to = out->Pixels + area.index(x, y);
      MixStretch stretch{to, area.width(), to, area.width(), nullptr, 0, edge - x};
      if (rowsInA && areaA.hasColumn(x)) {
        stretch.a = pixelAt(*a, x, y);
        stretch.aStep = areaA.width();
      }
      if (rowsInB && areaB.hasColumn(x)) {
        stretch.b = pixelAt(*b, x, y);
        stretch.bStep = areaB.width();
      }
      if (withinOne(weightB))
        mixRowsOfLevel(stretch, rows, weightB, remainders);
      else
        mixRowsLimited(stretch, rows, limited);
      x = edge;
    }
    for (int row = 0; row < rows; ++row)
      if (aborted(host))
        return nullptr;
    y += rows;
  }
  return out.release();
}

ZOL_EXPORT pic *mix_pics_intersect(pic *a, pic *b, float ratio, t_ZoHostInfo *host) {
  const Area areaA = Area::of(*a);
  const Area areaB = Area::of(*b);
  const Area area = intersectionOf(areaA, areaB);
  OwnedPic out(host, host->Services->PicCreate(area.width(), area.height()));
  if (!out)
    return nullptr;
  placeAt(*out, area);

  const int weightB = weightOf(ratio);
  const auto row = withinOne(weightB) ? ZOL_SELECT(blendRow) : blendRowWrapped;
  const bool finished = forEachRow(host, area.height(), [&](int y) {
    if (area.width() <= 0)
      return;
    const int frameY = area.top + y;
    row(pixelAt(*a, area.left, frameY), pixelAt(*b, area.left, frameY),
        out->Pixels + area.index(area.left, frameY), area.width(), weightB);
  });
  return finished ? out.release() : nullptr;
}
