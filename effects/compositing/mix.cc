// Mix: input A dissolves into input B as the "Transition" curve goes from 0 to 1. At 0 and below it is a
// copy of A, at 1 and above one of B.

#include "effects/compositing/mix.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/mix.h"

namespace {

namespace field = zol::field;

enum Field { kInputA, kInputB, kTransition, kClipping };

constexpr const char *kClippings[] = {"Union"};

constexpr zol::Field kFields[] = {
    field::plain("Input", kInputA, "Input A"),
    field::plain("Input", kInputB, "Input B"),
    field::curve(kTransition, "Transition", zol::kShare, 0).colored(0).rising(),
    field::selector(kClipping, "Clipping", kClippings).flags("ZodfHide").unset(),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Mixer  on",        "&c0000FF&bMixer.\n&c000000&nMixes inputs with ratio defined by curve.",
    "Input A",          "Input B",
    "Mix Input A",      "Mix Input B",
    "Mixes two inputs", "Input is not assigned",
};

pic *frameOfField(t_ZoHostInfo *host, Field field) {
  void *input = zol::input(host, field);
  return input != nullptr ? zol::frameOf(host, input) : nullptr;
}

pic *copyOf(t_ZoHostInfo *host, pic *frame) {
  return frame != nullptr ? host->Services->PicDuplicate(frame) : nullptr;
}

// What is missing is answered with null and without a message.
pic *render(t_ZoHostInfo *host) {
  const float ratio = zol::paramFloat(host, kTransition, static_cast<float>(host->Time));
  pic *a = nullptr;
  if (ratio < 1.0F) {
    a = frameOfField(host, kInputA);
    if (!(ratio > 0.0F))
      return copyOf(host, a);
  }
  pic *b = frameOfField(host, kInputB);
  if (ratio >= 1.0F)
    return copyOf(host, b);
  return a != nullptr && b != nullptr ? mix_pics_union(a, b, ratio, host) : nullptr;
}

constexpr zol::Effect kMix{
    .name = "Compositing/Mix",
    .nameInQuorbel = "Transitions/Dissolve/Mix",
    .sign = "Mix Zo2 native",
    .version = 1,
    .section = "Mix",
    .description = "Mixes two inputs",
    .icon = mix_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessMixDeclare(t_ZoHostInfo *host) { return zol::declare(host, kMix); }
