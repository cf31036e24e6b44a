// Generated pictures of 1920 x 1080.

#include "kernels/color/gradient_rows.h"
#include "kernels/noise/octaves.h"
#include "kernels/patterns/zone_rows.h"
#include "plain/clouds.h"
#include "plain/color_ramp.h"
#include "plain/gradient.h"
#include "plain/zone.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

std::vector<_color_t> picture(size_t{kWidth} * kHeight);

_color_t *rowOf(int y) { return picture.data() + ptrdiff_t{y} * kWidth; }

// ---- Gradients ----

enum Kind { kLinear, kRadial, kConical };

constexpr _color_t kBlue{200, 90, 20, 255}, kSand{120, 200, 240, 200};
constexpr int64_t kFirst = 0, kStep = (int64_t{1} << 32) / 2203, kDown = kStep / 2;
constexpr float kScale = 131072.0F / kWidth;

void plainGradient(benchmark::State &state, Kind kind) {
  std::vector<zol::plain::RampEntry> ramp;
  for (int i = 0; i <= 4096; ++i)
    ramp.push_back(zol::plain::rampEntry({{0, kBlue}, {65536, kSand}}, i));
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const float u = static_cast<float>(x) - 959.5F, v = static_cast<float>(y) - 539.5F;
        const int64_t position = kind == kLinear   ? zol::plain::linearPosition(kFirst + y * kDown, kStep, x)
                                 : kind == kRadial ? zol::plain::radialPosition(u, v, kScale)
                                                   : zol::plain::conicalPosition(u, v, 9);
        rowOf(y)[x] = zol::plain::rampPixel(ramp[size_t(zol::plain::rampPlace(position, 0, 0))],
                                            zol::plain::rampTerm(true, x, y));
      }
}

void gradient(benchmark::State &state, Kind kind, zol::SimdLevel cap) {
  const zol::ColorStop stops[] = {{0, kBlue}, {65536, kSand}};
  std::vector<float> across;
  for (int x = 0; x < kWidth; ++x)
    across.push_back(static_cast<float>(x) - 959.5F);
  std::vector<int32_t> places(kWidth);
  zol::capSimdLevel(cap);
  for (auto _ : state) {
    const zol::ColorRamp ramp(stops);
    for (int y = 0; y < kHeight; ++y) {
      const float v = static_cast<float>(y) - 539.5F;
      if (kind == kLinear)
        ZOL_SELECT(linearPlaces)(kFirst + y * kDown, kStep, {}, places.data(), kWidth);
      else if (kind == kRadial)
        ZOL_SELECT(radialPlaces)(across.data(), v, kScale, {}, places.data(), kWidth);
      else
        ZOL_SELECT(conicalPlaces)(across.data(), v, 9, {}, places.data(), kWidth);
      ZOL_SELECT(rampRow)
      (ramp.colors, places.data(), zol::RampRounding::dithered(0, y), rowOf(y), kWidth);
    }
  }
  zol::capSimdLevel(zol::kWidestLevel);
}

// ---- Clouds ----

void plainClouds(benchmark::State &state, int octaves) {
  const zol::plain::CloudSettings clouds{.octaves = octaves, .cellWidth = 480, .cellHeight = 480};
  const zol::plain::RampEntry sky{{165 * 256, 110 * 256, 58 * 256, 65280}};
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const int place = zol::plain::cloudPlace(clouds, kWidth, kHeight, x, y, 0, 6676);
        rowOf(y)[x] = zol::plain::rampPixel(sky, zol::plain::rampTerm(true, x, y));
        rowOf(y)[x].g = static_cast<uint8_t>(place >> 4);
      }
}

void clouds(benchmark::State &state, int octaves, zol::SimdLevel cap) {
  const zol::ColorStop stops[] = {{0, kBlue}, {65536, kSand}};
  const zol::OctaveSettings settings{.octaves = octaves, .cellWidth = 480, .cellHeight = 480};
  std::vector<int32_t> places(kWidth);
  zol::capSimdLevel(cap);
  for (auto _ : state) {
    const zol::ColorRamp ramp(stops);
    zol::NoiseOctaves noise(settings, kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
      noise.row(y, 0, 6676, places.data());
      ZOL_SELECT(rampRow)
      (ramp.colors, places.data(), zol::RampRounding::dithered(0, y), rowOf(y), kWidth);
    }
  }
  zol::capSimdLevel(zol::kWidestLevel);
}

// ---- Zone plates ----

constexpr zol::ZonePhases kPhases{12345, 0x80000000, (uint32_t{1} << 31) / kWidth * 2};

void plainZone(benchmark::State &state) {
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        rowOf(y)[x] = zol::plain::zonePixel(kPhases, x);
}

void zone(benchmark::State &state, zol::SimdLevel cap) {
  zol::capSimdLevel(cap);
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      ZOL_SELECT(zoneRow)(kPhases, rowOf(y), kWidth);
  zol::capSimdLevel(zol::kWidestLevel);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(plainGradient, linear, kLinear);
ZOL_BENCH(gradient, linear_sse2, kLinear, zol::SimdLevel::sse2);
ZOL_BENCH(gradient, linear_avx2, kLinear, zol::SimdLevel::avx2);
ZOL_BENCH(plainGradient, radial, kRadial);
ZOL_BENCH(gradient, radial_sse2, kRadial, zol::SimdLevel::sse2);
ZOL_BENCH(gradient, radial_avx2, kRadial, zol::SimdLevel::avx2);
ZOL_BENCH(plainGradient, conical, kConical);
ZOL_BENCH(gradient, conical_sse2, kConical, zol::SimdLevel::sse2);
ZOL_BENCH(gradient, conical_avx2, kConical, zol::SimdLevel::avx2);
ZOL_BENCH(plainClouds, octaves_6, 6);
ZOL_BENCH(clouds, octaves_6_sse2, 6, zol::SimdLevel::sse2);
ZOL_BENCH(clouds, octaves_6_avx2, 6, zol::SimdLevel::avx2);
ZOL_BENCH(plainClouds, octaves_8, 8);
ZOL_BENCH(clouds, octaves_8_sse2, 8, zol::SimdLevel::sse2);
ZOL_BENCH(clouds, octaves_8_avx2, 8, zol::SimdLevel::avx2);
BENCHMARK(plainZone)->Unit(benchmark::kMillisecond)->UseRealTime();
ZOL_BENCH(zone, sse2, zol::SimdLevel::sse2);
ZOL_BENCH(zone, avx2, zol::SimdLevel::avx2);

} // namespace

BENCHMARK_MAIN();
