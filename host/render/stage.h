// One effect of a chain at work: its instance, its inputs, and what it renders at any time.
#pragma once

#include "host/render/instance.h"
#include "host/render/scaled_pictures.h"
#include "host/render/timeline.h"
#include "host/services/pools.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace zol::host {

class Stage {
public:
  /// `realTime`: use the real-time callback even where there is another.
  Stage(const Effect &effect, const std::string &identity, const Timeline &timeline, bool realTime,
        Clip *defaultClip);

  Instance &instance() { return instance_; }

  [[nodiscard]] const Effect &effect() const { return instance_.effect(); }
  [[nodiscard]] const Timeline &timeline() const { return timeline_; }

  /// The picture at a time in seconds: frame-sized, what the effect rendered in its place and transparent
  /// black around it. Throws HostError with the effect's own message where it renders nothing.
  std::unique_ptr<PictureBuffer> video(double time);
  /// The sound of a stretch of time, in seconds; likewise.
  std::unique_ptr<AudioBuffer> audio(double from, double to);

  static bool makesPictures(const Effect &effect) {
    return effect.renderVideo != nullptr || effect.renderVideoRT != nullptr;
  }
  /// Whether the effect shows its inputs at other times than its own: those of media, and those under "Time".
  static bool movesTime(const Effect &effect);
  static bool makesSound(const Effect &effect) { return effect.renderAudio != nullptr; }
  /// Throws HostError for an effect that is declared without any render callback.
  static void checkRenders(const Effect &effect);

private:
  t_ZoHostInfo &prepare();
  std::unique_ptr<PictureBuffer> realTimeVideo(double time);
  [[nodiscard]] const std::string &fieldName(int field) const;
  [[noreturn]] void fail(double time);

  Instance instance_;
  Timeline timeline_;
  bool realTime_;
};

/// A stage as the input of the next.
class StageClip : public Clip {
public:
  explicit StageClip(Stage &stage) : stage_(stage) {}
  pic *frame(double time, int width, int height) override;
  t_ZoAudio *audio(double from, double to) override;
  bool describe(t_ZoMediaInfo &info) const override;
  void release() override;

private:
  struct Rendered {
    double time;
    std::unique_ptr<PictureBuffer> picture;
  };
  Stage &stage_;
  std::deque<Rendered> pictures_;
  ScaledPictures scaled_;
  std::deque<std::unique_ptr<AudioBuffer>> blocks_;
};

} // namespace zol::host
