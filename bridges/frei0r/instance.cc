#include "bridges/frei0r/instance.h"

#include "bridges/catalogue/catalogue.h"

#include <algorithm>
#include <cstring>

namespace zol::bridge {
namespace {

constexpr unsigned kLargest = INT16_MAX; // of a side of a picture
constexpr double kSpan = 3600;           // seconds that an effect spans: hosts do not tell

/// Red and blue change places.
void turn(const uint32_t *from, uint32_t *to, size_t count) {
  for (size_t i = 0; i < count; ++i)
    to[i] = (from[i] & 0xFF00FF00U) | (from[i] >> 16 & 0xFFU) | (from[i] & 0xFFU) << 16;
}

void copyRow(bool turned, const uint32_t *from, uint32_t *to, size_t count) {
  if (turned)
    turn(from, to, count);
  else
    std::memcpy(to, from, count * sizeof *to);
}

} // namespace

void FrameClip::show(int width, int height, _color_t *pixels) {
  record_ = {0, 0, static_cast<int16_t>(width), static_cast<int16_t>(height), pixels};
}

PluginInstance::PluginInstance(const Plugin &plugin, unsigned width, unsigned height, Caller caller)
    : plugin_(plugin), width_(width), height_(plugin.stacked ? height / 2 : height),
      step_(rowStep(caller, width)), rows_(height), redFirst_(caller == Caller::mlt), clock_(caller) {
  for (const Parameter &parameter : plugin.parameters)
    values_.push_back(parameter.standard);
  if (plugin.effect != nullptr && width_ > 0 && height_ > 0 && width_ <= kLargest && height_ <= kLargest)
    setUp();
}

void PluginInstance::setUp() {
  host::Timeline timeline;
  timeline.width = static_cast<int>(width_);
  timeline.height = static_cast<int>(height_);
  timeline.duration = kSpan;
  stage_.emplace(*plugin_.effect, catalogue().identity(), timeline, false, nullptr);
  stage_->instance().session().detach();
  for (size_t i = 0; i < plugin_.inputs.size() && i < clips_.size(); ++i)
    stage_->instance().assignInput(plugin_.inputs[i], 0, &clips_[i]);
  for (size_t i = 0; i < values_.size(); i += partsWith(plugin_.parameters, i).count)
    apply(i);
}

void PluginInstance::apply(size_t parameter) {
  if (!stage_)
    return;
  const Parts parts = partsWith(plugin_.parameters, parameter);
  const std::span<const Parameter> parameters(plugin_.parameters);
  const std::span<const Value> values(values_);
  shapes_[plugin_.parameters[parameter].field] =
      put(stage_->instance(), parameters.subspan(parts.first, parts.count),
          values.subspan(parts.first, parts.count), static_cast<int>(width_), static_cast<int>(height_));
}

/// As effects want it: blue first, without padding.
const uint32_t *PluginInstance::take(size_t input, const uint32_t *frame) {
  if (!redFirst_ && step_ == width_)
    return frame;
  taken_[input].resize(width_ * height_);
  for (size_t y = 0; y < height_; ++y)
    copyRow(redFirst_, frame + y * step_, taken_[input].data() + y * width_, width_);
  return taken_[input].data();
}

void PluginInstance::give(const uint32_t *pixels, uint32_t *frame) const {
  for (size_t y = 0; y < height_; ++y)
    copyRow(redFirst_, pixels + y * width_, frame + y * step_, width_);
  std::fill(frame + height_ * step_, frame + rows_ * step_, 0);
}

bool PluginInstance::render(double time, const uint32_t *first, const uint32_t *second, uint32_t *out) {
  if (!stage_)
    return false;
  const uint32_t *frames[] = {first, plugin_.stacked ? first + step_ * height_ : second};
  for (size_t i = 0; i < std::size(frames) && i < plugin_.inputs.size(); ++i) {
    if (frames[i] == nullptr)
      return false;
    const auto *pixels = reinterpret_cast<const _color_t *>(take(i, frames[i]));
    // Effects only read what an input hands out.
    clips_[i].show(static_cast<int>(width_), static_cast<int>(height_), const_cast<_color_t *>(pixels));
  }
  const auto picture = stage_->video(time);
  give(reinterpret_cast<const uint32_t *>(picture->record()->Pixels), out);
  return true;
}

void PluginInstance::update(double time, const uint32_t *first, const uint32_t *second,
                            uint32_t *out) noexcept {
  const double seconds = clock_.next(time);
  bool rendered = false;
  try {
    rendered = render(seconds, first, second, out);
  } catch (...) { // the host has no way to be told
  }
  if (!rendered)
    std::fill(out, out + rows_ * step_, 0);
}

} // namespace zol::bridge
