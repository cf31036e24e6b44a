#include "host/render/slowmo.h"

#include "Runtimes/slomo_sdk/mySM.h"
#include "host/media/media_clip.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/services/session.h"

#include <cmath>
#include <cstdlib>

namespace zol::host {
namespace {

/// The engine over a clip. Frames are the clip's own; between two output frames all of them are given back,
/// since the clip's reader keeps the last few at hand.
class ClipEngine {
public:
  ClipEngine(VideoClip &clip, const t_ZoHostInfo *info, double rate, unsigned frames)
      : clip_(clip), engine_(info, fetch, this, rate, static_cast<unsigned>(clip.reader().width()),
                             static_cast<unsigned>(clip.reader().height()), 0, frames) {}
  ~ClipEngine() { release(); }
  ClipEngine(const ClipEngine &) = delete;
  ClipEngine &operator=(const ClipEngine &) = delete;

  mySM &engine() { return engine_; }

  /// What a frame could not be read for, thrown again.
  void check() const {
    if (error_)
      std::rethrow_exception(error_);
  }

  void release() {
    while (SFrameNode *node = engine_.m_pCache) {
      engine_.m_pCache = node->next;
      std::free(node);
    }
    clip_.release();
  }

private:
  static pic *fetch(t_ZoHostInfo *info, void *media, double time) {
    auto &self = *static_cast<ClipEngine *>(media);
    try {
      if (self.clip_.endsBefore(time))
        return nullptr; // behind the clip's end there is no frame to move towards
      return self.clip_.frame(time, info->Width, info->Height);
    } catch (...) {
      self.error_ = std::current_exception();
      return nullptr;
    }
  }

  VideoClip &clip_;
  mySM engine_;
  std::exception_ptr error_;
};

} // namespace

void slowMotion(const SlowMotionPlan &plan, const Progress &progress) {
  const MediaInfo info = probe(plan.input, plan.programs);
  if (!info.hasVideo || info.still)
    throw HostError("\"" + plan.input + "\" holds no moving pictures");
  VideoReaderOptions reading;
  reading.programs = plan.programs;
  VideoClip clip(plan.input, reading);
  const double rate = clip.reader().rate();
  const double frames = std::round(info.duration * rate);
  if (!(plan.factor >= 1) || !(frames >= 1) || frames * plan.factor > 1e9)
    throw HostError("a clip of " + std::to_string(info.duration) + " s cannot be slowed down by that factor");

  WriterOptions writing;
  writing.width = clip.reader().width();
  writing.height = clip.reader().height();
  writing.rate = rate;
  writing.overwrite = plan.overwrite;
  writing.alpha = info.alpha;
  writing.programs = plan.programs;
  MediaWriter writer(plan.output, writing);

  Session session("Halvenor");
  ClipEngine source(clip, session.info(), rate, static_cast<unsigned>(frames));
  mySM &engine = source.engine();
  if (engine.SetSequence(&source, static_cast<unsigned>(writing.width), static_cast<unsigned>(writing.height),
                         rate, static_cast<unsigned>(frames),
                         plan.fields != SlowMotionPlan::Fields::none ? 1 : 0,
                         plan.fields == SlowMotionPlan::Fields::bottomFirst ? 1 : 0, 0) != 0)
    throw HostError("slow motion: out of memory");
  const auto all = static_cast<size_t>(std::round(frames * plan.factor));
  for (size_t i = 0; i < all; ++i) {
    const double time = static_cast<double>(i) / plan.factor / rate;
    const void *frame = engine.GetFrameToTime(time, static_cast<unsigned>(plan.method));
    source.check();
    if (frame == nullptr)
      throw HostError("\"" + plan.input + "\" has no frame at " + numberText(time) + " s");
    writer.writeFrame(frame);
    source.release();
    progress(i + 1, all);
  }
  writer.finish();
}

} // namespace zol::host
