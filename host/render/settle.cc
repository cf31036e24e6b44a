#include "host/render/settle.h"

#include "host/media/writer.h"
#include "host/model/error.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace zol::host {
namespace {

constexpr double kDefaultDuration = 5; // of sources and stills, in seconds
constexpr double kMostFrames = 1e9;

size_t framesIn(double duration, Rational rate) {
  const double frames = std::round(duration * rate.value());
  if (!(frames < kMostFrames))
    throw HostError("that is too long to render");
  return frames < 1 ? 1 : static_cast<size_t>(frames);
}

/// The first and the last frame that are meant.
std::pair<size_t, size_t> framesIn(const std::pair<Time, Time> &range, Rational rate) {
  constexpr double kTolerance = 1e-6;
  const auto &[from, to] = range;
  const double begin = from.seconds(rate), end = to.seconds(rate);
  if (!(begin >= 0 && end >= begin))
    throw HostError("--frames: the first frame comes after the last");
  if (!(end * rate.value() < kMostFrames))
    throw HostError("--frames: that is too long to render");
  const size_t first = indexAt(begin, rate);
  if (to.unit == TimeUnit::frames)
    return {first, indexAt(end, rate)};
  return {first, std::max(first, static_cast<size_t>(
                                     std::max(std::ceil(end * rate.value() - kTolerance) - 1, 0.0)))};
}

/// Settles the timeline's duration and the span. The first input that lasts leads: its length is theirs.
void settleLength(const RenderPlan &plan, const std::vector<Input> &inputs, Settled &settled) {
  const bool still = MediaWriter::isStill(plan.output);
  Timeline &timeline = settled.timeline;
  const auto found = std::find_if(inputs.begin(), inputs.end(), [](const Input &input) {
    return !input.isStill() || input.duration() > 0;
  });
  const Input *const leading = found == inputs.end() ? nullptr : &*found;
  const double inputDuration = leading == nullptr ? 0 : leading->duration();
  timeline.duration = plan.duration ? plan.duration->seconds(timeline.rate) : inputDuration;
  std::optional<std::pair<size_t, size_t>> wanted;
  if (plan.frames)
    wanted = framesIn(*plan.frames, timeline.rate);
  if (timeline.duration <= 0 && wanted)
    timeline.duration = timeline.timeOfFrame(wanted->second + 1);
  const bool known = timeline.duration > 0;
  const bool onePicture = still || (plan.output == "-" && !inputs.empty() && leading == nullptr);
  if (!known)
    timeline.duration = onePicture ? timeline.timeOfFrame(1) : kDefaultDuration;
  const size_t all = framesIn(timeline.duration, timeline.rate);
  Span &span = settled.span;
  span.count = still ? 1 : all;
  if (wanted) {
    if (wanted->first >= all)
      throw HostError("--frames: there are only " + std::to_string(all) + " frames, from 0 on");
    span.first = wanted->first;
    span.count = std::min(wanted->second, all - 1) - span.first + 1;
  }
  if (still && span.count != 1)
    throw HostError("\"" + plan.output + "\" holds a single picture; choose one with --frames N-N");
  if (leading == nullptr || leading->isStill() || plan.duration)
    return;
  settled.leading = leading;
  span.openEnd = !plan.frames && !still;
  if (span.openEnd && !known)
    span.count = 0;
}

} // namespace

Settled settlePictures(const RenderPlan &plan, const std::vector<Input> &inputs) {
  Settled settled;
  Timeline &timeline = settled.timeline;
  const auto firstThat = [&](auto fits) {
    const auto found = std::find_if(inputs.begin(), inputs.end(), [&](const Input &input) {
      return input.info() != nullptr && fits(*input.info());
    });
    return found == inputs.end() ? nullptr : found->info();
  };
  if (const MediaInfo *info = firstThat([](const MediaInfo &) { return true; })) {
    timeline.width = info->width;
    timeline.height = info->height;
    timeline.pixelAspect = info->pixelAspect;
  }
  if (plan.size) {
    const double shape = timeline.width * timeline.pixelAspect / timeline.height;
    std::tie(timeline.width, timeline.height) = *plan.size;
    const auto off = [&](double pixelAspect) {
      return std::abs(std::log(timeline.width * pixelAspect / timeline.height / shape));
    };
    if (off(1) < off(timeline.pixelAspect)) // the size was told in square pixels
      timeline.pixelAspect = 1;
  }
  if (!isPictureSize(timeline.width, timeline.height))
    throw HostError("a picture of " + std::to_string(timeline.width) + "x" + std::to_string(timeline.height) +
                    " cannot be made; sides go from 1 to 32767, and to 16255 where both are as long");
  const MediaInfo *moving = firstThat([](const MediaInfo &info) { return !info.still; });
  if (moving != nullptr)
    timeline.rate = moving->frameRate;
  timeline.rate = plan.rate.value_or(timeline.rate);
  settleLength(plan, inputs, settled);
  return settled;
}

Settled settleSound(const RenderPlan &plan, const std::vector<Input> &inputs) {
  Settled settled;
  Timeline &timeline = settled.timeline;
  const MediaInfo *info = inputs.empty() ? nullptr : inputs.front().info();
  if (info != nullptr) {
    timeline.sampleRate = static_cast<unsigned>(info->sampleRate);
    timeline.channels = static_cast<unsigned>(info->channels);
  }
  timeline.sampleRate = plan.sampleRate.value_or(timeline.sampleRate);
  timeline.channels = plan.channels.value_or(timeline.channels);
  timeline.rate = plan.rate.value_or(timeline.rate);
  if (plan.block == 0)
    throw HostError("--block: a block has at least one sample frame");
  settleLength(plan, inputs, settled);
  return settled;
}

} // namespace zol::host
