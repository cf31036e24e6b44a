#include "kernels/compositing/mix.h"

#include "frame/convert.h"

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

UnionMix::UnionMix(const pic &a, const pic &b, float ratio, const Area &area, _color_t *out)
    : a_(a), b_(b), areaA_(Area::of(a)), areaB_(Area::of(b)), area_(area), weightB_(weightOf(ratio)),
      out_(out) {}

/// Calls mix(stretch) from left to right for the columns of the rows that the same pictures cover.
template <class Mix> void UnionMix::forEachStretch(int y, Mix mix) const {
  for (int x = area_.left; x < area_.right;) {
    const int edge = nextEdge(x, area_.right, {areaA_.left, areaA_.right, areaB_.left, areaB_.right});
    _color_t *to = out_ + area_.index(x, y);
    MixStretch stretch{to, area_.width(), to, area_.width(), nullptr, 0, edge - x};
    if (areaA_.hasRow(y) && areaA_.hasColumn(x)) {
      stretch.a = pixelAt(a_, x, y);
      stretch.aStep = areaA_.width();
    }
    if (areaB_.hasRow(y) && areaB_.hasColumn(x)) {
      stretch.b = pixelAt(b_, x, y);
      stretch.bStep = areaB_.width();
    }
    mix(stretch);
    x = edge;
  }
}

int UnionMix::band(int y) const {
  const int end = nextEdge(y, area_.bottom, {areaA_.top, areaA_.bottom, areaB_.top, areaB_.bottom});
  const int rows = std::min(end - y, kMixRows);
  if (withinOne(weightB_)) {
    MixRemainders remainders;
    std::fill(std::begin(remainders.lanes), std::end(remainders.lanes), MixRemainders::kNone);
    forEachStretch(y, [&, run = ZOL_SELECT(mixRows)](const MixStretch &stretch) {
      run(stretch, rows, weightB_, remainders);
    });
  } else {
    LimitedMix limited[kMixRows] = {LimitedMix(weightB_), LimitedMix(weightB_), LimitedMix(weightB_),
                                    LimitedMix(weightB_)};
    forEachStretch(y, [&](const MixStretch &stretch) { mixRowsLimited(stretch, rows, limited); });
  }
  return rows;
}

RowBlend::RowBlend(float ratio)
    : weightB_(weightOf(ratio)), run_(withinOne(weightB_) ? ZOL_SELECT(blendRow) : blendRowWrapped) {}

} // namespace zol
