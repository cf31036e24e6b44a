// Recoloring on 1920 x 1080 frames.

#include "kernels/color/recolor_rows.h"
#include "plain/recolor.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

/// Colours that change from pixel to pixel, as those of a picture with some noise.
const std::vector<_color_t> &frame() {
  static const std::vector<_color_t> pixels = [] {
    std::vector<_color_t> filled(size_t{kWidth} * kHeight);
    std::mt19937 random(1);
    for (size_t i = 0; i < filled.size(); ++i) {
      const auto noise = static_cast<uint32_t>(random()) & 0x0F0F0F;
      const size_t x = i % kWidth, y = i / kWidth;
      filled[i] = {uint8_t(x / 8 + (noise & 15)), uint8_t(y / 5 + (noise >> 8 & 15)),
                   uint8_t((x + y) / 13 + (noise >> 16 & 15)), 255};
    }
    return filled;
  }();
  return pixels;
}

zol::Recoloring hueAlone() {
  zol::Recoloring how;
  how.turn = 400;
  return how;
}

zol::Recoloring allSteps() {
  zol::Recoloring how = hueAlone();
  how.keepsLuma = true;
  how.saturation = 1500;
  how.lightness = 400;
  how.tintAmount = 1000;
  for (uint32_t y = 0; y < 256; ++y)
    how.tint[y] = y << 16 | y / 2 << 8 | (255 - y);
  how.isLimited = true;
  how.hue = 20;
  how.range = 600;
  how.fading = 500;
  how.fullChroma = 40;
  return how;
}

void plain(benchmark::State &state, const zol::Recoloring &how) {
  std::vector<_color_t> out(frame().size());
  for (auto _ : state) {
    for (size_t i = 0; i < out.size(); ++i)
      out[i] = zol::plain::recolor(frame()[i], how);
    benchmark::DoNotOptimize(out.data());
  }
}

void library(benchmark::State &state, const zol::Recoloring &how, zol::SimdLevel cap) {
  zol::capSimdLevel(cap);
  const auto row = ZOL_SELECT(recolorRow);
  std::vector<_color_t> out(frame().size());
  for (auto _ : state) {
    for (ptrdiff_t y = 0; y < kHeight; ++y)
      row(frame().data() + y * kWidth, out.data() + y * kWidth, kWidth, how);
    benchmark::DoNotOptimize(out.data());
  }
  zol::capSimdLevel(zol::kWidestLevel);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(plain, hue, hueAlone());
ZOL_BENCH(library, hue_sse2, hueAlone(), zol::SimdLevel::sse2);
ZOL_BENCH(library, hue_avx2, hueAlone(), zol::SimdLevel::avx2);
ZOL_BENCH(library, hue_avx512, hueAlone(), zol::SimdLevel::avx512);
ZOL_BENCH(plain, all, allSteps());
ZOL_BENCH(library, all_sse2, allSteps(), zol::SimdLevel::sse2);
ZOL_BENCH(library, all_avx2, allSteps(), zol::SimdLevel::avx2);
ZOL_BENCH(library, all_avx512, allSteps(), zol::SimdLevel::avx512);

} // namespace

BENCHMARK_MAIN();
