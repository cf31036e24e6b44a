// Motion Blur: blurs what moves while a shutter is open, or the whole picture along a line, towards a centre
// or around it. At Shutter 0 and at Amount 0 it is a copy.

#include "effects/filters/motion_blur.xpm"
#include "effects/filters/exposing.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/values.h"
#include "kernels/motion/exposure.h"
#include "kernels/motion/frame_average.h"
#include "kernels/sampling/path_average.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

namespace field = zol::field;

enum Field { kInput, kKind, kShutter, kPhase, kSamples, kBetween, kAngle, kAmount, kCenterX, kCenterY };
enum Kind { kOfShutter, kOfDirection, kOfZoom, kOfSpin };

enum Between { kAsTheyAre, kMotionVectors };

constexpr const char *kKinds[] = {"Shutter", "Direction", "Zoom", "Spin"};
constexpr const char *kBetweens[] = {"As they are", "Motion vectors"};

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image to blur."),
    field::selector(kKind, "Kind", kKinds)
        .flags("0x0")
        .help("Shutter blurs what moves in the clip; Direction, Zoom and Spin blur every frame by itself."),
    field::curve(kShutter, "Shutter", {0, 4, "ZodfMinLimit"}, 1)
        .label("Shutter (frames)")
        .help("Shutter: for how many frames it is open. 0 leaves the image as it is."),
    field::curve(kPhase, "Phase", zol::kSigned, 1)
        .help("Shutter: when it is open. At 1 it opens at the frame's time, at -1 it closes then; 0 is "
              "midway."),
    field::integer(kSamples, "Samples", 2, zol::kMostExposures, 8)
        .help("Shutter: how many moments are put together, 2 to 32."),
    field::selector(kBetween, "Between", kBetweens)
        .flags("0x0")
        .label("Between frames")
        .help(
            "Shutter: As they are takes the input's own image at each moment, which for a clip is one of its "
            "frames; Motion vectors makes moments between frames out of what moves."),
    field::angle(kAngle, "Angle", 0)
        .help(
            "Direction: where the blur goes, in degrees: 0 to the right, 90 down. Its opposite is the same."),
    field::curve(kAmount, "Amount", zol::kOpenShare, 0.3)
        .help("Direction, Zoom, Spin: how far. 1 is a tenth of the frame's width, a tenth larger, or 36 "
              "degrees; 0 leaves the image as it is."),
    field::curve(kCenterX, "CenterX", zol::kOpenSigned, 0)
        .help("Zoom, Spin: the center, in widths of the frame to the right of its middle; 0 is the middle."),
    field::curve(kCenterY, "CenterY", zol::kOpenSigned, 0)
        .help("Zoom, Spin: the center, in heights of the frame below its middle; 0 is the middle."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Motion Blur  on", "Input", "Kind",   "Shutter (frames)", "Phase",   "Samples",
    "Between frames",  "Angle", "Amount", "CenterX",          "CenterY", "Blurs what moves",
};

constexpr char kDescription[] =
    "This effect blurs what moves while a shutter is open, or the whole image along a line, towards a center "
    "or around it. <br><br>Required inputs: Input image.";

// ---- Along paths ----

zol::Path readPath(t_ZoHostInfo *host, Kind kind, double amount, const zol::Area &canvas) {
  const zol::Direction to(zol::paramAngle(host, kAngle));
  const auto centre = [host](Field field, int size) {
    return (zol::paramWithin(host, field, -zol::kOpenEnd, zol::kOpenEnd) + 0.5) * size;
  };
  zol::Path path;
  path.kind = kind == kOfZoom   ? zol::Path::Kind::zoom
              : kind == kOfSpin ? zol::Path::Kind::spin
                                : zol::Path::Kind::direction;
  path.aspect = zol::pixelAspect(host);
  path.length = zol::pixelsOf(host, amount);
  path.right = to.right;
  path.down = to.down * path.aspect;
  path.scale = 1 + amount / 10;
  path.turn = amount * std::numbers::pi / 5;
  path.centreX = centre(kCenterX, host->Width) - canvas.left;
  path.centreY = centre(kCenterY, host->Height) - canvas.top;
  return path;
}

