// One use of a plug-in.
#pragma once

#include "bridges/frei0r/clock.h"
#include "bridges/frei0r/plugin.h"
#include "host/render/stage.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zol::bridge {

/// A picture of the host, as an input.
class FrameClip : public host::Clip {
public:
  void show(int width, int height, _color_t *pixels);
  pic *frame(double, int, int) override { return &record_; }
  t_ZoAudio *audio(double, double) override { return nullptr; }

private:
  pic record_{};
};

/// May be made, used and destroyed on any thread, one at a time.
class PluginInstance {
public:
  /// Frames are width x height; of a stacked one, that is both halves. Where the effect cannot be set up,
  /// what it renders is transparent.
  PluginInstance(const Plugin &plugin, unsigned width, unsigned height, Caller caller);

  [[nodiscard]] const Plugin &plugin() const { return plugin_; }
  [[nodiscard]] Value &value(size_t parameter) { return values_[parameter]; }
  /// Takes a value that has been changed over into the effect.
  void apply(size_t parameter);

  /// Frames are as the caller has them. What cannot be rendered is transparent black.
  void update(double time, const uint32_t *first, const uint32_t *second, uint32_t *out) noexcept;

private:
  void setUp();
  const uint32_t *take(size_t input, const uint32_t *frame);
  void give(const uint32_t *pixels, uint32_t *frame) const;
  bool render(double time, const uint32_t *first, const uint32_t *second, uint32_t *out);

  const Plugin &plugin_;
  size_t width_, height_; // of one input
  size_t step_, rows_;    // of the host's frame
  bool redFirst_;
  std::vector<Value> values_;
  std::map<int, std::unique_ptr<host::Shape>> shapes_;
  std::array<FrameClip, 2> clips_;
  std::array<std::vector<uint32_t>, 2> taken_;
  Clock clock_;
  std::optional<host::Stage> stage_;
};

} // namespace zol::bridge
