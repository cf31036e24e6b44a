// Filters as a host runs them, 1920 x 1080: an object with a soft edge before nothing, and footage.

#include "frame/effects.h"
#include "kernels/relief/relief_rows.h"
#include "kernels/simd/levels.h"
#include "plain/alpha_ex.h"
#include "plain/relief.h"
#include "plain/soften.h"
#include "tests/support/filter.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace zol;

constexpr int kWidth = 1920, kHeight = 1080;

std::unique_ptr<host::PictureBuffer> disc(double feather) {
  auto picture = test::randomPicture(kWidth, kHeight, 2);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double distance = std::hypot(x - kWidth / 2, y - kHeight / 2) / 450;
      picture->record()->Pixels[y * kWidth + x].a =
          static_cast<uint8_t>(std::clamp((1 + feather - distance) / feather, 0.0, 1.0) * 255);
    }
  return picture;
}

/// An effect whose host recycles its frames: their memory is not cleared.
struct Scene {
  Scene(int (*declare)(t_ZoHostInfo *), SimdLevel cap) : filter(declare, kWidth, kHeight) {
    static const auto object = disc(0.1);
    static test::PictureClip clip(object->record());
    capSimdLevel(cap);
    services.PicCreate = [](int width, int height) {
      static const auto picture = host::PictureBuffer::make(width, height);
      return picture->record();
    };
    services.PicFree = [](pic *) {};
    filter.session.info()->Services = &services;
    filter.assign(0, &clip);
  }
  void run(benchmark::State &state) {
    for (auto _ : state)
      benchmark::DoNotOptimize(filter.run());
  }
  test::Filter filter;
  t_ZoServices services = host::services();
};

enum AlphaExField { kSource = 1, kLow = 3, kShrink = 6, kSoften = 7 };

void alphaEx(benchmark::State &state, double low, double shrink, double soften, SimdLevel cap) {
  Scene scene(ProcessAlphaExDeclare, cap);
  scene.filter.set(kLow, low);
  scene.filter.set(kShrink, shrink * 10 / kWidth);
  scene.filter.set(kSoften, soften * 10 / kWidth);
  scene.run(state);
}

void plainAlphaEx(benchmark::State &state, double low, double shrink, double soften) {
  plain::AlphaEx filter;
  filter.low = low;
  filter.shrink = shrink;
  filter.soften = soften;
  filter.fills = shrink != 0; // otherwise no pixel gains alpha
  for (auto _ : state) {
    state.PauseTiming();
    const auto object = disc(0.1);
    state.ResumeTiming();
    filter.apply(*object->record(), 1, 1);
  }
}

enum BumpField { kLight = 5, kShine = 12 };

void bump(benchmark::State &state, int light, double shine, SimdLevel cap) {
  Scene scene(ProcessBumpDeclare, cap);
  scene.filter.choose(kLight, light);
  scene.filter.set(kShine, shine);
  scene.run(state);
}

void plainBump(benchmark::State &state, double shine) {
  const auto object = disc(0.1);
  const _color_t *pixels = object->record()->Pixels;
  Relief relief{};
  relief.across = relief.down = 0.3F * kWidth / (80 * 65025);
  relief.light = {-0.5F, -0.5F, 0.7071F};
  relief.shine = static_cast<float>(shine);
  relief.squarings = 5;
  for (auto _ : state) {
    std::vector<uint16_t> heights;
    for (size_t i = 0; i < object->pixels(); ++i)
      heights.push_back(plain::height(pixels[i], false));
    plain::soften(heights.data(), kWidth, kHeight, 3.84, 3.84);
    benchmark::DoNotOptimize(plain::relief(relief, pixels, heights.data(), kWidth, kHeight, 0, 0));
  }
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

ZOL_BENCH(plainAlphaEx, levels, 0.1, 0, 0);
ZOL_BENCH(plainAlphaEx, grow_soften_10, 0.1, -10, 10);
ZOL_BENCH_LEVELS(alphaEx, levels, 0.1, 0, 0);
ZOL_BENCH_LEVELS(alphaEx, shrink_soften_10, 0.1, 10, 10);
ZOL_BENCH_LEVELS(alphaEx, grow_soften_10, 0.1, -10, 10);
ZOL_BENCH(plainBump, distant, 0);
ZOL_BENCH_LEVELS(bump, distant, 0, 0);
ZOL_BENCH_LEVELS(bump, distant_shine, 0, 1);
ZOL_BENCH_LEVELS(bump, point_shine, 1, 1);

} // namespace

BENCHMARK_MAIN();
