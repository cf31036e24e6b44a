// Filling shapes into a frame of 1920 x 1080, the plain form against the library at each level; lengths.

#include "kernels/exports/shape.h"
#include "kernels/simd/levels.h"
#include "plain/shape.h"
#include "tests/support/outline.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

namespace {

using Fill = decltype(FillShapeXYOffset);

constexpr int kWidth = 1920, kHeight = 1080;

pic *picCreate(int width, int height) {
  auto *picture = new pic{0, 0, static_cast<int16_t>(width), static_cast<int16_t>(height), nullptr};
  picture->Pixels = static_cast<_color_t *>(
      std::malloc(sizeof(_color_t) * static_cast<size_t>(width) * static_cast<size_t>(height)));
  return picture;
}

void picFree(pic *picture) {
  std::free(picture->Pixels);
  delete picture;
}

int isAborted(t_ZoHostInfo *) { return 0; }

int geoGetCurves(t_ZoHostInfo *, void *geometry, double, int, void *user, t_ZoSegmentFn callback, int) {
  return static_cast<zol::test::Outline *>(geometry)->handOver(user, callback);
}

t_ZoHostInfo *host() {
  static t_ZoServices services;
  static t_ZoHostInfo info;
  services.PicCreate = picCreate;
  services.PicFree = picFree;
  services.IsAborted = isAborted;
  services.GeoGetCurves = geoGetCurves;
  info.Services = &services;
  return &info;
}

zol::test::Outline circle() { return zol::test::ellipse(960.3, 540.7, 400, 400); }
zol::test::Outline path500() { return zol::test::ring(960, 540, 900, 520, 500, 1, 0.8); }
zol::test::Outline tangle() { return zol::test::scribble(60, 1080, 0, true, false, 3); }
zol::test::Outline nothing() { return zol::test::ellipse(-900, -900, 50, 50); }

void fill(benchmark::State &state, zol::test::Outline (*make)(), Fill *function, zol::SimdLevel level,
          unsigned colour) {
  zol::capSimdLevel(level);
  zol::test::Outline outline = make();
  std::vector<_color_t> pixels(size_t{kWidth} * kHeight, _color_t{10, 20, 30, 255});
  pic picture{0, 0, kWidth, kHeight, pixels.data()};
  char error[256];
  for (auto _ : state) {
    function(host(), error, &picture, &outline, 0, colour, 0, 0);
    benchmark::ClobberMemory();
  }
  zol::capSimdLevel(zol::SimdLevel::avx2);
}

#define ZOL_FILL(name, make, colour)                                                                         \
  BENCHMARK_CAPTURE(fill, name##_plain, make, zol::plain::fillShapeXYOffset, zol::SimdLevel::sse2, colour)   \
      ->Unit(benchmark::kMillisecond);                                                                       \
  BENCHMARK_CAPTURE(fill, name##_sse2, make, FillShapeXYOffset, zol::SimdLevel::sse2, colour)                \
      ->Unit(benchmark::kMillisecond);                                                                       \
  BENCHMARK_CAPTURE(fill, name##_avx2, make, FillShapeXYOffset, zol::SimdLevel::avx2, colour)                \
      ->Unit(benchmark::kMillisecond)

ZOL_FILL(path_of_500_cubics, path500, 0xffc08040U);
ZOL_FILL(circle_radius_400, circle, 0xffc08040U);
ZOL_FILL(circle_half_opaque, circle, 0x80c08040U);
ZOL_FILL(tangle_of_60_cubics, tangle, 0xffc08040U);
ZOL_FILL(outside, nothing, 0xffc08040U);

/// The memory limit: every alpha of the frame written and nothing else done.
void alphaAlone(benchmark::State &state) {
  std::vector<uint32_t> pixels(size_t{kWidth} * kHeight, 0xff102030U);
  for (auto _ : state) {
    for (uint32_t &pixel : pixels)
      pixel &= 0x00ffffffU;
    benchmark::ClobberMemory();
  }
}
BENCHMARK(alphaAlone)->Unit(benchmark::kMillisecond);

constexpr float kSegment[8] = {0, 300, 0, 400, 60, -90, 120, 30};

void length(benchmark::State &state, double (*function)(const float *, double, double)) {
  for (auto _ : state)
    benchmark::DoNotOptimize(function(kSegment, 0, 1));
}
BENCHMARK_CAPTURE(length, segment_plain, zol::plain::segmentLength)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(length, segment_library, SegmentLength)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
