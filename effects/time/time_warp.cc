// Time Warp: shows a clip at a speed that changes over time, or at the positions that a curve says. At speed
// 1 from the clip's beginning it is a copy.

#include "effects/time/time_warp.xpm"
#include "effects/filters/exposing.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/retime.h"
#include "frame/values.h"

#include <algorithm>
#include <cmath>

namespace {

namespace field = zol::field;

enum Mode { kOfSpeed, kOfPosition };

// Ids of the fields, those of the latest declaration.
int inputField = 0;
int modeField = 1;
int speedField = 2;
int positionField = 3;
int startOffsetField = 4;
int beyondField = 5;
int methodField = 6;
int fieldsField = 7;
int blendField = 8;
int freezeField = 9;
int reverseField = 10;

constexpr double kFastest = 10;

constexpr const char *kModes[] = {"Speed", "Position"};

constexpr zol::Field kFields[] = {
    field::input(&inputField, "Input").clip().help("The clip to warp."),
    field::selector(&modeField, "Mode", kModes)
        .help("Speed goes through the clip as fast as the speed says, Position shows the position alone."),
    field::curve(&speedField, "Speed", {-kFastest, kFastest, "ZodfNone"}, 1)
        .help("Speed: 1 as the clip was taken, 0.1 ten times slower, 0 stands still, -1 backwards."),
    field::time(&positionField, "Position", 0, zol::kLongestOffset, 0)
        .help("Position: the time of the clip that is shown, in seconds behind the start offset."),
    field::startOffset(&startOffsetField),
    field::beyond(&beyondField),
    field::method(&methodField),
    field::frameFields(&fieldsField),
    field::toggle(&blendField, "Blend", false)
        .label("&Blend skipped frames")
        .help(
            "Where frames of the clip are skipped they are put together, as a shutter would that is open all "
            "the time."),
    field::button(&freezeField, "Freeze")
        .label("Freeze here")
        .help("Puts a key of speed 0 at the current time."),
    field::button(&reverseField, "Reverse")
        .label("Reverse from here")
        .help("Puts a key of the opposite speed at the current time."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Time Warp  on",
    "Input",
    "Mode",
    "Speed",
    "Position",
    "Input start offset",
    "Beyond",
    "Method",
    "Fields",
    "&Blend skipped frames",
    "Freeze here",
    "Reverse from here",
    "Shows a clip faster, slower or backwards",
};

constexpr char kDescription[] =
    "This effect shows a clip at a speed that changes over time, forwards and backwards, or at the positions "
    "that a curve says. <br><br>Required inputs: Input clip.";

double speedAt(t_ZoHostInfo *host, double time) {
  return zol::within(zol::paramDouble(host, speedField, time), -kFastest, kFastest);
}

double positionAt(t_ZoHostInfo *host, double time) {
  return zol::within(zol::paramDouble(host, positionField, time), 0, zol::kLongestOffset);
}

/// The area below the speed from 0 to a time, in as many even steps over the span as frames fit into it.
double speedUntil(t_ZoHostInfo *host, double time, double frames) {
  constexpr int kMostSteps = 131072;
  constexpr double kLatest = 8;
  int steps = 1;
  while (steps < kMostSteps && steps < frames - 0.5)
    steps *= 2;
  time = std::min(time, kLatest);
  double area = 0, from = 0, speed = speedAt(host, 0);
  for (int i = 1; from < time; ++i) {
    const double to = std::min(static_cast<double>(i) / steps, time), next = speedAt(host, to);
    area += (speed + next) / 2 * (to - from);
    from = to;
    speed = next;
  }
  return area;
}

/// The time within the clip that is shown, and how far the next frame lies from it.
struct Moment {
  double time, step;
};

Moment momentOf(t_ZoHostInfo *host, Mode mode) {
  const double offset = zol::within(zol::paramDouble(host, startOffsetField), 0, zol::kLongestOffset);
  const double elapsed = host->FrameTime - host->VideoClipStart, time = host->Time;
  const double span = elapsed > 0 && time > 0 ? elapsed / time : 0; // seconds
  if (mode == kOfPosition) {
    const double position = positionAt(host, time);
    const double gain = span > 0 ? positionAt(host, time + 1 / (host->FrameRate * span)) - position : 0;
    return {offset + position, gain};
  }
  const double gone = span > 0 ? span * speedUntil(host, time, span * host->FrameRate) : 0;
  return {offset + gone, speedAt(host, time) / host->FrameRate};
}

/// The average of the frames that are passed until the next one is shown; null as renders answer it.
pic *blend(t_ZoHostInfo *host, const zol::Footage &footage, const Moment &moment, double passed) {
  static constexpr pic kNothing = {0, 0, 0, 0, nullptr};
  const pic *pictures[zol::Exposures::kMost];
  const int count = static_cast<int>(std::min(std::ceil(passed), double{zol::Exposures::kMost}));
  for (int i = 0; i < count; ++i) {
    const auto shown = zol::timeWithin(footage, moment.time + i * moment.step / count);
    pictures[i] = shown ? zol::wholeFrame(host, footage, *shown) : &kNothing;
    if (pictures[i] == nullptr)
      return nullptr;
  }
  const zol::Exposures exposures = zol::Exposures::of(pictures, count);
  if (exposures.count == 1 && exposures.pictures[0] == &kNothing)
    return zol::createTransparent(host);
  return zol::averageOf(host, exposures);
}

pic *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, inputField);
  if (input == nullptr) {
    zol::showMessage(host, "Input not assigned");
    return nullptr;
  }
  const Mode mode = zol::paramInt(host, modeField) == kOfPosition ? kOfPosition : kOfSpeed;
  const zol::Footage footage = zol::readFootage(host, input, beyondField, methodField, fieldsField);
  const Moment moment = momentOf(host, mode);
  constexpr double kSlack = 1e-6; // no rounding passes another frame
  if (const double passed = std::abs(moment.step) * footage.rate - kSlack;
      passed > 1 && zol::paramInt(host, blendField) != 0)
    return blend(host, footage, moment, passed);
  return zol::retime(host, footage, moment.time);
}

int onDialogOpen(t_ZoHostInfo *host) {
  if (zol::input(host, inputField) == nullptr)
    zol::setDefaultInput(host, inputField);
  return 1;
}

int onDialogItemEdit(t_ZoHostInfo *host, int item) {
  if (item != freezeField && item != reverseField)
    return 0;
  const double speed = item == freezeField ? 0 : -speedAt(host, host->Time);
  host->Services->ParamSetFloat(host, speedField, 0, host->Time, speed);
  host->Services->DialogRefresh(host, 0, 0);
  return 0;
}

constexpr zol::Effect kTimeWarp{
    .name = "Time/Time Warp",
    .sign = "TimeWarp Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
    .section = "TimeWarp",
    .description = kDescription,
    .icon = time_warp_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .onDialogOpen = onDialogOpen,
    .onDialogItemEdit = onDialogItemEdit,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessTimeWarpDeclare(t_ZoHostInfo *host) { return zol::declare(host, kTimeWarp); }
