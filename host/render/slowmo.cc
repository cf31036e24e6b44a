#include "host/render/slowmo.h"

#include "host/media/interrupt.h"
#include "host/media/source.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/media_clip.h"
#include "host/render/threads.h"

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

std::unique_ptr<PictureBuffer> SlowMotionClip::made(double time) {
  const void *made = GetFrameToTime(time, static_cast<unsigned>(method_));
  if (error_)
    std::rethrow_exception(std::exchange(error_, nullptr));
  if (made == nullptr)
    return nullptr;
  auto picture = PictureBuffer::makeUnwritten(format_.width,
                                              format_.height); // the engine's own changes with the next call
  if (picture == nullptr)
    return nullptr;
  std::memcpy(picture->record()->Pixels, made, picture->pixels() * sizeof(_color_t));
  return picture;
}

pic *SlowMotionClip::frame(double time, int, int) {
  auto picture = made(time);
  return picture == nullptr ? nullptr : held_.emplace_back(std::move(picture))->record();
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

/// The frames of the slowed clip in their order. Threads share them by the pairs of source frames between
/// which they lie, since the motion of a pair is searched once; an engine each makes them.
class SlowMotionLoop {
public:
  SlowMotionLoop(VideoReader &reader, const SlowMotionPlan &plan) : reader_(reader), plan_(plan) {
    const size_t bytes =
        sizeof(_color_t) * static_cast<size_t>(reader.width()) * static_cast<size_t>(reader.height());
    // Work frames, tables and copies of a pair; the run.
    constexpr size_t kEngine = 12;
    constexpr size_t kRunBytes = size_t{64} << 20, kLongest = 32;
    longest_ = std::clamp<size_t>(kRunBytes / bytes, 2, kLongest);
    const auto pair = static_cast<size_t>(std::min(std::ceil(plan.factor), static_cast<double>(longest_)));
    const size_t threads = threadsFor(plan.threads, kEngine + pair, bytes);
    const size_t lead = threads + 1;
    reader.keepMore(lead);
    reader.prepare(0); // whichever thread asks first
    work_ =
        std::make_unique<Work>(Work::Plan{.threads = threads,
                                          .lead = lead,
                                          .next = [this] { return nextRun(); },
                                          .worker = [this](const auto &unwanted) { return worker(unwanted); },
                                          .unblock = [this] { reader_.giveUp(); }});
  }

  /// The next frame; null behind the last.
  std::shared_ptr<PictureBuffer> next() {
    auto made = work_->take();
    const auto frames = reader_.frameCount();
    if (!made || (frames && done_ >= slowed(*frames)))
      return nullptr;
    if (*made == nullptr)
      throw HostError("\"" + plan_.input + "\" has no frame at " + numberText(timeOfFrame(done_)) + " s");
    ++done_;
    return *std::move(made);
  }
  [[nodiscard]] size_t done() const { return done_; }

private:
  struct Run {
    size_t first, count;
  };
  using Work = OrderedWork<Run, std::shared_ptr<PictureBuffer>>;

  [[nodiscard]] double sourceFrame(size_t frame) const { return static_cast<double>(frame) / plan_.factor; }
  [[nodiscard]] double timeOfFrame(size_t frame) const { return sourceFrame(frame) / reader_.rate().value(); }
  [[nodiscard]] size_t slowed(size_t frames) const {
    return static_cast<size_t>(std::round(static_cast<double>(frames) * plan_.factor));
  }

  /// Those that lie between the same two source frames, but not endlessly many.
  std::optional<Run> nextRun() {
    const auto frames = reader_.frameCount();
    if (frames && begun_ >= slowed(*frames))
      return std::nullopt;
    const size_t first = begun_++;
    while (begun_ - first < longest_ && std::floor(sourceFrame(begun_)) == std::floor(sourceFrame(first)))
      ++begun_;
    return Run{first, begun_ - first};
  }

  Work::Worker worker(const Work::Unwanted &unwanted) {
    struct Engine {
      Engine(VideoReader &reader, const SlowMotionPlan &plan)
          : clip(reader, VideoClip::BehindEnd::nothing), // towards which there is nothing to move
            slow(clip, {reader.width(), reader.height(), reader.rate(), plan.fields}, plan.method) {}
      VideoClip clip;
      SlowMotionClip slow;
    };
    const auto engine = std::make_shared<Engine>(reader_, plan_);
    return [=, this](const Run &run, const auto &handOn) {
      for (size_t i = run.first; i < run.first + run.count && !unwanted(); ++i) {
        handOn(engine->slow.made(timeOfFrame(i)));
        engine->slow.release();
      }
    };
  }

  VideoReader &reader_;
  const SlowMotionPlan &plan_;
  size_t longest_, begun_ = 0, done_ = 0;
  std::unique_ptr<Work> work_; // last: its threads use all of the above
};

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

  SlowMotionLoop loop(reader, plan);
  while (const auto picture = loop.next()) {
    writer.writeFrame({picture, picture->record()->Pixels});
    progress(loop.done(), std::max(loop.done(), slowed(expected)));
    stopIfInterrupted();
  }
  writer.finish();
  if (!reader.damage().empty())
    notes.push_back(reader.damage());
  return notes;
}

} // namespace zol::host
