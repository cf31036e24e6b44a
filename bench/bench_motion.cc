// Motion Blur and Aureole, as a host runs them, over opaque frames, 1920 x 1080.

#include "bench/scene.h"
#include "frame/effects.h"
#include "plain/frame_average.h"
#include "plain/glow.h"
#include "plain/path_average.h"
#include "tests/support/scenes.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>

namespace {

using namespace zol;
using bench::kHeight;
using bench::kWidth;
using bench::Scene;

using Pictures = std::vector<std::unique_ptr<host::PictureBuffer>>;

constexpr double kRate = 25;

const Pictures &unrelated() {
  static const Pictures pictures = [] {
    Pictures made;
    for (unsigned seed = 1; seed <= 8; ++seed)
      made.push_back(bench::opaque(seed));
    return made;
  }();
  return pictures;
}

/// Two frames of fine detail and faint noise that moves.
const Pictures &moving() {
  static const Pictures pictures = [] {
    const test::FramePair pair = test::Scenes(kWidth, kHeight, 1).texture(9, 5, 1);
    Pictures made;
    for (const test::Frame &frame : {pair.a, pair.b}) {
      made.push_back(host::PictureBuffer::make(kWidth, kHeight));
      std::memcpy(made.back()->record()->Pixels, frame.data(), frame.size() * sizeof frame[0]);
    }
    return made;
  }();
  return pictures;
}

/// One after the other, for ever.
class Film : public host::Clip {
public:
  explicit Film(const Pictures &pictures) : pictures_(pictures) {}
  pic *frame(double time, int, int) override {
    return pictures_[size_t(std::floor(time * kRate + 1e-6)) % pictures_.size()]->record();
  }
  t_ZoAudio *audio(double, double) override { return nullptr; }

private:
  const Pictures &pictures_;
};

enum MotionField { kInput, kKind, kShutter, kPhase, kSamples, kBetween, kAngle, kAmount };

void shutter(benchmark::State &state, double frames, bool vectors, SimdLevel cap) {
  Film film(vectors ? moving() : unrelated());
  Scene scene(ProcessMotionBlurDeclare, cap);
  scene.session.info()->FrameRate = kRate;
  scene.assign(kInput, film);
  scene.set(kShutter, frames);
  *scene.session.parameters.integers.get(kBetween, 0) = vectors ? 1 : 0;
  scene.run(state);
}

void plainShutter(benchmark::State &state) {
  std::vector<_color_t> out(size_t{kWidth} * kHeight);
  std::vector<plain::Exposed> exposed(8);
  for (auto _ : state)
    for (size_t i = 0; i < out.size(); ++i) {
      for (size_t k = 0; k < 8; ++k)
        exposed[k] = {unrelated()[k]->record()->Pixels[i], 32};
      out[i] = plain::average(exposed);
    }
}

constexpr double kPath = 100; // pixels

plain::Path pathOf(int kind) {
  const double radius = std::hypot(kWidth, kHeight) / 2;
  return {
      kind, kPath,        std::cos(0.5), std::sin(0.5), 1 + kPath / radius, kPath / radius * 180 / 3.14159265,
      1,    kWidth / 2.0, kHeight / 2.0};
}

void path(benchmark::State &state, int kind, SimdLevel cap) {
  const plain::Path path = pathOf(kind);
  test::PictureClip clip(unrelated()[0]->record());
  Scene scene(ProcessMotionBlurDeclare, cap);
  scene.assign(kInput, clip);
  *scene.session.parameters.integers.get(kKind, 0) = kind + 1;
  scene.set(kAngle, 0.5 * 180 / 3.14159265);
  scene.set(kAmount, kind == 0 ? kPath * 10 / kWidth : kind == 1 ? (path.scale - 1) * 10 : path.degrees / 36);
  scene.run(state);
}

void plainPath(benchmark::State &state, int kind) {
  std::vector<uint16_t> pixels(size_t{4} * kWidth * kHeight);
  for (size_t i = 0; i < pixels.size() / 4; ++i)
    plain::toWide(unrelated()[0]->record()->Pixels[i], &pixels[4 * i]);
  for (auto _ : state)
    benchmark::DoNotOptimize(plain::pathAverage(pixels, kWidth, kHeight, pathOf(kind)));
}

enum AureoleField { kSource = 1, kThreshold, kRadius, kFalloff, kIntensity };

void aureole(benchmark::State &state, bool outline, double radius, SimdLevel cap) {
  test::PictureClip clip(unrelated()[0]->record());
  Scene scene(ProcessAureolDeclare, cap);
  scene.assign(kInput, clip);
  *scene.session.parameters.integers.get(kSource, 0) = outline ? 1 : 0;
  scene.set(kRadius, radius);
  scene.run(state);
}

void plainAureole(benchmark::State &state) {
  const plain::Glow glow{false, 0.7, 0.3 * kWidth / 10, 0.3, 0.6, {255, 255, 255, 255}, 0, 0, false};
  const pic &picture = *unrelated()[0]->record();
  plain::Level light{kWidth, kHeight};
  std::vector<_color_t> out(unrelated()[0]->pixels());
  for (auto _ : state) {
    for (size_t i = 0; i < out.size(); ++i)
      plain::lightOf(picture.Pixels[i], glow, &light.values[4 * i]);
    const plain::Level spread = plain::spread(light, glow.radius, glow.falloff);
    for (size_t i = 0; i < out.size(); ++i) {
      uint16_t wide[4];
      plain::layGlow(&spread.values[4 * i], glow, picture.Pixels[i], wide);
      out[i] = plain::toBytes(wide, plain::roundingTerm(true, int(i % kWidth), int(i / kWidth)),
                              picture.Pixels[i]);
    }
  }
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)
#define ZOL_BENCH_LEVELS(function, name, ...)                                                                \
  ZOL_BENCH(function, name##_sse2, __VA_ARGS__, SimdLevel::sse2);                                            \
  ZOL_BENCH(function, name##_avx2, __VA_ARGS__, SimdLevel::avx2)

BENCHMARK(plainShutter)->Name("plainShutter/8_frames")->Unit(benchmark::kMillisecond)->Iterations(1);
ZOL_BENCH(plainPath, direction, 0)->Iterations(1);
ZOL_BENCH(plainPath, zoom, 1)->Iterations(1);
ZOL_BENCH(plainPath, spin, 2)->Iterations(1);
BENCHMARK(plainAureole)->Name("plainAureole/bright")->Unit(benchmark::kMillisecond)->Iterations(1);
ZOL_BENCH_LEVELS(shutter, 8_frames, 8, false);
ZOL_BENCH_LEVELS(shutter, vectors, 1, true);
ZOL_BENCH_LEVELS(path, direction, 0);
ZOL_BENCH_LEVELS(path, zoom, 1);
ZOL_BENCH_LEVELS(path, spin, 2);
ZOL_BENCH_LEVELS(aureole, bright, false, 0.3);
ZOL_BENCH_LEVELS(aureole, bright_wide, false, 1);
ZOL_BENCH_LEVELS(aureole, outline, true, 0.3);

} // namespace

BENCHMARK_MAIN();