/// Writes the canvas's pixels. False when the host wants to stop or, after a message, when memory runs out.
bool blurAlong(t_ZoHostInfo *host, const zol::Path &path, const zol::Area &canvas, const pic &picture,
               _color_t *out) {
  const int width = canvas.width(), height = canvas.height();
  const auto step = static_cast<size_t>(width) + 1;
  const zol::Scratch<zol::WidePixel> first(step * (static_cast<size_t>(height) + 1)),
      second(step * (static_cast<size_t>(height) + 1));
  const zol::Scratch<zol::WidePixel> line(step);
  const zol::Scratch<_color_t> buffer(step);
  if (!first || !second || !line || !buffer) {
    zol::showMemoryError(host);
    return false;
  }
  zol::WidePixel *from = first.data(), *to = second.data();
  const auto rowOf = [step](zol::WidePixel *pixels, int y) { return pixels + static_cast<size_t>(y) * step; };
  const auto input = [&](int y) { return zol::canvasRow(canvas, &picture, canvas.top + y, buffer.data()); };
  const bool started =
      zol::forEachRow(host, height, [&](int y) { zol::startPathRow(input(y), rowOf(from, y), width); });
  if (!started)
    return false;
  const zol::PathAverage average(path, width, height);
  constexpr int kLastPass = zol::PathAverage::kPasses - 1;
  for (int pass = 0; pass < kLastPass; ++pass) {
    const bool made = zol::forEachRow(host, height, [&](int y) {
      average.makeRow(pass, {from, width, height}, y, rowOf(to, y));
    });
    if (!made)
      return false;
    std::swap(from, to);
  }
  return zol::forEachRow(host, height, [&](int y) {
    average.makeRow(kLastPass, {from, width, height}, y, line.data());
    zol::finishPathRow(line.data(), input(y), out + ptrdiff_t{y} * width, width);
  });
}

pic *renderPath(t_ZoHostInfo *host, Kind kind, pic *frame) {
  const double amount = zol::paramWithin(host, kAmount, 0, zol::kOpenEnd);
  if (amount == 0)
    return zol::copyOf(host, frame);
  const zol::Area canvas = zol::canvasOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  if (!out)
    return nullptr;
  const zol::Path path = readPath(host, kind, amount, canvas);
  const bool done = canvas.isEmpty() || blurAlong(host, path, canvas, *frame, out->Pixels);
  return done ? out.release() : nullptr;
}

// ---- Through a shutter ----

struct Shutter {
  double open;  // in frames
  double phase; // 1: opens at the frame's time; -1: closes then
  int samples;

  /// When a sample is taken, in seconds.
  [[nodiscard]] double time(const t_ZoHostInfo *host, int sample) const {
    return host->FrameTime + open / host->FrameRate * ((sample + 0.5) / samples - 0.5 + phase / 2);
  }
};

/// Frames of one input. What cannot be had is reported; once the host has had enough nothing is fetched.
class Fetcher {
public:
  Fetcher(t_ZoHostInfo *host, void *input) : host_(host), input_(input) {}

  const pic *at(double time) {
    if (stopped_)
      return nullptr;
    const pic *frame = host_->Services->PicGetSized(host_, input_, time);
    if (frame == nullptr)
      stopped_ = host_->Services->ErrorCountReport(host_, 0, 0, ++failures_) != 0;
    return frame;
  }

private:
  t_ZoHostInfo *host_;
  void *input_;
  int failures_ = 0;
  bool stopped_ = false;
};

pic *exposeInput(t_ZoHostInfo *host, Fetcher &fetcher, const Shutter &shutter) {
  const pic *pictures[zol::kMostExposures];
  int count = 0;
  for (int i = 0; i < shutter.samples; ++i)
    if (const pic *picture = fetcher.at(shutter.time(host, i)); picture != nullptr)
      pictures[count++] = picture;
  return count != 0 ? zol::averageOf(host, zol::Exposures::of(pictures, count)) : nullptr;
}

