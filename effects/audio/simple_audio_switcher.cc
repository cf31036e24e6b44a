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

constexpr char kSection[] = "ASwitcher";

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetInt(host, PARAM_CH1, 0, zol::kRouteFirst);
  host->Services->ParamSetInt(host, PARAM_CH2, 0, zol::kRouteSecond);
  return 1;
}

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

void declareOutput(const zol::Declaration &obj, int *id, const char *name, const char *label,
                   const char *help) {
  obj.send("*((int *)" ZOL_ADDRESS ") = ZoDataFieldAdd( &obj.df, \"Selector\", \"%s\", (word *)" ZOL_ADDRESS
           ", %s );",
           zol::address(id), name, obj.word(label), "ZodfNone");
  obj.help(*id, help);
}

void declareRoutes(const zol::Declaration &obj, int id) {
  obj.item(id, "Off", zol::kRouteOff);
  obj.item(id, "Input 1", zol::kRouteFirst);
  obj.item(id, "Input 2", zol::kRouteSecond);
  obj.item(id, "Mix of all inputs", zol::kRouteMean);
}

} // namespace

ZOL_EXPORT int ProcessSimpleAudioSwitcherDeclare(t_ZoHostInfo *host) {
  const zol::Declaration obj(host, "obj", kSection);
  obj.beginCombined("Audio/Filter/Simple Audio Switcher", "Simple Audio Switcher [rul]", 1);
  obj.icon(simple_audio_switcher_xpm);
  obj.iconMode("One+Saw");
  obj.descriptionW(
      "This is a simple audio switcher. It allows you to commutate/mute/combine input audio channels.");
  obj.init(init);
  obj.renderAudio(render);
  obj.send("*((int *)" ZOL_ADDRESS ") = ZoDataFieldAdd( &obj.df, \"Input\", \"%s\", \"%s\", %s );",
           zol::address(&PARAM_INPUT), "Input", "Input", "ZodfNone");
  declareOutput(obj, &PARAM_CH1, "Output 1", "First output channel",
                "Defines what sound data comes through first output channel.");
  declareOutput(obj, &PARAM_CH2, "Output 2", "Second output channel",
                "Defines what sound data comes through second output channel.");
  declareRoutes(obj, PARAM_CH1);
  declareRoutes(obj, PARAM_CH2);
  obj.end();
  return 1;
}
