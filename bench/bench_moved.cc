// Effects that move an image's pixels or pieces, as a host runs them, 1920 x 1080.

#include "bench/scene.h"
#include "frame/effects.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace zol;

using bench::kHeight;
using bench::kWidth;
using bench::Scene;

host::PictureBuffer &ground() {
  static const auto picture = bench::opaque(1);
  return *picture;
}
host::PictureBuffer &upper() {
  static const auto picture = bench::opaque(2);
  return *picture;
}

/// A map of gentle waves.
host::PictureBuffer &waves() {
  static const auto picture = [] {
    auto made = bench::opaque(3);
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const auto wave = [](double v) { return static_cast<uint8_t>(128 + 100 * std::sin(v)); };
        made->record()->Pixels[y * kWidth + x] = {0, wave(x / 80.0 + y / 200.0), wave(y / 70.0), 255};
      }
    return made;
  }();
  return *picture;
}

enum MapperField { kMapperInput, kMap, kAmountX = 3, kAmountY, kFilter = 10 };

void mapper(benchmark::State &state, int filter, double amount, SimdLevel cap) {
  test::PictureClip image(ground().record()), map(waves().record());
  Scene scene(ProcessMapperDeclare, cap);
  scene.assign(kMapperInput, image);
  scene.assign(kMap, map);
  scene.set(kAmountX, amount);
  scene.set(kAmountY, amount);
  *scene.session.parameters.integers.get(kFilter, 0) = filter;
  scene.run(state);
}

enum CrumbleField { kCrumbleInput, kBackground, kProgress, kShape = 4 };

void crumble(benchmark::State &state, int shape, SimdLevel cap) {
  test::PictureClip image(upper().record()), behind(ground().record());
  Scene scene(ProcessCrumbleDeclare, cap);
  scene.assign(kCrumbleInput, image);
  scene.assign(kBackground, behind);
  auto &progress = *scene.session.parameters.numbers.get(kProgress, 0);
  progress.clear();
  progress.set(0, {0.5});
  *scene.session.parameters.integers.get(kShape, 0) = shape;
  scene.run(state);
}

#define ZOL_BENCH(...)                                                                                       \
  BENCHMARK_CAPTURE(__VA_ARGS__)                                                                             \
      ->Unit(benchmark::kMillisecond)                                                                        \
      ->MinTime(0.05)                                                                                        \
      ->Repetitions(7)                                                                                       \
      ->ReportAggregatesOnly()
#define ZOL_BENCH_LEVELS(function, name, ...)                                                                \
  ZOL_BENCH(function, name##_sse2, __VA_ARGS__, SimdLevel::sse2);                                            \
  ZOL_BENCH(function, name##_avx2, __VA_ARGS__, SimdLevel::avx2);                                            \
  ZOL_BENCH(function, name##_avx512, __VA_ARGS__, SimdLevel::avx512)

ZOL_BENCH_LEVELS(mapper, sharp, 0, 0.01);
ZOL_BENCH_LEVELS(mapper, smooth, 1, 0.01);
ZOL_BENCH_LEVELS(mapper, smooth_far, 1, 0.05);
ZOL_BENCH_LEVELS(crumble, shards, 0);
ZOL_BENCH_LEVELS(crumble, squares, 1);

} // namespace

BENCHMARK_MAIN();
