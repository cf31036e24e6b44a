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

constexpr char kSection[] = "AudioSineGen";

constexpr uint32_t kRefresh = 100; // frames for which frequency and volume are held

int paramFrequency;
int paramVolume;

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetFloat(host, paramFrequency, 0, 0.0, 1000.0);
  host->Services->ParamSetFloat(host, paramVolume, 0, 0.0, 1.0);
  return 1;
}

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

void declareCurve(const zol::Declaration &obj, int *id, const char *name, const char *label, double least,
                  double most, const char *flags, const char *help) {
  obj.send("*((int *)" ZOL_ADDRESS ") = ZoDataFieldAdd( &obj.df, \"FloatA\", \"%s\", (word *)" ZOL_ADDRESS
           ", %f,%f, %s );",
           zol::address(id), name, obj.word(label), least, most, flags);
  obj.help(*id, help);
}

} // namespace

ZOL_EXPORT int ProcessAudioSineGeneratorDeclare(t_ZoHostInfo *host) {
  const zol::Declaration obj(host, "obj", kSection);
  obj.begin("AudioSineGen (Zo2)", "Sources/Sine Audio Generator", 4);
  obj.icon(sine_generator_xpm);
  obj.init(init);
  obj.renderAudio(render);
  declareCurve(obj, &paramFrequency, "Frequency", "Frequency (Hz)", 100.0, 20000.0,
               "ZodfHideCurve|ZodfMinLimit|ZodfMaxLimit", "Defines frequency of generated sound.");
  declareCurve(obj, &paramVolume, "Volume", "Volume", 0.0, 1.0, "ZodfHideCurve|ZodfMinLimit",
               "Defines volume of generated sound.");
  obj.end();
  return 1;
}
