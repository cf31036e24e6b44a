// The blue screen, the colour keyer and the Keyer over a 1920 x 1080 background: the plain forms, and the
// library at each level.

#include "bench/scene.h"
#include "frame/effects.h"
#include "host/services/session.h"
#include "kernels/exports/bluescreen.h"
#include "kernels/keying/color_keyer.h"
#include "kernels/simd/levels.h"
#include "plain/bluescreen.h"
#include "plain/blur.h"
#include "plain/color_keyer.h"
#include "plain/lay_pixels.h"
#include "plain/universal_key.h"
#include "tests/support/test_clip.h"

#include <benchmark/benchmark.h>

namespace {

using namespace zol;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

/// A checkerboard of blue backdrop and shaded foreground, with a little noise.
std::unique_ptr<host::PictureBuffer> studio() {
  auto picture = test::randomPicture(kWidth, kHeight, 1);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      _color_t &pixel = picture->record()->Pixels[y * kWidth + x];
      const int noise = pixel.b % 8;
      const bool backdrop = (x / 160 + y / 120) % 2 == 0;
      const int blue = backdrop ? 210 : 60 + x % 160;
      const int green = backdrop ? 80 : 40 + y % 120;
      pixel = {uint8_t(blue + noise), uint8_t(green + noise), uint8_t(90 + noise), 255};
    }
  return picture;
}

struct Pictures {
  std::unique_ptr<host::PictureBuffer> key = studio();
  std::unique_ptr<host::PictureBuffer> ground = test::randomPicture(kWidth, kHeight, 2);
  std::unique_ptr<host::PictureBuffer> out = test::randomPicture(kWidth, kHeight, 3);
};

Pictures &pictures() {
  static Pictures all;
  return all;
}

/// A host that recycles its frames: their memory is not cleared.
struct RecyclingHost {
  RecyclingHost() {
    services.PicCreate = [](int width, int height) {
      static const auto picture = host::PictureBuffer::make(width, height);
      return picture->record();
    };
    services.PicFree = [](pic *) {};
    session.info()->Services = &services;
  }
  host::Session session{"Halvenor"};
  t_ZoServices services = host::services();
};

pic *blurPlainly(t_ZoHostInfo *host, pic *source, double radius) {
  pic *out = host->Services->PicCreate(source->Width, source->Height);
  plain::blurImage(source->Pixels, kWidth, kHeight, radius, out->Pixels);
  return out;
}

void plainScreen(benchmark::State &state, float shrink, float blur) {
  RecyclingHost host;
  for (auto _ : state)
    plain::screen(0, host.session.info(), pictures().out->record(), pictures().key->record(), 0.25F, 0, 1,
                  shrink, blur, 1, blurPlainly);
}

void screen(benchmark::State &state, float shrink, float blur, SimdLevel cap) {
  RecyclingHost host;
  capSimdLevel(cap);
  for (auto _ : state)
    Bluescreen(host.session.info(), pictures().out->record(), pictures().key->record(), 0.25F, 0, 1, shrink,
               blur, 1);
}

constexpr _color_t kColor = {255, 200, 0, 255};

void plainColorKey(benchmark::State &state, const plain::ColorKey<int> &key) {
  for (auto _ : state)
    plain::colorKey(key, *pictures().key->record(), pictures().ground->record(), *pictures().out->record());
}

void colorKey(benchmark::State &state, SimdLevel cap) {
  capSimdLevel(cap);
  for (auto _ : state) {
    const ColorKey key(kColor, 0.2, 0.4, 0, 1);
    const KeyedRows rows(key, *pictures().key->record(), pictures().ground->record(),
                         *pictures().out->record());
    for (int row = 0; row < rows.count(); ++row)
      rows.lay(row);
  }
}

enum KeyerField { kBackground, kInput, kColorField = 4, kNoiseclean = 9, kFeather = 12 };

constexpr _color_t kBackdrop = {213, 83, 93, 255};

void plainKeyer(benchmark::State &state, double hueRange) {
  plain::UniversalKey key(0, kBackdrop, hueRange);
  key.first = 1228;
  key.range = 2457;
  key.spill = 4096;
  for (auto _ : state)
    for (int i = 0; i < kWidth * kHeight; ++i) {
      const _color_t p = pictures().key->record()->Pixels[i];
      pictures().out->record()->Pixels[i] = plain::layPixel(pictures().ground->record()->Pixels[i],
                                                            key.colored(p, key.matte(p, {})), 0, 4096, false);
    }
}

void keyer(benchmark::State &state, double noiseclean, double feather, SimdLevel cap) {
  test::PictureClip lower(pictures().ground->record()), upper(pictures().key->record());
  bench::Scene scene(ProcessKeyer2Declare, cap);
  scene.assign(kBackground, lower);
  scene.assign(kInput, upper);
  scene.session.parameters.colors.get(kColorField, 0)->set(0.5, host::colorValue(kBackdrop));
  scene.set(kNoiseclean, noiseclean);
  scene.set(kFeather, feather);
  scene.run(state);
}

#define ZOL_BENCH(...)                                                                                       \
  BENCHMARK_CAPTURE(__VA_ARGS__)                                                                             \
      ->Unit(benchmark::kMillisecond)                                                                        \
      ->MinTime(0.05)                                                                                        \
      ->Repetitions(7)                                                                                       \
      ->ReportAggregatesOnly()
// The narrow level first: some machines run its code slower after wider vectors were in use.
ZOL_BENCH(plainScreen, matte, 0, 0);
ZOL_BENCH(plainScreen, noiseclean, 0, 19.2F);
ZOL_BENCH(plainColorKey, background, plain::ColorKey<int>(kColor, 0.2, 0.4, 0, 1));
ZOL_BENCH(plainKeyer, chroma, 0.8);
ZOL_BENCH(screen, matte_sse2, 0, 0, SimdLevel::sse2);
ZOL_BENCH(screen, shrink_sse2, 4, 0, SimdLevel::sse2);
ZOL_BENCH(screen, noiseclean_sse2, 0, 19.2F, SimdLevel::sse2);
ZOL_BENCH(colorKey, background_sse2, SimdLevel::sse2);
ZOL_BENCH(keyer, chroma_sse2, 0, 0, SimdLevel::sse2);
ZOL_BENCH(keyer, feather_sse2, 0, 0.02, SimdLevel::sse2);
ZOL_BENCH(keyer, noiseclean_sse2, 0.02, 0, SimdLevel::sse2);
ZOL_BENCH(screen, matte_avx2, 0, 0, SimdLevel::avx2);
ZOL_BENCH(screen, shrink_avx2, 4, 0, SimdLevel::avx2);
ZOL_BENCH(screen, noiseclean_avx2, 0, 19.2F, SimdLevel::avx2);
ZOL_BENCH(colorKey, background_avx2, SimdLevel::avx2);
ZOL_BENCH(keyer, chroma_avx2, 0, 0, SimdLevel::avx2);
ZOL_BENCH(keyer, feather_avx2, 0, 0.02, SimdLevel::avx2);
ZOL_BENCH(keyer, noiseclean_avx2, 0.02, 0, SimdLevel::avx2);

} // namespace

BENCHMARK_MAIN();
