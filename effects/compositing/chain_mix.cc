// Chain Mix: of every input interval one frame is taken, shown for the stop interval and mixed into the
// next one over the mix interval; the frames between are dropped. A mix interval of 0 shows held frames
// alone.

#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/mix.h"

#include <cmath>

namespace {

constexpr char kInputLabel[] = "Input";
constexpr char kStartLabel[] = "Start processing from";
constexpr char kNonlinearLabel[] = "&Nonlinear mixer";
constexpr char kDescription[] =
    "Mixes frames with further frames from the same input by specified step. Drops frames in between.";
constexpr char kNotAssigned[] = "Input is not assigned";

ZOL_TEXT_TABLE kTexts[] = {
    "Chain Mix  on",
    "&c0000FF&bChain Mix.\n&c000000&nMixes frames of the input with its further frames.",
    kInputLabel,
    kStartLabel,
    "frame",
    "Get every #th ",
    "frame from Input",
    "Make",
    "stop frames, and",
    "mixed frames from every frame pair",
    kNonlinearLabel,
    kDescription,
    kNotAssigned,
};

// Ids of the fields.
int inputField = 0;
int startFromField = 1;
int startOffsetField = 2;
int inputIntervalField = 3;
int stopIntervalField = 4;
int mixIntervalField = 5;
int nonlinearField = 6;

enum StartFrom { kAbsoluteTime, kClipBeginning };

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetInt(host, startFromField, 0, kClipBeginning);
  host->Services->ParamSetFloat(host, inputIntervalField, 0, 0.0, 2.0);
  host->Services->ParamSetFloat(host, stopIntervalField, 0, 0.0, 0.5);
  host->Services->ParamSetFloat(host, mixIntervalField, 0, 0.0, 1.5);
  zol::setDefaultInput(host, inputField);
  return 1;
}

/// Keeps times that fall on a boundary from being counted as just before it.
constexpr double kBoundary = 0.000001;

/// Down to the half frame, toward zero.
double snapped(double time, double frameRate) {
  return std::trunc(2.0 * time * frameRate + kBoundary) / (2.0 * frameRate);
}

pic *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, inputField);
  if (input == nullptr) {
    zol::showMessage(host, kNotAssigned);
    return nullptr;
  }
  const double inputInterval = zol::paramDouble(host, inputIntervalField);
  const double stop = zol::paramDouble(host, stopIntervalField);
  const double mix = zol::paramDouble(host, mixIntervalField);
  double offset = zol::paramDouble(host, startOffsetField);
  if (zol::paramInt(host, startFromField) == kClipBeginning)
    offset += host->VideoClipStart;

  const double elapsed = host->FrameTime - host->VideoClipStart;
  const double period = stop + mix;
  const bool cycles = period != 0;
  const double cycle = cycles ? std::trunc(elapsed / period + kBoundary) : 0;
  pic *held =
      host->Services->PicGetSized(host, input, snapped(cycle * inputInterval + offset, host->FrameRate));

  const double phase = elapsed - cycle * period;
  if (cycles && phase >= stop && mix > 0) {
    pic *next = host->Services->PicGetSized(host, input, (cycle + 1) * inputInterval + offset);
    if (held == nullptr || next == nullptr)
      return nullptr;
    // The halves let the first mixed frame show some of the next one and the last some of the held one.
    double ratio = (phase - stop + 0.5) / (mix + 0.5);
    if (zol::paramInt(host, nonlinearField) != 0)
      ratio = ratio * ratio * (3.0 - 2.0 * ratio);
    return mix_pics_union(held, next, static_cast<float>(ratio), host);
  }

  if (held == nullptr)
    return nullptr;
  pic *copy = host->Services->PicDuplicate(held);
  if (copy == nullptr)
    zol::showMemoryError(host);
  return copy;
}

} // namespace

ZOL_EXPORT int ProcessChamixDeclare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  const auto time = [&](int *id, const char *name, const char *label, const char *limits) {
    eff.send("*(int *)" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "time", "%s", "%s", %s );)",
             zol::address(id), name, label, limits);
  };
  eff.begin("ChainedMix Zo1 native", "Compositing/Chain Mix", 1);
  eff.description(kDescription);
  eff.init(init);
  eff.renderVideo(render);
  eff.send("*(int *)" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "Input", "Background" );)",
           zol::address(&inputField));
  eff.send("*(int *)" ZOL_ADDRESS
           R"( = ZoDataFieldAdd( &eff.df, "Selector", "InputStartOffsetFrom", "%s" );)",
           zol::address(&startFromField), "Start from");
  constexpr char kItem[] = R"(DataFieldSelItemAdd( &eff.df, "InputStartOffsetFrom", "%s", 0x%X );)";
  eff.send(kItem, "Absolute time", unsigned{kAbsoluteTime});
  eff.send(kItem, "Clip beginning", unsigned{kClipBeginning});
  time(&startOffsetField, "InputStartOffset", kStartLabel, "0.0, 14400.0");
  time(&inputIntervalField, "InputInterval", "Input Interval", "0.01, 3600.0");
  time(&stopIntervalField, "StopInterval", "Output Stop Interval", "0.0, 3600.0");
  time(&mixIntervalField, "MixInterval", "Output Mix Interval", "0.0, 3600.0");
  eff.send("*(int *)" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "Bool", "Nonlinear", "%s" );)",
           zol::address(&nonlinearField), kNonlinearLabel);
  eff.end();
  return 1;
}
