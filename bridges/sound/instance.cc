#include "bridges/sound/instance.h"

#include <algorithm>
#include <cmath>

namespace zol::bridge {
namespace {

constexpr double kFadeSeconds = 0.01;

SoundHost &here(t_ZoHostInfo *host) { return *reinterpret_cast<SoundHost *>(host); }

// ---- Services: what sound effects call, without a session behind it ----

void message(t_ZoHostInfo *, const char *) {}
int errorCountReport(t_ZoHostInfo *, int, int, int) { return 1; }
int isAborted(t_ZoHostInfo *) { return 0; }

double valueOf(t_ZoHostInfo *host, int field, int item) {
  const SoundHost &at = here(host);
  for (size_t i = 0; i < at.plugin->controls.size(); ++i)
    if (const Control &control = at.plugin->controls[i];
        control.kind != Control::Kind::progress && control.field == field && control.item == item)
      return at.values[i];
  return 0;
}

long double paramGetFloat(t_ZoHostInfo *host, int field, int item, double) {
  return valueOf(host, field, item);
}

int paramGetInt(t_ZoHostInfo *host, int field, int item) {
  return static_cast<int>(std::lround(valueOf(host, field, item)));
}

int dataFieldItemCount(t_ZoHostInfo *host, int field) {
  const auto &inputs = here(host).plugin->inputs;
  return static_cast<int>(std::count(inputs.begin(), inputs.end(), field));
}

/// The item-th input of that field.
void *inputGetPic(t_ZoHostInfo *host, int field, int item) {
  SoundHost &at = here(host);
  for (size_t i = 0; i < at.plugin->inputs.size() && i < at.inputs.size(); ++i)
    if (at.plugin->inputs[i] == field && item-- == 0)
      return &at.inputs[i];
  return nullptr;
}

t_ZoAudio *inputGetAudio(t_ZoHostInfo *, void *input, double, double) {
  return static_cast<t_ZoAudio *>(input);
}

// The words of the format come from the context unread: they are the context's own address.
static_assert(sizeof(uintptr_t) <= 2 * sizeof(uint32_t));

void sign(SoundHost &host) {
  const auto address = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(&host));
  host.host.AudioFormat[0] = static_cast<uint32_t>(address);
  host.host.AudioFormat[1] = static_cast<uint32_t>(address >> 32);
}

t_ZoAudio *audioCreate(double, double, unsigned low, unsigned high) {
  return &reinterpret_cast<SoundHost *>(static_cast<uintptr_t>(uint64_t{high} << 32 | low))->output;
}

constexpr t_ZoServices kServices = [] {
  t_ZoServices table{};
  table.Message = message;
  table.ErrorCountReport = errorCountReport;
  table.IsAborted = isAborted;
  table.ParamGetFloat = paramGetFloat;
  table.ParamGetInt = paramGetInt;
  table.DataFieldItemCount = dataFieldItemCount;
  table.InputGetPic = inputGetPic;
  table.InputGetAudio = inputGetAudio;
  table.AudioCreate = audioCreate;
  return table;
}();

} // namespace

SoundInstance::SoundInstance(const SoundPlugin &plugin, double rate)
    : plugin_(plugin), rate_(rate),
      fadeFrames_(static_cast<size_t>(std::max(1.0, std::min(rate, 1e6) * kFadeSeconds))) {
  for (const Control &control : plugin.controls)
    wanted_.push_back(control.standard);
  now_ = next_ = wanted_;
  for (auto &samples : heard_)
    samples.resize(kChunk * kChannels);
  rendered_.resize(kChunk * kChannels);
  faded_.resize(kChunk * kChannels);
  host_.plugin = &plugin;
  host_.host.Identity = "Halvenor";
  host_.host.Services = &kServices;
  host_.host.FrameRate = 25;
  host_.host.PixelAspect = 1;
  host_.host.BitsPerPixel = 32;
  sign(host_);
}

