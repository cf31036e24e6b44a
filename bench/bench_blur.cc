// The blur and the erosion of alpha over a 1920 x 1080 picture: the plain form of the blur, and the library
// at each level.

#include "host/services/session.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/exports/blur.h"
#include "kernels/simd/levels.h"
#include "plain/blur.h"
#include "tests/support/test_clip.h"

#include <benchmark/benchmark.h>

namespace {

using namespace zol;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

pic *source() {
  static const auto picture = test::randomPicture(kWidth, kHeight, 1);
  return picture->record();
}

void report(benchmark::State &state) {
  state.SetItemsProcessed(state.iterations() * int64_t{kWidth} * kHeight);
}

/// The range's values are radii in tenths of a pixel.
double radius(const benchmark::State &state) { return static_cast<double>(state.range(0)) / 10; }

using Plain = void (*)(const _color_t *, int, int, double, _color_t *);

template <Plain blur> void literal(benchmark::State &state) {
  std::vector<_color_t> out(size_t{kWidth} * kHeight);
  for (auto _ : state)
    blur(source()->Pixels, kWidth, kHeight, radius(state), out.data());
  report(state);
}

/// Hands out one and the same picture, as a host that recycles its frames does: its memory is not cleared.
pic *recycledPicture(int width, int height) {
  static const auto picture = host::PictureBuffer::make(width, height);
  return picture->record();
}

using Kernel = pic *(*)(t_ZoHostInfo *, pic *, double);

template <Kernel blur, SimdLevel level> void library(benchmark::State &state) {
  capSimdLevel(level);
  host::Session session("Halvenor");
  t_ZoServices recycling = host::services();
  recycling.PicCreate = recycledPicture;
  session.info()->Services = &recycling;
  for (auto _ : state)
    benchmark::DoNotOptimize(blur(session.info(), source(), radius(state)));
  report(state);
}

template <SimdLevel level> void shrink(benchmark::State &state) {
  capSimdLevel(level);
  host::Session session("Halvenor");
  const auto reach = static_cast<float>(radius(state));
  for (auto _ : state)
    AlphaShrink(session.info(), source(), reach, reach);
  report(state);
}

void radii(benchmark::internal::Benchmark *benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->MinTime(0.01)->Repetitions(5)->ReportAggregatesOnly();
  for (const int tenths : {20, 100, 192, 200, 500, 1000})
    benchmark->Arg(tenths);
}

BENCHMARK(literal<plain::blurImage>)->Apply(radii);
BENCHMARK(library<FillBlurImage, SimdLevel::sse2>)->Apply(radii);
BENCHMARK(library<FillBlurImage, SimdLevel::avx2>)->Apply(radii);
BENCHMARK(library<FillBlurImage, SimdLevel::avx512>)->Apply(radii);
BENCHMARK(literal<plain::blurAlpha>)->Apply(radii);
BENCHMARK(library<FillBlurAlpha, SimdLevel::sse2>)->Apply(radii);
BENCHMARK(library<FillBlurAlpha, SimdLevel::avx2>)->Apply(radii);
BENCHMARK(library<FillBlurAlpha, SimdLevel::avx512>)->Apply(radii);
BENCHMARK(shrink<SimdLevel::sse2>)->Apply(radii);
BENCHMARK(shrink<SimdLevel::avx2>)->Apply(radii);

} // namespace

BENCHMARK_MAIN();
