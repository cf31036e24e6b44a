// The dissolve and its pixel-by-pixel intersection on 1920 x 1080 frames.

#include "kernels/exports/mix.h"
#include "kernels/simd/levels.h"
#include "plain/mix.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr float kRatio = 0.37F;

struct Frame {
  explicit Frame(unsigned seed)
      : pixels(size_t{kWidth} * kHeight), record{0, 0, kWidth, kHeight, pixels.data()} {
    std::mt19937 random(seed);
    for (_color_t &p : pixels) {
      const auto word = static_cast<uint32_t>(random());
      p = {uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), uint8_t(word >> 24)};
    }
  }
  std::vector<_color_t> pixels;
  pic record;
};

Frame frameA(1), frameB(2), result(3);

/// A host whose pictures cost nothing: every PicCreate hands out the same frame.
t_ZoHostInfo *instantHost() {
  static t_ZoServices services{};
  static t_ZoHostInfo info{};
  services.PicCreate = [](int, int) { return &result.record; };
  services.PicFree = [](pic *) {};
  services.IsAborted = [](t_ZoHostInfo *) { return 0; };
  info.Services = &services;
  return &info;
}

void plain(benchmark::State &state, void (*mix)(const pic *, const pic *, float, pic *)) {
  for (auto _ : state)
    mix(&frameA.record, &frameB.record, kRatio, &result.record);
}

void library(benchmark::State &state, pic *(*mix)(pic *, pic *, float, t_ZoHostInfo *), zol::SimdLevel cap) {
  t_ZoHostInfo *host = instantHost();
  zol::capSimdLevel(cap);
  for (auto _ : state)
    benchmark::DoNotOptimize(mix(&frameA.record, &frameB.record, kRatio, host));
  zol::capSimdLevel(zol::SimdLevel::avx2);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(plain, union, zol::plain::mixUnion);
ZOL_BENCH(library, union_sse2, mix_pics_union, zol::SimdLevel::sse2);
ZOL_BENCH(library, union_avx2, mix_pics_union, zol::SimdLevel::avx2);
ZOL_BENCH(plain, intersect, zol::plain::mixIntersect);
ZOL_BENCH(library, intersect_sse2, mix_pics_intersect, zol::SimdLevel::sse2);
ZOL_BENCH(library, intersect_avx2, mix_pics_intersect, zol::SimdLevel::avx2);

} // namespace

BENCHMARK_MAIN();
