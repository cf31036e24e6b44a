// Effects that open, cut and switch pictures, as a host runs them, 1920 x 1080.

#include "bench/scene.h"
#include "frame/effects.h"
#include "plain/crop.h"
#include "plain/lay_pixels.h"
#include "plain/route_channels.h"
#include "plain/shutter.h"

#include <benchmark/benchmark.h>

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
host::PictureBuffer &result() {
  static const auto picture = host::PictureBuffer::make(kWidth, kHeight);
  return *picture;
}

enum ShutterField {
  kShutterInput,
  kShutterBackground,
  kOpening,
  kKind,
  kCount,
  kShutterSoftness = 8,
  kBorder
};

void shutter(benchmark::State &state, int kind, double softness, double border, SimdLevel cap) {
  test::PictureClip lower(ground().record()), opened(upper().record());
  Scene scene(ProcessShutterDeclare, cap);
  scene.assign(kShutterInput, opened);
  scene.assign(kShutterBackground, lower);
  auto &opening = *scene.session.parameters.numbers.get(kOpening, 0);
  opening.clear();
  opening.set(0, {0.5});
  scene.set(kShutterSoftness, softness);
  scene.set(kBorder, border);
  *scene.session.parameters.integers.get(kKind, 0) = kind;
  scene.run(state);
}

void plainShutter(benchmark::State &state, int kind, double softness) {
  const plain::Shutter shutter = {kind, 8, 0, kWidth / 2.0, kHeight / 2.0, kWidth, kHeight, 1, softness, 0};
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        _color_t pixel = upper().record()->Pixels[y * kWidth + x];
        pixel.a = static_cast<uint8_t>((pixel.a * shutter.coverage(0.5, false, x, y) + 128) >> 8);
        result().record()->Pixels[y * kWidth + x] =
            plain::layPixel(ground().record()->Pixels[y * kWidth + x], pixel, 0, 4096, false);
      }
}

enum CropField { kCropInput, kLeft, kRight, kTop, kBottom, kInset, kCropSoftness, kRoundness, kOutside = 10 };

/// Cut by a tenth on each side.
void crop(benchmark::State &state, double softness, double roundness, int outside, SimdLevel cap) {
  test::PictureClip input(upper().record());
  Scene scene(ProcessCropDeclare, cap);
  scene.assign(kCropInput, input);
  for (const int side : {kLeft, kRight, kTop, kBottom})
    scene.set(side, 0.1);
  scene.set(kCropSoftness, softness);
  scene.set(kRoundness, roundness);
  *scene.session.parameters.integers.get(kOutside, 0) = outside;
  scene.run(state);
}

void plainCrop(benchmark::State &state, double softness, double roundness) {
  const plain::Crop crop = {kWidth, kHeight, 0.1, 0.1, 0.1, 0.1, 0, roundness, 192 * softness, 1};
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        _color_t pixel = upper().record()->Pixels[y * kWidth + x];
        pixel.a = static_cast<uint8_t>((pixel.a * crop.coverage(x, y) + 128) >> 8);
        result().record()->Pixels[y * kWidth + x] = pixel;
      }
}

enum SwitcherField { kInputs, kSwitch = 4, kDissolve, kRedInput, kRedFrom };

/// Each channel of an input of its own, or two inputs that dissolve.
void switcher(benchmark::State &state, bool dissolves, SimdLevel cap) {
  const auto third = bench::opaque(3), fourth = bench::opaque(4);
  test::PictureClip clips[] = {test::PictureClip(ground().record()), test::PictureClip(upper().record()),
                               test::PictureClip(third->record()), test::PictureClip(fourth->record())};
  Scene scene(ProcessMultiswitcherDeclare, cap);
  *scene.session.parameters.inputs.get(kInputs, 0) = {&clips[0], &clips[1], &clips[2], &clips[3]};
  scene.set(kSwitch, dissolves ? 0.3 : 0);
  *scene.session.parameters.integers.get(kDissolve, 0) = dissolves ? 1 : 0;
  for (int channel = 0; channel < 4 && !dissolves; ++channel)
    scene.set(kRedInput + 3 * channel, channel);
  scene.run(state);
}

void plainSwitcher(benchmark::State &state, int weight) {
  for (auto _ : state)
    for (int i = 0; i < kWidth * kHeight; ++i) {
      const _color_t first = ground().record()->Pixels[i], second = upper().record()->Pixels[i];
      uint8_t bytes[4];
      for (int byte = 0; byte < 4; ++byte)
        bytes[byte] = plain::routed(first, second, byte, weight, false);
      result().record()->Pixels[i] = {bytes[0], bytes[1], bytes[2], bytes[3]};
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
  ZOL_BENCH(function, name##_avx2, __VA_ARGS__, SimdLevel::avx2)

ZOL_BENCH(plainShutter, blinds, 0, 0);
ZOL_BENCH(plainShutter, radial, 3, 0);
ZOL_BENCH_LEVELS(shutter, blinds, 0, 0, 0);
ZOL_BENCH_LEVELS(shutter, blinds_soft_border, 0, 0.2, 0.05);
ZOL_BENCH_LEVELS(shutter, doors, 1, 0, 0);
ZOL_BENCH_LEVELS(shutter, iris, 2, 0, 0);
ZOL_BENCH_LEVELS(shutter, iris_soft_border, 2, 0.2, 0.05);
ZOL_BENCH_LEVELS(shutter, radial, 3, 0, 0);
ZOL_BENCH_LEVELS(shutter, radial_soft_border, 3, 0.2, 0.05);
ZOL_BENCH(plainCrop, hard, 0, 0);
ZOL_BENCH(plainCrop, soft_round, 0.2, 0.3);
ZOL_BENCH_LEVELS(crop, hard, 0, 0, 0);
ZOL_BENCH_LEVELS(crop, soft_round, 0.2, 0.3, 0);
ZOL_BENCH_LEVELS(crop, soft_round_color, 0.2, 0.3, 1);
ZOL_BENCH_LEVELS(crop, blurred, 0, 0, 2);
ZOL_BENCH(plainSwitcher, dissolve, 1228);
ZOL_BENCH_LEVELS(switcher, four_inputs, false);
ZOL_BENCH_LEVELS(switcher, dissolve, true);

} // namespace

BENCHMARK_MAIN();
