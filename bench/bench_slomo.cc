// Milliseconds per in-between frame: the plain form and the library at each level on the same scenes.
// The plain searches take seconds to minutes a frame; they run once, and only where --plain is given.

#include "kernels/simd/levels.h"
#include "tests/Runtimes/slomo_sdk/clip.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

namespace {

using namespace zol;
using test::Fast;
using test::FramePair;
using test::Plain;
using test::Scenes;

struct Scene {
  const char *name;
  unsigned mode;
  FramePair (*make)(unsigned width, unsigned height);
  bool samePair = false; ///< a further frame between the same two, else the first between two others
};

FramePair discs(unsigned width, unsigned height) {
  return Scenes(width, height, 4)
      .discs(24, {0xFF404040, 0xFF2020C0, 0xFF20C020, 0xFFC02020, 0xFF20C0C0, 0xFFE0E0E0});
}

const Scene kScenes[] = {
    {"mixing", 0, [](unsigned w, unsigned h) { return Scenes(w, h, 1).texture(9, 5, 1); }},
    {"blocks/texture", 1, [](unsigned w, unsigned h) { return Scenes(w, h, 1).texture(9, 5, 0); }},
    {"blocks/texture_noise", 1, [](unsigned w, unsigned h) { return Scenes(w, h, 1).texture(9, 5, 1); }},
    {"blocks/texture_noise_again", 1, [](unsigned w, unsigned h) { return Scenes(w, h, 1).texture(9, 5, 1); },
     true},
    {"blocks/unrelated_noise", 1, [](unsigned w, unsigned h) { return Scenes(w, h, 2).noise(0, 255); }},
    {"blocks/flat_noise", 1, [](unsigned w, unsigned h) { return Scenes(w, h, 3).noise(127, 129); }},
    {"objects/texture_noise", 2, [](unsigned w, unsigned h) { return Scenes(w, h, 1).texture(9, 5, 1); }},
    {"objects/discs", 2, discs},
};

template <class Engine>
void inBetween(benchmark::State &state, const Scene &scene, unsigned width, unsigned height,
               SimdLevel level) {
  capSimdLevel(level);
  const FramePair pair = scene.make(width, height);
  Engine engine;
  engine.SetSequence(&engine, width, height, 1, 2, 0, 0, 0);
  engine.frames = {{0, pair.a}, {1, pair.b}};
  for (auto _ : state) {
    benchmark::DoNotOptimize(engine.GetFrameToTime(0.5, scene.mode));
    if (!scene.samePair)
      std::swap(engine.frames[0], engine.frames[1]);
  }
}

} // namespace

int main(int argc, char **argv) {
  bool plain = false;
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "--plain") == 0) {
      plain = true;
      std::copy(argv + i + 1, argv + argc, argv + i);
      --argc;
    }
  benchmark::Initialize(&argc, argv);
  constexpr unsigned kSizes[][2] = {{720, 576}, {1920, 1080}};
  for (const auto &[width, height] : kSizes)
    for (const Scene &scene : kScenes) {
      const std::string name =
          std::string(scene.name) + "/" + std::to_string(width) + "x" + std::to_string(height) + "/";
      const auto add = [&, w = width, h = height](const char *form, auto run, SimdLevel level) {
        return benchmark::RegisterBenchmark(
                   (name + form).c_str(),
                   [=, &scene](benchmark::State &state) { run(state, scene, w, h, level); })
            ->Unit(benchmark::kMillisecond);
      };
      if (plain)
        add("plain", inBetween<Plain>, SimdLevel::sse2)->Iterations(1);
      add("sse2", inBetween<Fast>, SimdLevel::sse2);
      add("avx2", inBetween<Fast>, SimdLevel::avx2);
    }
  benchmark::RunSpecifiedBenchmarks();
}
