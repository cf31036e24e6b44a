// Mix: input A dissolves into input B as the "Transition" curve goes from 0 to 1. At 0 and below it is a
// copy of A, at 1 and above one of B.

#include "effects/compositing/mix.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/mix.h"

namespace {

constexpr char kSection[] = "Mix";

ZOL_TEXT_TABLE kTexts[] = {
    "Mixer  on",        "&c0000FF&bMixer.\n&c000000&nMixes inputs with ratio defined by curve.",
    "Input A",          "Input B",
    "Mix Input A",      "Mix Input B",
    "Mixes two inputs", "Input is not assigned",
};

enum Field { kInputA, kInputB, kTransition };

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetFloat(host, kTransition, 0, 0.0, 0.0);
  host->Services->ParamSetFloat(host, kTransition, 0, 1.0, 1.0);
  return 1;
}

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

} // namespace

ZOL_EXPORT int ProcessMixDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Transitions/Dissolve/Mix" : "Compositing/Mix";
  const zol::Declaration eff(host, "eff", kSection);
  eff.begin("Mix Zo2 native", name, 1);
  eff.descriptionW("Mixes two inputs");
  eff.icon(mix_xpm);
  eff.init(init);
  eff.renderVideo(render);
  eff.send(R"(DataFieldAdd( &eff.df, "Input", "Input A" );)");
  eff.send(R"(DataFieldAdd( &eff.df, "Input", "Input B" );)");
  eff.send(R"(ZoDataFieldAdd( &eff.df, "FloatA", "Transition", (word *))" ZOL_ADDRESS
           R"(, 0.0, 1.0, ZodfBothLimits, 0x0 );)",
           eff.word("Transition"));
  int clipping = 0;
  eff.send("*(int *)" ZOL_ADDRESS
           R"( = ZoDataFieldAdd( &eff.df, "Selector", "Clipping", (word *))" ZOL_ADDRESS R"(, ZodfHide );)",
           zol::address(&clipping), eff.word("Clipping"));
  eff.item(clipping, "Union", 0);
  eff.end();
  return 1;
}
