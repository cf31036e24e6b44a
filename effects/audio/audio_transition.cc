// Audio Transition: over the length of the clip input 1 falls and input 2 rises, both linearly and each
// only where its fade is on. With both fades off the inputs are added.

#include "effects/audio/audio_transition.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/sound/crossfade.h"

[[gnu::visibility("default")]] int PARAM_INPUT1;
[[gnu::visibility("default")]] int PARAM_INPUT2;
[[gnu::visibility("default")]] int PARAM_INFADE;
[[gnu::visibility("default")]] int PARAM_OUTFADE;

namespace {

constexpr char kSection[] = "AuTrans";

enum Fade { kFadeOff, kFadeLinear };

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetInt(host, PARAM_INFADE, 0, kFadeLinear);
  host->Services->ParamSetInt(host, PARAM_OUTFADE, 0, kFadeLinear);
  return 1;
}

/// Where the block's frames lie within the clip.
zol::Ramp rampOf(const t_ZoHostInfo &host, const t_ZoAudio &block) {
  const double clipLength = host.ClipEnd - host.ClipStart;
  const double blockLength = host.BlockEnd - host.BlockStart;
  return {static_cast<float>((host.BlockStart - host.ClipStart) / clipLength),
          static_cast<float>(blockLength / (static_cast<double>(block.Frames) * clipLength))};
}

t_ZoAudio *render(t_ZoHostInfo *host) {
  void *inputs[2] = {zol::input(host, PARAM_INPUT1), zol::input(host, PARAM_INPUT2)};
  if (inputs[0] == nullptr && inputs[1] == nullptr) {
    zol::showMessage(host, "No inputs are assigned");
    return nullptr;
  }
  zol::AudioSource sounds[2];
  for (int i = 0; i < 2; ++i) {
    if (inputs[i] == nullptr)
      continue;
    const t_ZoAudio *sound = zol::soundOf(host, inputs[i]);
    if (sound == nullptr)
      return nullptr;
    sounds[i] = zol::sourceOf(*sound);
  }
  t_ZoAudio *out = zol::createSound(host);
  if (out == nullptr) {
    zol::showMessage(host, "Memory allocation failure");
    return nullptr;
  }
  const bool fadeOut = zol::paramInt(host, PARAM_INFADE) == kFadeLinear;
  const bool fadeIn = zol::paramInt(host, PARAM_OUTFADE) == kFadeLinear;
  zol::crossfade(out->Samples, out->Frames, out->Channels, inputs[0] != nullptr ? &sounds[0] : nullptr,
                 fadeOut, inputs[1] != nullptr ? &sounds[1] : nullptr, fadeIn, rampOf(*host, *out));
  return out;
}

void declareInput(const zol::Declaration &obj, int *id, const char *name) {
  obj.send("*((int *)" ZOL_ADDRESS ") = ZoDataFieldAdd( &obj.df, \"Input\", \"%s\", \"%s\", %s );",
           zol::address(id), name, name, "ZodfNone");
}

void declareFade(const zol::Declaration &obj, int *id, const char *name, const char *label, const char *help,
                 const char *linear) {
  obj.send("*((int *)" ZOL_ADDRESS ") = ZoDataFieldAdd( &obj.df, \"Selector\", \"%s\", (word *)" ZOL_ADDRESS
           ", %s );",
           zol::address(id), name, obj.word(label), "ZodfNone");
  obj.help(*id, help);
  obj.item(*id, "Off (as is)", kFadeOff);
  obj.item(*id, linear, kFadeLinear);
}

} // namespace

ZOL_EXPORT int ProcessAudioTransitionDeclare(t_ZoHostInfo *host) {
  const zol::Declaration obj(host, "obj", kSection);
  obj.beginCombined("Audio/Transitions/Audio Transition", "Audio Transition [PW]", 1);
  obj.icon(audio_transition_xpm);
  obj.iconMode("one");
  obj.init(init);
  obj.renderAudio(render);
  declareInput(obj, &PARAM_INPUT1, "Input1");
  declareInput(obj, &PARAM_INPUT2, "Input2");
  // The names cross the labels: "FadeIn" is the fall of input 1. Projects refer to the names.
  declareFade(obj, &PARAM_INFADE, "FadeIn", "Fade Out", "Defines entering audio data fading.",
              "Linear fade out");
  declareFade(obj, &PARAM_OUTFADE, "FadeOut", "Fade in", "Defines outbound audio data fading.",
              "Linear fade in");
  obj.end();
  return 1;
}
