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

namespace field = zol::field;

enum Fade { kFadeOff, kFadeLinear };

constexpr const char *kFallItems[] = {"Off (as is)", "Linear fade out"};
constexpr const char *kRiseItems[] = {"Off (as is)", "Linear fade in"};

// The names cross the labels: "FadeIn" is the fall of input 1. Projects refer to the names.
constexpr zol::Field kFields[] = {
    field::input(&PARAM_INPUT1, "Input1").verbatim(),
    field::input(&PARAM_INPUT2, "Input2").verbatim(),
    field::selector(&PARAM_INFADE, "FadeIn", kFallItems, kFadeLinear)
        .label("Fade Out")
        .help("Defines entering audio data fading."),
    field::selector(&PARAM_OUTFADE, "FadeOut", kRiseItems, kFadeLinear)
        .label("Fade in")
        .help("Defines outbound audio data fading."),
};

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

constexpr zol::Effect kAudioTransition{
    .name = "Audio/Transitions/Audio Transition",
    .sign = "Audio Transition [PW]",
    .version = 1,
    .section = "AuTrans",
    .icon = audio_transition_xpm,
    .iconMode = "one",
    .init = zol::defaults<kFields>,
    .renderAudio = render,
    .fields = kFields,
    .style = zol::Script::kObj | zol::Script::kCombinedHead,
};

} // namespace

ZOL_EXPORT int ProcessAudioTransitionDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kAudioTransition);
}
