// Chain Mix: of every input interval one frame is taken, shown for the stop interval and mixed into the
// next one over the mix interval; the frames between are dropped. A mix interval of 0 shows held frames
// alone.

#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/mix.h"

#include <cmath>

namespace {

namespace field = zol::field;

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

constexpr const char *kStartItems[] = {"Absolute time", "Clip beginning"};

constexpr zol::Field interval(int *id, const char *name, double least, double value) {
  return field::time(id, name, least, 3600, value).verbatim().flags(nullptr).at(0);
}

constexpr zol::Field kFields[] = {
    field::input(&inputField, "Background").bare().clip(),
    field::selector(&startFromField, "InputStartOffsetFrom", kStartItems, kClipBeginning)
        .label("Start from")
        .verbatim()
        .flags(nullptr),
    field::time(&startOffsetField, "InputStartOffset", 0, 14400, 0)
        .label(kStartLabel)
        .verbatim()
        .flags(nullptr)
        .unset(),
    interval(&inputIntervalField, "InputInterval", 0.01, 2).label("Input Interval"),
    interval(&stopIntervalField, "StopInterval", 0, 0.5).label("Output Stop Interval"),
    interval(&mixIntervalField, "MixInterval", 0, 1.5).label("Output Mix Interval"),
    field::toggle(&nonlinearField, "Nonlinear", false)
        .label(kNonlinearLabel)
        .verbatim()
        .flags(nullptr)
        .unset(),
};

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

constexpr zol::Effect kChainMix{
    .name = "Compositing/Chain Mix",
    .sign = "ChainedMix Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .description8 = kDescription,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessChamixDeclare(t_ZoHostInfo *host) { return zol::declare(host, kChainMix); }
