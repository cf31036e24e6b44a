// Simple Audio Switcher: gives each of the two channels of a stereo sound the first input channel, the
// second, their mean, or nothing. "Input 1" and "Input 2" pass the sound unchanged.

#include "effects/audio/simple_audio_switcher.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/sound/channel_routes.h"

[[gnu::visibility("default")]] int PARAM_INPUT;
[[gnu::visibility("default")]] int PARAM_CH1;
[[gnu::visibility("default")]] int PARAM_CH2;
[[gnu::visibility("default")]] int PARAM_VOLUME_LEFT; // kept for hosts that look it up

namespace {

namespace field = zol::field;

constexpr const char *kRoutes[] = {"Off", "Input 1", "Input 2",
                                   "Mix of all inputs"}; // in the order of zol::ChannelRoute

constexpr zol::Field kFields[] = {
    field::input(&PARAM_INPUT, "Input").verbatim(),
    field::selector(&PARAM_CH1, "Output 1", kRoutes, zol::kRouteFirst)
        .label("First output channel")
        .help("Defines what sound data comes through first output channel."),
    field::selector(&PARAM_CH2, "Output 2", kRoutes, zol::kRouteSecond)
        .label("Second output channel")
        .help("Defines what sound data comes through second output channel."),
};

t_ZoAudio *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, PARAM_INPUT);
  if (input == nullptr) {
    zol::showMessage(host, "Input not assigned");
    return nullptr;
  }
  const t_ZoAudio *sound = zol::soundOf(host, input);
  if (sound == nullptr)
    return nullptr;
  t_ZoAudio *out = zol::createSound(host);
  if (out == nullptr) {
    zol::showMessage(host, "Memory allocation failure");
    return nullptr;
  }
  const int first = zol::paramInt(host, PARAM_CH1);
  const int second = zol::paramInt(host, PARAM_CH2);
  zol::routeChannels(out->Samples, out->Frames, out->Channels, zol::sourceOf(*sound), first, second);
  return out;
}

constexpr zol::Effect kSimpleAudioSwitcher{
    .name = "Audio/Filter/Simple Audio Switcher",
    .sign = "Simple Audio Switcher [rul]",
    .version = 1,
    .section = "ASwitcher",
    .description =
        "This is a simple audio switcher. It allows you to commutate/mute/combine input audio channels.",
    .icon = simple_audio_switcher_xpm,
    .iconMode = "One+Saw",
    .init = zol::defaults<kFields>,
    .renderAudio = render,
    .fields = kFields,
    .style = zol::Script::kObj | zol::Script::kCombinedHead | zol::Script::kDescriptionLate |
             zol::Script::kItemsLast,
};

} // namespace

ZOL_EXPORT int ProcessSimpleAudioSwitcherDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kSimpleAudioSwitcher);
}
