// Deinterlacing of 1920 x 1080 frames: random pixels, of which half are combed, and the strongest edge
// detection beside the default one.

#include "kernels/exports/deinterlace.h"
#include "kernels/simd/levels.h"
#include "plain/deinterlace.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kThreshold = 10;

struct Frames {
  Frames() : source(size_t{kWidth} * kHeight), result(source.size()) {
    std::mt19937 random(1);
    for (unsigned &pixel : source)
      pixel = static_cast<unsigned>(random());
  }
  std::vector<unsigned> source, result;
};

Frames &frames() {
  static Frames all;
  return all;
}

void plain(benchmark::State &state, int edge, bool blend) {
  for (auto _ : state)
    zol::plain::deinterlace(frames().result.data(), frames().source.data(), kWidth, kHeight, kThreshold, edge,
                            blend);
}

void library(benchmark::State &state, int edge, bool blend, zol::SimdLevel cap) {
  zol::capSimdLevel(cap);
  for (auto _ : state)
    deinterlace(frames().result.data(), frames().source.data(), kWidth, kHeight, kThreshold, edge, blend);
  zol::capSimdLevel(zol::SimdLevel::avx2);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(plain, mean, 20, false);
ZOL_BENCH(library, mean_sse2, 20, false, zol::SimdLevel::sse2);
ZOL_BENCH(library, mean_avx2, 20, false, zol::SimdLevel::avx2);
ZOL_BENCH(library, mean_avx512, 20, false, zol::SimdLevel::avx512);
ZOL_BENCH(plain, blend, 20, true);
ZOL_BENCH(library, blend_sse2, 20, true, zol::SimdLevel::sse2);
ZOL_BENCH(library, blend_avx2, 20, true, zol::SimdLevel::avx2);
ZOL_BENCH(library, blend_avx512, 20, true, zol::SimdLevel::avx512);
ZOL_BENCH(plain, mean_edge_180, 180, false);
ZOL_BENCH(library, mean_edge_180_sse2, 180, false, zol::SimdLevel::sse2);
ZOL_BENCH(library, mean_edge_180_avx2, 180, false, zol::SimdLevel::avx2);
ZOL_BENCH(library, mean_edge_180_avx512, 180, false, zol::SimdLevel::avx512);

} // namespace

BENCHMARK_MAIN();
