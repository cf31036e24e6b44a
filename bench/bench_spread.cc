// Spreading on 1920 x 1080 frames: a radius of 10 pixels, and cells.

#include "kernels/noise/spread_rows.h"
#include "plain/spread.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

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

Frame source(1), result(2);

zol::Spreading spreading(int cell) {
  return {.seed = 1, .cellWidth = cell, .cellHeight = cell, .radiusX = 160, .radiusY = 160};
}

void plain(benchmark::State &state, int cell) {
  const zol::Spreading how = spreading(cell);
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        result.pixels[size_t(y) * kWidth + size_t(x)] = zol::plain::spread(source.record, x, y, how);
}

void library(benchmark::State &state, int cell, zol::SimdLevel cap) {
  const zol::Spreading how = spreading(cell);
  zol::capSimdLevel(cap);
  const auto row = ZOL_SELECT(spreadRow);
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      row(source.record, y, result.pixels.data() + ptrdiff_t{y} * kWidth, how);
  zol::capSimdLevel(zol::kWidestLevel);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(plain, pixels, 1);
ZOL_BENCH(library, pixels_sse2, 1, zol::SimdLevel::sse2);
ZOL_BENCH(library, pixels_avx2, 1, zol::SimdLevel::avx2);
ZOL_BENCH(plain, cells, 9);
ZOL_BENCH(library, cells_sse2, 9, zol::SimdLevel::sse2);
ZOL_BENCH(library, cells_avx2, 9, zol::SimdLevel::avx2);

} // namespace

BENCHMARK_MAIN();
