// Pictures of 1920 x 1080 between the formats of the pipes and BGRA, on one thread.

#include "host/media/aligned_bytes.h"
#include "host/media/conversion.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

namespace {

using namespace zol::host;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

PictureLayout layoutOf(const char *name, int width, int height, bool interlaced) {
  return {pipeFormat(name), width, height, ColorCoding{}, interlaced, 1};
}

void convert(benchmark::State &state, const PictureLayout &from, const PictureLayout &to) {
  if (!Converter::available()) {
    state.SkipWithError("built without zimg");
    return;
  }
  const AlignedBytes source = alignedBytes(from.bytes()), target = alignedBytes(to.bytes());
  std::mt19937 random(1);
  for (size_t i = 0; i + 4 <= from.bytes(); i += 4) {
    const auto word = static_cast<uint32_t>(random()) & (from.format.depth > 8 ? 0x03FF03FF : 0xFFFFFFFF);
    std::memcpy(source.get() + i, &word, sizeof word);
  }
  Converter converter(from, to, Fit::letterbox);
  for (auto _ : state)
    converter.convert(source.get(), target.get());
}

void read(benchmark::State &state, const char *name, int width = kWidth, int height = kHeight,
          bool interlaced = false) {
  convert(state, layoutOf(name, width, height, interlaced), layoutOf("bgra", kWidth, kHeight, false));
}

void write(benchmark::State &state, const char *name, bool interlaced = false) {
  convert(state, layoutOf("bgra", kWidth, kHeight, interlaced), layoutOf(name, kWidth, kHeight, interlaced));
}

#define ZOL_BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZOL_BENCH(read, yuv420p, "yuv420p");
ZOL_BENCH(read, yuv420p_interlaced, "yuv420p", kWidth, kHeight, true);
ZOL_BENCH(read, yuv422p10, "yuv422p10le");
ZOL_BENCH(read, yuva444p10, "yuva444p10le");
ZOL_BENCH(read, gray, "gray");
ZOL_BENCH(read, gbrp, "gbrp");
ZOL_BENCH(read, yuv420p_from_1280x720, "yuv420p", 1280, 720);
ZOL_BENCH(read, yuv420p_from_720x576, "yuv420p", 720, 576);
ZOL_BENCH(read, yuv420p_from_3840x2160, "yuv420p", 3840, 2160);
ZOL_BENCH(read, bgra_from_1280x720, "bgra", 1280, 720);
ZOL_BENCH(write, yuv420p, "yuv420p");
ZOL_BENCH(write, yuv420p_interlaced, "yuv420p", true);
ZOL_BENCH(write, yuva420p, "yuva420p");
ZOL_BENCH(write, yuva444p10, "yuva444p10le");
ZOL_BENCH(write, gray, "gray");
ZOL_BENCH(write, gbrp, "gbrp");

} // namespace

BENCHMARK_MAIN();
