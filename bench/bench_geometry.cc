// Effects that paint shapes, whole renders at 1920 x 1080, at each level.

#include "bench/scene.h"
#include "frame/effects.h"
#include "tests/support/outline.h"

namespace {

using namespace zol;

using Setting = std::pair<int, double>;

/// An effect over an opaque frame, with the geometry in field 1.
void paint(benchmark::State &state, SimdLevel level, int (*declare)(t_ZoHostInfo *),
           const test::Outline &outline, const std::vector<Setting> &numbers,
           const std::vector<Setting> &integers) {
  bench::Scene scene(declare, level);
  static const auto frame = bench::opaque(1);
  test::PictureClip clip(frame->record());
  scene.assign(0, clip);
  const test::OutlineShape shape(outline);
  if (!outline.segments.empty())
    *scene.session.parameters.geometries.get(1, 0) = &shape;
  for (const auto &[field, value] : numbers)
    scene.set(field, value);
  for (const auto &[field, value] : integers)
    *scene.session.parameters.integers.get(field, 0) = static_cast<int>(value);
  scene.services.PicDuplicate = [](pic *source) {
    static const auto picture = host::PictureBuffer::make(bench::kWidth, bench::kHeight);
    std::copy_n(source->Pixels, ptrdiff_t{bench::kWidth} * bench::kHeight, picture->record()->Pixels);
    return picture->record();
  };
  scene.run(state);
}

test::Outline path500() { return test::ring(960, 540, 900, 520, 500, 1, 0.98); }

#define ZOL_PAINT(name, ...)                                                                                 \
  BENCHMARK_CAPTURE(paint, name##_sse2, SimdLevel::sse2, __VA_ARGS__)->Unit(benchmark::kMillisecond);        \
  BENCHMARK_CAPTURE(paint, name##_avx2, SimdLevel::avx2, __VA_ARGS__)->Unit(benchmark::kMillisecond)

ZOL_PAINT(copy, ProcessDrawShapeDeclare, path500(), std::vector<Setting>{{3, 0}}, std::vector<Setting>{});
ZOL_PAINT(stroke_of_500_cubics, ProcessDrawShapeDeclare, path500(), std::vector<Setting>{{4, 10 / 1920.0}},
          std::vector<Setting>{});
ZOL_PAINT(dashed_stroke_of_500_cubics, ProcessDrawShapeDeclare, path500(),
          std::vector<Setting>{{4, 10 / 1920.0}, {10, 0.01}, {11, 0.01}}, std::vector<Setting>{});

ZOL_PAINT(thousand_round_dots, ProcessDottDeclare, test::ellipse(960, 540, 500, 500),
          std::vector<Setting>{{5, 3141.5926 / 1000 / 1920}, {4, 0.01}}, std::vector<Setting>{});

ZOL_PAINT(stars_500_glowing, ProcessStarGenDeclare, test::Outline{},
          std::vector<Setting>{{6, 0.02}, {10, 0.01}}, std::vector<Setting>{{12, 500}});
ZOL_PAINT(bolt, ProcessLightningDeclare, test::Outline{}, std::vector<Setting>{{10, 0.6}},
          std::vector<Setting>{});

void wipe(benchmark::State &state, SimdLevel level, double softness) {
  bench::Scene scene(ProcessWiperDeclare, level);
  static const auto first = bench::opaque(1), second = bench::opaque(2);
  test::PictureClip a(first->record()), b(second->record());
  scene.assign(0, a);
  scene.assign(1, b);
  const test::OutlineShape heart(test::Outline{{{{960, 400}, {600, 620}, {-150, -250}, {0, -250}},
                                                {{600, 620}, {960, 900}, {20, 150}, {-150, -100}},
                                                {{960, 900}, {1320, 620}, {150, -100}, {-20, 150}},
                                                {{1320, 620}, {960, 400}, {0, -250}, {150, -250}}}});
  *scene.session.parameters.geometries.get(2, 0) = &heart;
  scene.session.info()->Time = 0.5;
  scene.set(3, 0.3);
  scene.set(6, softness);
  scene.services.PicCreate = [](int width, int height) {
    static const auto out = host::PictureBuffer::make(bench::kWidth, bench::kHeight);
    static const auto mask = host::PictureBuffer::make(bench::kWidth, bench::kHeight);
    static const auto edges = host::PictureBuffer::make(bench::kWidth + 1, bench::kHeight + 1);
    static int turn = 0;
    (void)height;
    return width > bench::kWidth ? edges->record() : (++turn % 2 != 0 ? out : mask)->record();
  };
  scene.run(state);
}
BENCHMARK_CAPTURE(wipe, sharp_heart_avx2, SimdLevel::avx2, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wipe, soft_heart_sse2, SimdLevel::sse2, 0.2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wipe, soft_heart_avx2, SimdLevel::avx2, 0.2)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
