// The resampler, 1920 x 1080: a photograph turned, shrunk and seen in perspective.

#include "bench/scene.h"
#include "kernels/warp/warp_row.h"
#include "plain/warp.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace zol;

using bench::kHeight;
using bench::kWidth;

/// From the output to the source.
Projection turned(double scale, double degrees) {
  const double c = std::cos(degrees * 0.017453292519943295) / scale,
               s = std::sin(degrees * 0.017453292519943295) / scale;
  const Projection turn = {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}};
  return Projection::moved(kWidth / 2.0, kHeight / 2.0) * turn *
         Projection::moved(-kWidth / 2.0, -kHeight / 2.0);
}
Projection tilted() {
  const Point corners[4] = {{192, 54}, {1824, 162}, {1728, 972}, {96, 1026}};
  return Projection::ofRectangle(kWidth, kHeight, corners).inverse();
}

std::unique_ptr<host::PictureBuffer> picture(bool opaque) {
  return opaque ? bench::opaque(1) : test::randomPicture(kWidth, kHeight, 1);
}

void warp(benchmark::State &state, const Projection &toSource, WarpFilter filter, bool opaque,
          SimdLevel cap) {
  capSimdLevel(cap);
  const auto in = picture(opaque), out = host::PictureBuffer::make(kWidth, kHeight);
  for (auto _ : state) {
    const WarpSource source = WarpSource::of(*in->record());
    const WarpMap map(toSource, kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
      warpRow(source, map, y, 0, kWidth, filter, 4096, out->record()->Pixels + y * kWidth);
  }
  capSimdLevel(kWidestLevel);
}

void plainWarp(benchmark::State &state, const Projection &toSource, WarpFilter filter, bool opaque) {
  const auto in = picture(opaque), out = host::PictureBuffer::make(kWidth, kHeight);
  plain::Warp form{.source = in->record()->Pixels,
                   .width = kWidth,
                   .height = kHeight,
                   .opaque = opaque,
                   .beyond = plain::Warp::extend,
                   .filter = static_cast<int>(filter),
                   .a = {},
                   .b = {},
                   .g = {}};
  const WarpMap map(toSource, kWidth, kHeight);
  const auto &[a, b, g] = map.toSource().rows;
  std::copy_n(a, 3, form.a);
  std::copy_n(b, 3, form.b);
  std::copy_n(g, 3, form.g);
  for (auto _ : state)
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        out->record()->Pixels[y * kWidth + x] = form.at(x, y);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)
#define ZOL_BENCH_LEVELS(function, name, ...)                                                                \
  ZOL_BENCH(function, name##_sse2, __VA_ARGS__, SimdLevel::sse2);                                            \
  ZOL_BENCH(function, name##_avx2, __VA_ARGS__, SimdLevel::avx2);                                            \
  ZOL_BENCH(function, name##_avx512, __VA_ARGS__, SimdLevel::avx512)

ZOL_BENCH(plainWarp, turned_smooth, turned(0.9, 10), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, turned_smooth, turned(0.9, 10), WarpFilter::smooth, true);
ZOL_BENCH(plainWarp, turned_sharp, turned(0.9, 10), WarpFilter::sharp, true);
ZOL_BENCH_LEVELS(warp, turned_sharp, turned(0.9, 10), WarpFilter::sharp, true);
ZOL_BENCH(plainWarp, turned_alpha, turned(0.9, 10), WarpFilter::smooth, false);
ZOL_BENCH_LEVELS(warp, turned_alpha, turned(0.9, 10), WarpFilter::smooth, false);
ZOL_BENCH_LEVELS(warp, enlarged, turned(1.5, 0), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, half, turned(0.5, 0), WarpFilter::smooth, true);
ZOL_BENCH(plainWarp, quarter, turned(0.25, 0), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, quarter, turned(0.25, 0), WarpFilter::smooth, true);
ZOL_BENCH(plainWarp, tilted_smooth, tilted(), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, tilted_smooth, tilted(), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, tilted_sharp, tilted(), WarpFilter::sharp, true);
ZOL_BENCH_LEVELS(warp, quarter_turn, turned(1, 90), WarpFilter::smooth, true);
ZOL_BENCH_LEVELS(warp, moved, Projection::moved(-7, 3), WarpFilter::smooth, true);

} // namespace

BENCHMARK_MAIN();
