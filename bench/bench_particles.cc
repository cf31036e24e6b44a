// Particles over an opaque frame of 1920 x 1080, whole renders at each level.

#include "bench/scene.h"
#include "frame/effects.h"
#include "tests/support/outline.h"

#include <algorithm>

namespace {

using namespace zol;

enum Field { kBackground, kSprite, kEmitter, kRenderer, kMode, kRate, kSize = 13, kEndSize, kRunning = 24 };

/// 5000 particles of 20 pixels all over the frame.
void particles(benchmark::State &state, int renderer, bool adds, double rate, SimdLevel level) {
  bench::Scene scene(ProcessScatterExDeclare, level);
  static const auto frame = bench::opaque(1);
  test::PictureClip clip(frame->record());
  scene.assign(kBackground, clip);
  scene.assign(kSprite, clip);
  constexpr double kRight = bench::kWidth, kBottom = bench::kHeight;
  const test::OutlineShape everywhere(test::polygon({{0, 0}, {kRight, 0}, {kRight, kBottom}, {0, kBottom}}));
  auto &parameters = scene.session.parameters;
  *parameters.geometries.get(kEmitter, 0) = &everywhere;
  *parameters.integers.get(kRenderer, 0) = renderer;
  *parameters.integers.get(kMode, 0) = adds ? 1 : 0;
  *parameters.integers.get(kRunning, 0) = 1;
  scene.set(kRate, rate); // lives are 2 seconds
  scene.set(kSize, 20.0 / bench::kWidth);
  scene.set(kEndSize, 1);
  scene.services.PicDuplicate = [](pic *source) {
    static const auto picture = host::PictureBuffer::make(bench::kWidth, bench::kHeight);
    std::copy_n(source->Pixels, ptrdiff_t{bench::kWidth} * bench::kHeight, picture->record()->Pixels);
    return picture->record();
  };
  scene.run(state);
}

#define ZOL_PARTICLES(name, ...)                                                                             \
  BENCHMARK_CAPTURE(particles, name##_sse2, __VA_ARGS__, SimdLevel::sse2)->Unit(benchmark::kMillisecond);    \
  BENCHMARK_CAPTURE(particles, name##_avx2, __VA_ARGS__, SimdLevel::avx2)->Unit(benchmark::kMillisecond)

ZOL_PARTICLES(none, 0, false, 0);
ZOL_PARTICLES(dots_5000, 0, false, 2500);
ZOL_PARTICLES(added_dots_5000, 0, true, 2500);
ZOL_PARTICLES(discs_5000, 1, false, 2500);
ZOL_PARTICLES(squares_5000, 2, false, 2500);
ZOL_PARTICLES(streaks_5000, 3, false, 2500);
ZOL_PARTICLES(pictures_5000, 4, false, 2500);

} // namespace

BENCHMARK_MAIN();
