// The soft blur over a 1920 x 1080 plane: the plain form, and the library at each level.

#include "kernels/blur/soften.h"
#include "plain/soften.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

using namespace zol;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

uint16_t *plane() {
  static std::vector<uint16_t> plane = [] {
    std::vector<uint16_t> values(size_t{kWidth} * kHeight);
    std::mt19937 random(1);
    for (uint16_t &value : values)
      value = static_cast<uint16_t>(random());
    return values;
  }();
  return plane.data();
}

/// The range's values are radii in pixels.
double radius(const benchmark::State &state) { return static_cast<double>(state.range(0)); }

void literal(benchmark::State &state) {
  for (auto _ : state)
    plain::soften(plane(), kWidth, kHeight, radius(state), radius(state));
}

template <SimdLevel level> void library(benchmark::State &state) {
  capSimdLevel(level);
  for (auto _ : state) {
    const Softening soften(radius(state), radius(state), kWidth, kHeight);
    soften(plane(), [] { return true; });
  }
}

void radii(benchmark::internal::Benchmark *benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Arg(5)->Arg(20)->Arg(192);
}

BENCHMARK(literal)->Apply(radii);
BENCHMARK(library<SimdLevel::sse2>)->Apply(radii);
BENCHMARK(library<SimdLevel::avx2>)->Apply(radii);
BENCHMARK(library<SimdLevel::avx512>)->Apply(radii);

} // namespace

BENCHMARK_MAIN();
