// Slow motion: frames between those of a clip, over the library's interpolation engine.
#pragma once

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "host/media/format.h"
#include "host/model/clip.h"
#include "host/model/rational.h"
#include "host/render/render.h"
#include "host/services/pools.h"

#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

enum class SlowMotionMethod : unsigned { mix = 0, vector = 1, object = 2 };

/// What a clip shows at any time, also between its frames. The clip answers null where it has no frame, holds
/// whole frames of one size, and outlives this one.
class SlowMotionClip : public Clip, private CSlowMotion {
public:
  struct Format {
    int width, height;
    Rational rate;
    FieldOrder fields = FieldOrder::none;
  };

  /// Throws HostError when memory runs out.
  SlowMotionClip(Clip &clip, const Format &format, SlowMotionMethod method);

  /// Always of the clip's size. Throws what the clip threw.
  pic *frame(double time, int width, int height) override;
  t_ZoAudio *audio(double, double) override { return nullptr; }
  void release() override;
  /// The same, as the caller's own; null where frame() is.
  std::unique_ptr<PictureBuffer> made(double time);

private:
  void *FrameProvider(void *sequence, unsigned frame) override;

  Clip &clip_;
  Format format_;
  SlowMotionMethod method_;
  std::exception_ptr error_;
  std::deque<std::unique_ptr<PictureBuffer>> held_;
};

struct SlowMotionPlan {
  std::string input, output;
  double factor = 2; ///< how many times longer; at least 1
  SlowMotionMethod method = SlowMotionMethod::vector;
  FieldOrder fields = FieldOrder::none;
  bool overwrite = false;
  bool noSound = false;
  EncodingChoice encoding;
  bool strict = false;             ///< whether a damaged clip is an error
  bool playlists = false;          ///< whether the clip may name other files to be read in its place
  std::optional<unsigned> threads; ///< none: one for each core
  MediaPrograms programs;
};

/// Writes the clip `factor` times as long at its own frame rate, without its sound. Throws HostError with one
/// clear line; the output appears whole or not at all. Tells what is damaged, a line each.
std::vector<std::string> slowMotion(const SlowMotionPlan &plan, const Progress &progress);

} // namespace zol::host
