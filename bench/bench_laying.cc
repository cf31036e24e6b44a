// Effects that lay one picture over another, as a host runs them, 1920 x 1080: over an opaque background, an
// overlay with a soft edge that fills half the frame.

#include "frame/effects.h"
#include "host/services/session.h"
#include "kernels/simd/levels.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "plain/soften.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using namespace zol;

constexpr int kWidth = 1920, kHeight = 1080;

std::unique_ptr<host::PictureBuffer> opaque() {
  auto picture = test::randomPicture(kWidth, kHeight, 1);
  for (size_t i = 0; i < picture->pixels(); ++i)
    picture->record()->Pixels[i].a = 255;
  return picture;
}

std::unique_ptr<host::PictureBuffer> softDisc() {
  auto picture = test::randomPicture(kWidth, kHeight, 2);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double distance = std::hypot((x - kWidth / 2) / 760.0, (y - kHeight / 2) / 430.0);
      picture->record()->Pixels[y * kWidth + x].a =
          static_cast<uint8_t>(std::clamp((1.05 - distance) / 0.1, 0.0, 1.0) * 255);
    }
  return picture;
}

/// One effect in a host that recycles its frames: their memory is not cleared.
struct Scene {
  Scene(int (*declare)(t_ZoHostInfo *), SimdLevel cap) : effect(declare) {
    capSimdLevel(cap);
    services.PicCreate = [](int width, int height) {
      static const auto picture = host::PictureBuffer::make(width, height);
      return picture->record();
    };
    services.PicFree = [](pic *) {};
    t_ZoHostInfo *info = session.info();
    info->Services = &services;
    info->Width = kWidth;
    info->Height = kHeight;
    info->PixelAspect = 1;
    effect.init(info);
  }
  void set(int field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void assign(int field, host::Clip &clip) { *session.parameters.inputs.get(field, 0) = {&clip}; }
  void run(benchmark::State &state) {
    for (auto _ : state)
      benchmark::DoNotOptimize(effect.renderVideo(session.info()));
  }

  test::Callbacks effect;
  host::Session session{"Halvenor"};
  t_ZoServices services = host::services();
};

host::PictureBuffer &ground() {
  static const auto picture = opaque();
  return *picture;
}
host::PictureBuffer &disc() {
  static const auto picture = softDisc();
  return *picture;
}

enum OverlayField { kBackground, kInput, kX, kY, kMode = 5 };

void overlay(benchmark::State &state, host::PictureBuffer &(*picture)(), int mode, double pixels,
             SimdLevel cap) {
  test::PictureClip lower(ground().record()), upper(picture().record());
  Scene scene(ProcessOverlayDeclare, cap);
  scene.assign(kBackground, lower);
  scene.assign(kInput, upper);
  scene.set(kX, pixels / kWidth);
  scene.set(kY, pixels / kHeight);
  *scene.session.parameters.integers.get(kMode, 0) = mode;
  scene.run(state);
}

host::PictureBuffer &result() {
  static const auto picture = host::PictureBuffer::make(kWidth, kHeight);
  return *picture;
}

/// Calls pixel(x, y) for all of the frame.
template <class Pixel> void fillPlainly(Pixel pixel) {
  _color_t *out = result().record()->Pixels;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      *out++ = pixel(x, y);
}

void plainOverlay(benchmark::State &state, int mode, int sixteenths) {
  const pic &lower = *ground().record(), &upper = *disc().record();
  for (auto _ : state)
    fillPlainly([&](int x, int y) {
      const _color_t over =
          sixteenths != 0 ? plain::moved(upper, sixteenths, sixteenths, x, y) : plain::pixelOf(upper, x, y);
      return plain::layPixel(plain::pixelOf(lower, x, y), over, mode, 4096, false);
    });
}

void plainDropShadow(benchmark::State &state, double radius) {
  const pic &picture = *disc().record();
  for (auto _ : state) {
    std::vector<uint16_t> alphas(size_t{kWidth} * kHeight);
    for (size_t i = 0; i < alphas.size(); ++i)
      alphas[i] = static_cast<uint16_t>(255 * picture.Pixels[i].a);
    plain::soften(alphas.data(), kWidth, kHeight, radius, radius);
    fillPlainly([&](int x, int y) {
      const uint8_t alpha = plain::shadowAlpha(alphas.data(), kWidth, kHeight, 217, 217, 0, 2457, x, y,
                                               plain::roundingTerm(true, x, y));
      const _color_t over = plain::pixelOf(picture, x, y);
      return plain::layPixel({0, 0, 0, alpha}, over, 0, 4096, false);
    });
  }
}

void dropShadow(benchmark::State &state, double radius, SimdLevel cap) {
  test::PictureClip upper(disc().record());
  Scene scene(ProcessDropShadowDeclare, cap);
  scene.assign(0, upper);
  scene.set(5, 10 * radius / kWidth); // Softness
  scene.run(state);
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

ZOL_BENCH(plainOverlay, normal, 0, 0);
ZOL_BENCH(plainOverlay, between_pixels, 0, 6);
ZOL_BENCH(plainOverlay, soft_light, 9, 0);
ZOL_BENCH(plainOverlay, luminosity, 15, 0);
ZOL_BENCH(plainDropShadow, radius_20, 20);
ZOL_BENCH_LEVELS(overlay, normal, disc, 0, 0);
ZOL_BENCH_LEVELS(overlay, between_pixels, disc, 0, 0.4);
ZOL_BENCH_LEVELS(overlay, multiply, disc, 1, 0);
ZOL_BENCH_LEVELS(overlay, color_dodge, disc, 6, 0);
ZOL_BENCH_LEVELS(overlay, soft_light, disc, 9, 0);
ZOL_BENCH_LEVELS(overlay, luminosity, disc, 15, 0);
ZOL_BENCH_LEVELS(overlay, opaque_multiply, ground, 1, 0);
ZOL_BENCH_LEVELS(dropShadow, radius_20, 20);

} // namespace

BENCHMARK_MAIN();
