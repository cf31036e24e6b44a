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

} // namespace

BENCHMARK_MAIN();
