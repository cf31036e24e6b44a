// The blur over a 1920 x 1080 picture: the plain form, and the library at each level.

#include "host/session.h"
#include "kernels/blur.h"
#include "kernels/simd.h"
#include "tests/plain/blur.h"
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

void plainImage(benchmark::State &state) {
  std::vector<_color_t> out(size_t{kWidth} * kHeight);
  for (auto _ : state)
    plain::blurImage(source()->Pixels, kWidth, kHeight, radius(state), out.data());
  report(state);
}

using Kernel = pic *(*)(t_ZoHostInfo *, pic *, double);

/// Hands out one and the same picture, as a host that recycles its frames does: its memory is not cleared.
pic *recycledPicture(int width, int height) {
  static const auto picture = host::PictureBuffer::make(width, height);
  return picture->record();
}

template <SimdLevel level, Kernel kernel> void library(benchmark::State &state) {
  capSimdLevel(level);
  host::Session session("Halvenor");
  t_ZoServices recycling = host::services();
  recycling.PicCreate = recycledPicture;
  session.info()->Services = &recycling;
  for (auto _ : state)
    benchmark::DoNotOptimize(kernel(session.info(), source(), radius(state)));
  report(state);
}

void radii(benchmark::internal::Benchmark *benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
  for (const int tenths : {5, 20, 100, 192, 200, 500, 1000})
    benchmark->Arg(tenths);
}

BENCHMARK(plainImage)->Apply(radii)->MinTime(0.001);
BENCHMARK(library<SimdLevel::sse2, FillBlurImage>)->Apply(radii)->MinTime(0.1);
BENCHMARK(library<SimdLevel::avx2, FillBlurImage>)->Apply(radii)->MinTime(0.1);
BENCHMARK(library<SimdLevel::avx2, FillBlurAlpha>)->Apply(radii)->MinTime(0.1);

} // namespace

BENCHMARK_MAIN();
