#include "host/render/slowmo.h"

#include "host/media/source.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/media_clip.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace zol::host {

SlowMotionClip::SlowMotionClip(Clip &clip, const Format &format, SlowMotionMethod method)
    : clip_(clip), format_(format), method_(method) {
  constexpr unsigned kUnknown = 0; // the number of frames concerns GetFrameToNum() alone
  constexpr unsigned kFourBytes = 0;
  if (SetSequence(this, static_cast<unsigned>(format.width), static_cast<unsigned>(format.height),
                  format.rate.value(), kUnknown, format.fields != FieldOrder::none ? 1 : 0,
                  format.fields == FieldOrder::bottomFirst ? 1 : 0, kFourBytes) != 0)
    throw HostError("slow motion: out of memory");
}

void *SlowMotionClip::FrameProvider(void *, unsigned frame) {
  try { // nothing that the clip throws may pass through the engine
    const pic *picture = clip_.frame(timeOf(frame, format_.rate), format_.width, format_.height);
    return picture == nullptr ? nullptr : picture->Pixels;
  } catch (...) {
    error_ = std::current_exception();
    return nullptr;
  }
}

pic *SlowMotionClip::frame(double time, int, int) {
  const void *made = GetFrameToTime(time, static_cast<unsigned>(method_));
  if (error_)
    std::rethrow_exception(std::exchange(error_, nullptr));
  if (made == nullptr)
    return nullptr;
  auto picture =
      PictureBuffer::make(format_.width, format_.height); // the engine's own changes with the next call
  if (picture == nullptr)
    return nullptr;
  std::memcpy(picture->record()->Pixels, made, picture->pixels() * sizeof(_color_t));
  held_.push_back(std::move(picture));
  return held_.back()->record();
}

void SlowMotionClip::release() {
  held_.clear();
  clip_.release();
}

namespace {

/// Has the writer take the clip's sound along; why not, or empty.
std::string keepSound(const SlowMotionPlan &plan, const MediaInfo &info, bool stream,
                      WriterOptions &writing) {
  constexpr double kMostStretch = 4; // beyond it voices fall apart
  if (plan.noSound || !info.hasAudio || plan.output == "-")
    return {};
  if (formatOf(plan.output, plan.encoding).sounds.empty())
    return '"' + plan.output + "\" holds none";
  if (stream)
    return "it came through a pipe";
  if (plan.factor > kMostStretch)
    return "it cannot be stretched more than " + numberText(kMostStretch) + " times";
  writing.companion.file = plan.input;
  writing.companion.sound = writing.companion.tags = true;
  writing.companion.tempo = 1 / plan.factor;
  writing.companion.duration = info.duration;
  return {};
}

} // namespace

std::vector<std::string> slowMotion(const SlowMotionPlan &plan, const Progress &progress) {
  Source source(plan.input, {.playlists = plan.playlists});
  const MediaInfo info = source.look(plan.programs);
  if (!info.hasVideo || info.still)
    throw HostError("\"" + plan.input + "\" holds no moving pictures");
  VideoReader reader(std::move(source), VideoReaderOptions{.strict = plan.strict, .programs = plan.programs});
  const Rational rate = reader.rate();
  const auto slowed = [&](double frames) { return static_cast<size_t>(std::round(frames * plan.factor)); };
  const double expected = std::round(info.duration * rate.value());
  if (!(plan.factor >= 1) || expected * plan.factor > 1e9)
    throw HostError("a clip of " + numberText(info.duration) + " s cannot be slowed down by that factor");

  WriterOptions writing;
  writing.width = reader.width();
  writing.height = reader.height();
  writing.rate = rate;
  writing.pixelAspect = nearestRational(info.pixelAspect);
  writing.overwrite = plan.overwrite;
  writing.alpha = info.alpha;
  writing.programs = plan.programs;
  writing.encoding = plan.encoding;
  writing.pixelAspect = nearestRational(info.pixelAspect);
  std::vector<std::string> notes;
  if (const std::string why = keepSound(plan, info, reader.isStream(), writing); !why.empty())
    notes.push_back("the sound of \"" + plan.input + "\" is left out: " + why);
  MediaWriter writer(plan.output, writing);

  // Behind the clip's end there is no frame to move towards.
  VideoClip clip(reader, VideoClip::BehindEnd::nothing);
  SlowMotionClip slow(clip, {reader.width(), reader.height(), rate, plan.fields}, plan.method);
  for (size_t i = 0;; ++i) {
    const double time = static_cast<double>(i) / plan.factor / rate.value();
    const pic *picture = slow.frame(time, writing.width, writing.height);
    const auto frames = reader.frameCount();
    if (frames && i >= slowed(static_cast<double>(*frames)))
      break;
    if (picture == nullptr)
      throw HostError("\"" + plan.input + "\" has no frame at " + numberText(time) + " s");
    writer.writeFrame(picture->Pixels);
    slow.release();
    progress(i + 1, std::max(i + 1, slowed(expected)));
  }
  writer.finish();
  if (!reader.damage().empty())
    notes.push_back(reader.damage());
  return notes;
}

} // namespace zol::host
