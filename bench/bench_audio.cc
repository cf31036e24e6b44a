// Sixty seconds of 48 kHz stereo in blocks of a video frame: the literal forms against the library at
// each level, and the mixer beside the bare calls of the host that it has to make.

#include "frame/effects.h"
#include "kernels/sound/channel_routes.h"
#include "kernels/sound/crossfade.h"
#include "kernels/sound/tone.h"
#include "plain/audio.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr unsigned kFrames = 1920, kBlocks = 1500, kChannels = 2, kRate = 48000;
constexpr size_t kSamples = kFrames * kChannels;
constexpr int kPlain = -1; // beside the levels
constexpr int kVoices = 4;

std::vector<float> noise(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<float> samples(kSamples);
  for (float &sample : samples)
    sample = static_cast<float>(static_cast<int16_t>(random())) * 0x1p-15F;
  return samples;
}

template <class Block> void run(benchmark::State &state, Block block) {
  if (state.range(0) != kPlain)
    zol::capSimdLevel(static_cast<zol::SimdLevel>(state.range(0)));
  std::vector<float> out(kSamples);
  for (auto _ : state)
    for (unsigned b = 0; b < kBlocks; ++b) {
      block(out.data(), b);
      benchmark::ClobberMemory();
    }
}

void sine(benchmark::State &state) {
  const auto tone = state.range(0) == kPlain ? zol::plain::sineTone : zol::sineTone;
  const auto frequency = static_cast<float>(state.range(1));
  run(state, [&](float *out, unsigned block) {
    for (unsigned first = 0; first < kFrames; first += 100)
      tone(out + size_t{first} * kChannels, first, std::min(100U, kFrames - first), kChannels, block * 0.04,
           kRate, frequency, 1.0F);
  });
}

void crossfade(benchmark::State &state) {
  const std::vector<float> a = noise(1), b = noise(2);
  const zol::AudioSource outgoing{a.data(), kFrames, kChannels}, incoming{b.data(), kFrames, kChannels};
  const bool plain = state.range(0) == kPlain;
  const bool fades = state.range(1) != 0;
  run(state, [&](float *out, unsigned block) {
    const zol::Ramp ramp{static_cast<float>(block) / kBlocks, 1.0F / (kFrames * kBlocks)};
    if (plain)
      zol::plain::crossfade(out, kFrames, kChannels, a.data(), fades, b.data(), fades, ramp.position,
                            ramp.step);
    else
      zol::crossfade(out, kFrames, kChannels, &outgoing, fades, &incoming, fades, ramp);
  });
}

void route(benchmark::State &state) {
  const std::vector<float> in = noise(1);
  const bool plain = state.range(0) == kPlain;
  const int first = static_cast<int>(state.range(1)) / 10, second = static_cast<int>(state.range(1)) % 10;
  run(state, [&](float *out, unsigned) {
    if (plain) {
      zol::plain::routeChannel(out, 0, kChannels, in.data(), kChannels, kFrames, first);
      zol::plain::routeChannel(out, 1, kChannels, in.data(), kChannels, kFrames, second);
    } else {
      zol::routeChannels(out, kFrames, kChannels, {in.data(), kFrames, kChannels}, first, second);
    }
  });
}

// ---- The mixer, through a host that answers at once ----

t_ZoRenderAudioFn renderMixer;
t_ZoAudio mixerOut;
t_ZoAudio mixerIn[kVoices];

long long execute(t_ZoHostInfo *, t_ZoHostInfo *, const char *statement) {
  if (const char *render = std::strstr(statement, "RenderAudioFunction = "))
    renderMixer = reinterpret_cast<t_ZoRenderAudioFn>(
        static_cast<uintptr_t>(std::strtoull(std::strchr(render, '=') + 1, nullptr, 16)));
  return 1;
}

t_ZoHostInfo *mixerHost() {
  static t_ZoServices services;
  static t_ZoHostInfo info;
  services.ScriptExecuteHi = execute;
  services.DataFieldItemCount = [](t_ZoHostInfo *, int) { return kVoices; };
  services.InputGetPic = [](t_ZoHostInfo *, int, int item) { return static_cast<void *>(&mixerIn[item]); };
  services.InputGetAudio = [](t_ZoHostInfo *, void *input, double, double) {
    return static_cast<t_ZoAudio *>(input);
  };
  services.AudioCreate = [](double, double, unsigned, unsigned) { return &mixerOut; };
  services.ParamGetFloat = [](t_ZoHostInfo *, int, int, double) { return 0.25L; };
  info.Identity = "Halvenor";
  info.Services = &services;
  info.BlockEnd = 0.04;
  info.ClipEnd = 60;
  return &info;
}

void mixer(benchmark::State &state) {
  std::vector<float> in[kVoices];
  for (int voice = 0; voice < kVoices; ++voice) {
    in[voice] = noise(static_cast<unsigned>(voice));
    mixerIn[voice] = {{}, kFrames, kRate, kChannels, in[voice].data()};
  }
  ProcessAudioSwitcherDeclare(mixerHost());
  run(state, [](float *out, unsigned) {
    mixerOut = {{}, kFrames, kRate, kChannels, out};
    renderMixer(mixerHost());
  });
}

void mixerCallsAlone(benchmark::State &state) {
  t_ZoHostInfo *host = mixerHost();
  run(state, [&](float *, unsigned) {
    const auto param = host->Services->ParamGetFloat;
    for (size_t sample = 0; sample < kSamples; ++sample) {
      for (int voice = 0; voice < kVoices; ++voice)
        benchmark::DoNotOptimize(static_cast<double>(param(host, 4, voice, 0.5)));
      benchmark::DoNotOptimize(static_cast<double>(param(host, 5, 0, 0.5)));
    }
  });
}

constexpr int kSse2 = static_cast<int>(zol::SimdLevel::sse2), kAvx2 = static_cast<int>(zol::SimdLevel::avx2),
              kAvx512 = static_cast<int>(zol::SimdLevel::avx512);
constexpr auto kMillisecond = benchmark::kMillisecond;

BENCHMARK(sine)
    ->ArgNames({"level", "hertz"})
    ->ArgsProduct({{kPlain, kSse2, kAvx2, kAvx512}, {440, 1000}})
    ->Unit(kMillisecond);
BENCHMARK(crossfade)
    ->ArgNames({"level", "fades"})
    ->ArgsProduct({{kPlain, kSse2, kAvx2, kAvx512}, {1, 0}})
    ->Unit(kMillisecond);
BENCHMARK(route)
    ->ArgNames({"level", "routes"})
    ->ArgsProduct({{kPlain, kAvx2}, {12, 21, 33}})
    ->Unit(kMillisecond);
BENCHMARK(mixer)->Arg(kAvx2)->Unit(kMillisecond);
BENCHMARK(mixerCallsAlone)->Arg(kAvx2)->Unit(kMillisecond);

} // namespace

BENCHMARK_MAIN();