/// A transition's progress is its last control.
bool SoundInstance::isTransition() const {
  return !plugin_.controls.empty() && plugin_.controls.back().kind == Control::Kind::progress;
}

void SoundInstance::start() {
  frame_ = 0;
  fadeLeft_ = 0;
  started_ = false;
}

void SoundInstance::take(const float *const *controls) {
  for (size_t i = 0; i < plugin_.controls.size(); ++i) {
    const Control &control = plugin_.controls[i];
    const double told = controls[i] == nullptr ? control.standard : double{*controls[i]};
    const double value = std::isnan(told) ? control.standard : std::clamp(told, control.least, control.most);
    wanted_[i] = control.kind == Control::Kind::choice ? std::round(value) : value;
  }
}

void SoundInstance::fetch(size_t first, size_t frames, const float *const *in) {
  for (size_t input = 0; input < plugin_.inputs.size() && input < heard_.size(); ++input) {
    float *to = heard_[input].data();
    for (size_t i = 0; i < frames; ++i)
      for (size_t c = 0; c < kChannels; ++c)
        to[i * kChannels + c] = in[input * kChannels + c][first + i];
    host_.inputs[input] = {{}, static_cast<uint32_t>(frames), static_cast<uint32_t>(rate_), kChannels, to};
  }
}

/// Of a transition the block is where its progress lies, in a clip of one second.
void SoundInstance::render(size_t frames, const std::vector<double> &values, std::vector<float> &to,
                           double from, double upto) {
  std::fill_n(to.begin(), frames * kChannels, 0.0F);
  t_ZoHostInfo &host = host_.host;
  const auto second = [&](uint64_t frame) { return static_cast<double>(frame) / rate_; };
  host.BlockStart = isTransition() ? from : second(frame_);
  host.BlockEnd = isTransition() ? upto : second(frame_ + frames);
  host.ClipStart = 0;
  host.ClipEnd = 1;
  host_.values = values.data();
  host_.output = {{}, static_cast<uint32_t>(frames), static_cast<uint32_t>(rate_), kChannels, to.data()};
  if (plugin_.effect->renderAudio(&host) == nullptr)
    std::fill_n(to.begin(), frames * kChannels, 0.0F);
}

void SoundInstance::run(size_t frames, const float *const *in, float *const *out,
                        const float *const *controls) {
  take(controls);
  const double progress = isTransition() ? wanted_.back() : 0;
  if (!started_) {
    now_ = wanted_;
    progress_ = progress;
    started_ = true;
  }
  const double before = progress_;
  const auto progressAt = [&](size_t frame) {
    return before + (progress - before) * static_cast<double>(frame) / static_cast<double>(frames);
  };
  for (size_t first = 0; first < frames;) {
    if (fadeLeft_ == 0 && !std::equal(now_.begin(), now_.end() - (isTransition() ? 1 : 0), wanted_.begin())) {
      next_ = wanted_;
      fadeLeft_ = fadeFrames_;
    }
    const size_t count = std::min({frames - first, kChunk, fadeLeft_ == 0 ? kChunk : fadeLeft_});
    fetch(first, count, in);
    render(count, now_, rendered_, progressAt(first), progressAt(first + count));
    if (fadeLeft_ > 0) {
      render(count, next_, faded_, progressAt(first), progressAt(first + count));
      for (size_t i = 0; i < count * kChannels; ++i) {
        const size_t framesLeft = fadeLeft_ - i / kChannels;
        const float left = static_cast<float>(framesLeft) / static_cast<float>(fadeFrames_);
        rendered_[i] = faded_[i] + (rendered_[i] - faded_[i]) * left;
      }
      fadeLeft_ -= count;
      if (fadeLeft_ == 0)
        now_ = next_;
    }
    for (size_t i = 0; i < count; ++i)
      for (size_t c = 0; c < kChannels; ++c)
        out[c][first + i] = rendered_[i * kChannels + c];
    first += count;
    frame_ += count;
  }
  progress_ = progress;
}

} // namespace zol::bridge
