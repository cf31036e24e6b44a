// One use of a sound plug-in. What runs while sound plays allocates nothing and waits for nothing.
#pragma once

#include "bridges/sound/plugin.h"
#include "frame/zol.h"

#include <array>
#include <memory>
#include <vector>

namespace zol::bridge {

/// What an effect sees of its host while sound plays: `host` is first, so that a context leads back here.
struct SoundHost {
  t_ZoHostInfo host{};
  const SoundPlugin *plugin = nullptr;
  std::array<t_ZoAudio, 2> inputs{};
  t_ZoAudio output{};
  const double *values = nullptr; ///< one a control
};

class SoundInstance {
public:
  static constexpr unsigned kChannels = 2;

  /// Throws std::bad_alloc.
  SoundInstance(const SoundPlugin &plugin, double rate);

  /// From silence: the clock starts anew.
  void start();

  /// Renders `frames` frames, any number. `in` has two channels an input, `out` two; any of them may be the
  /// same memory. A control that has changed is faded over to within a hundredth of a second; a progress
  /// moves over the block. Values beyond a control's range are its nearer end, what is no number its default.
  void run(size_t frames, const float *const *in, float *const *out, const float *const *controls);

private:
  static constexpr size_t kChunk = 512; // frames that are rendered at once

  [[nodiscard]] bool isTransition() const;
  void take(const float *const *controls);
  void fetch(size_t first, size_t frames, const float *const *in);
  void render(size_t frames, const std::vector<double> &values, std::vector<float> &to, double from,
              double upto);

  const SoundPlugin &plugin_;
  double rate_;
  SoundHost host_;
  std::vector<double> wanted_, now_, next_;
  std::array<std::vector<float>, 2> heard_; // interleaved
  std::vector<float> rendered_, faded_;
  double progress_ = 0;
  uint64_t frame_ = 0; // since the start
  size_t fadeFrames_, fadeLeft_ = 0;
  bool started_ = false;
};

} // namespace zol::bridge