/// The average of moments; null as renders answer it.
pic *average(t_ZoHostInfo *host, const zol::Moment *moments, int count) {
  const pic &first = *moments[0].before;
  const bool still = std::all_of(moments, moments + count, [&](const zol::Moment &moment) {
    return moment.before == &first && moment.after == nullptr;
  });
  if (still)
    return zol::copyOf(host, &first);
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::of(first)));
  if (!out)
    return nullptr;
  zol::MomentAverage average(first.Width, first.Height);
  if (!average) {
    zol::showMemoryError(host);
    return nullptr;
  }
  if (!average.add(moments, count, [host] { return !zol::aborted(host); }))
    return nullptr;
  const bool done = zol::forEachRow(host, first.Height, [&](int y) {
    const ptrdiff_t row = ptrdiff_t{y} * first.Width;
    average.writeRow(y, first.Pixels + row, out->Pixels + row);
  });
  return done ? out.release() : nullptr;
}

/// As exposeInput(), of moments between the input's frames. Frames of different places are exposed as they
/// are.
pic *exposeBetweenFrames(t_ZoHostInfo *host, Fetcher &fetcher, const Shutter &shutter) {
  constexpr double kSlack = 1e-6; // a sample that should lie at a frame is not before it
  const double position = shutter.time(host, 0) * host->FrameRate + kSlack, frame = std::floor(position);
  if (!std::isfinite(position))
    return exposeInput(host, fetcher, shutter);
  const auto offset = [&](int sample) { return position - frame + shutter.open * sample / shutter.samples; };
  zol::FrameRun run;
  for (const int last = static_cast<int>(offset(shutter.samples - 1)) + 1; run.count <= last; ++run.count)
    run.frames[run.count] = fetcher.at((frame + run.count) / host->FrameRate);
  if (!run.isEven())
    return exposeInput(host, fetcher, shutter);
  zol::Moment moments[zol::kMostExposures];
  int count = 0;
  for (int i = 0; i < shutter.samples; ++i)
    if (const zol::Moment moment = run.at(offset(i)); moment.before != nullptr)
      moments[count++] = moment;
  return count != 0 ? average(host, moments, count) : nullptr;
}

pic *renderShutter(t_ZoHostInfo *host, void *input) {
  const Shutter shutter = {zol::paramWithin(host, kShutter, 0, zol::kOpenEnd), zol::paramSigned(host, kPhase),
                           std::clamp(zol::paramInt(host, kSamples), 2, zol::kMostExposures)};
  const bool between = zol::paramInt(host, kBetween) == kMotionVectors;
  if (shutter.open == 0 || !(host->FrameRate > 0) || std::isinf(host->FrameRate)) {
    const pic *frame = zol::frameOf(host, input);
    return frame != nullptr ? zol::copyOf(host, frame) : nullptr;
  }
  Fetcher fetcher(host, input);
  return between ? exposeBetweenFrames(host, fetcher, shutter) : exposeInput(host, fetcher, shutter);
}

pic *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, kInput);
  if (input == nullptr) {
    zol::showMessage(host, "Input not assigned");
    return nullptr;
  }
  const int kind = std::clamp(zol::paramInt(host, kKind), int{kOfShutter}, int{kOfSpin});
  if (kind == kOfShutter)
    return renderShutter(host, input);
  pic *frame = zol::frameOf(host, input);
  return frame != nullptr ? renderPath(host, static_cast<Kind>(kind), frame) : nullptr;
}

constexpr zol::Effect kMotionBlur{
    .name = "Filters/Motion Blur",
    .sign = "MotionBlur Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
    .section = "MotionBlur",
    .description = kDescription,
    .icon = motion_blur_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessMotionBlurDeclare(t_ZoHostInfo *host) { return zol::declare(host, kMotionBlur); }
