// Sine Audio Generator: a tone of a given frequency and volume that swings between 0 and the volume.
// Its phase follows from absolute time, so that blocks join without a jump. Volume 0 is silence.

#include "effects/audio/sine_generator.xpm"
#include "effects/audio/switcher_texts.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/sound/tone.h"

#include <algorithm>

namespace {

namespace field = zol::field;

constexpr uint32_t kRefresh = 100; // frames for which frequency and volume are held

int paramFrequency;
int paramVolume;

constexpr zol::Field kFields[] = {
    field::curve(&paramFrequency, "Frequency", {100, 20000, "ZodfHideCurve|ZodfMinLimit|ZodfMaxLimit"}, 1000)
        .label("Frequency (Hz)")
        .help("Defines frequency of generated sound.")
        .uncolored()
        .at(0),
    field::curve(&paramVolume, "Volume", {0, 1, "ZodfHideCurve|ZodfMinLimit"}, 1)
        .help("Defines volume of generated sound.")
        .uncolored()
        .at(0),
};

t_ZoAudio *render(t_ZoHostInfo *host) {
  t_ZoAudio *out = zol::createSound(host);
  if (out == nullptr) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const double blockLength = host->BlockEnd - host->BlockStart;
  float *samples = out->Samples;
  for (size_t first = 0; first < out->Frames; first += kRefresh) {
    const auto frame = static_cast<uint32_t>(first);
    const double place = static_cast<double>(static_cast<float>(frame)) / static_cast<double>(out->Frames);
    const double time = host->BlockStart + place * blockLength;
    const double relative = (time - host->ClipStart) / (host->ClipEnd - host->ClipStart);
    const float frequency = zol::paramFloat(host, paramFrequency, relative);
    const float volume = zol::paramFloat(host, paramVolume, relative);
    const uint32_t count = std::min(kRefresh, out->Frames - frame);
    zol::sineTone(samples, frame, count, out->Channels, host->BlockStart, out->Rate, frequency, volume);
    samples += size_t{count} * out->Channels;
  }
  return out;
}

constexpr zol::Effect kSineGenerator{
    .name = "Sources/Sine Audio Generator",
    .sign = "AudioSineGen (Zo2)",
    .version = 4,
    .section = "AudioSineGen",
    .icon = sine_generator_xpm,
    .init = zol::defaults<kFields>,
    .renderAudio = render,
    .fields = kFields,
    .style = zol::Script::kObj,
};

} // namespace

ZOL_EXPORT int ProcessAudioSineGeneratorDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kSineGenerator);
}
