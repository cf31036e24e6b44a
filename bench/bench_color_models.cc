// The colour models, one call a pixel, over as many random pixels as a 1920 x 1080 frame has.

#include "kernels/exports/color_models.h"
#include "plain/color_models.h"

#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <vector>

namespace {

using Convert = void (*)(uint8_t *, uint8_t *, uint8_t *, uint8_t, uint8_t, uint8_t);
using Triple = std::array<uint8_t, 3>;

void frame(benchmark::State &state, Convert convert) {
  static std::vector<Triple> from(size_t{1920} * 1080), to(from.size());
  std::mt19937 random(1);
  for (Triple &pixel : from)
    for (uint8_t &channel : pixel)
      channel = static_cast<uint8_t>(random());
  benchmark::DoNotOptimize(convert); // the calls of another object: never inlined
  const size_t count = from.size();
  const Triple *in = from.data();
  Triple *out = to.data();
  for (auto _ : state)
    for (size_t i = 0; i < count; ++i)
      convert(&out[i][0], &out[i][1], &out[i][2], in[i][0], in[i][1], in[i][2]);
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(frame, plain_hls_to_rgb, zol::plain::hlsToRgb);
ZOL_BENCH(frame, library_hls_to_rgb, HLS_to_RGB);
ZOL_BENCH(frame, plain_rgb_to_hls, zol::plain::rgbToHls);
ZOL_BENCH(frame, library_rgb_to_hls, RGB_to_HLS);

} // namespace

BENCHMARK_MAIN();
