// Frames of clips at any time, over the engine.

#include "frame/retime.h"

#include "Runtimes/slomo_sdk/mySM.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace zol {
namespace {

constexpr double kNearFrame = 1e-4; // of a frame
constexpr double kMostFrames = 4e9; // the engine counts them in 32 bits

bool isRate(double rate) { return std::isfinite(rate) && rate > 0 && rate <= 1e6; }

template <class Choice> Choice choice(t_ZoHostInfo *host, int field, Choice last) {
  const int value = paramInt(host, field);
  return value >= 0 && value <= static_cast<int>(last) ? static_cast<Choice>(value) : Choice{};
}

/// The host's frame if it has the context's size, else null.
pic *fetchSized(t_ZoHostInfo *host, void *input, double time) {
  pic *picture = host->Services->PicGetSized(host, input, time);
  const bool fits = picture != nullptr && picture->Width == host->Width && picture->Height == host->Height;
  return fits ? picture : nullptr;
}

/// Number of the frame that is shown at a time.
double frameAt(const Footage &footage, double time) { return std::floor(time * footage.rate + kNearFrame); }

bool isNearFrame(const Footage &footage, double time) {
  const double position = time * footage.rate;
  return std::abs(position - std::round(position)) <= kNearFrame;
}

/// The engine over frames of one size. Pictures stay the host's.
class Engine : public mySM {
public:
  Engine(t_ZoHostInfo *host, const Footage &footage, int width, int height)
      : mySM(host, fetchSized, footage.input, footage.rate, static_cast<unsigned>(width),
             static_cast<unsigned>(height), 0, 0),
        ready_(SetSequence(footage.input, static_cast<unsigned>(width), static_cast<unsigned>(height),
                           footage.rate, 0, footage.interlaced ? 1 : 0, footage.topFirst ? 0 : 1, 0) == 0) {}
  ~Engine() {
    while (m_pCache != nullptr)
      std::free(std::exchange(m_pCache, m_pCache->next));
  }
  Engine(const Engine &) = delete;
  Engine &operator=(const Engine &) = delete;
  explicit operator bool() const { return ready_; }

  const _color_t *at(double time, Between between) {
    return static_cast<const _color_t *>(GetFrameToTime(time, static_cast<unsigned>(between) - 1));
  }
  /// The same, made in a picture of the engine's size where it is made at all: new memory costs more than
  /// mixing.
  const _color_t *at(double time, Between between, const pic &made) {
    if (m_bInterlaced != 0 && made.Height % 2 != 0) // the engine leaves the last row
      std::fill_n(made.Pixels + ptrdiff_t{made.Height - 1} * made.Width, made.Width, _color_t{});
    auto *pixels = reinterpret_cast<unsigned char *>(made.Pixels);
    unsigned char *own = std::exchange(m_pOutFrame, pixels);
    const _color_t *frame = at(time, between);
    m_pOutFrame = own;
    return frame;
  }

private:
  bool ready_;
};

/// A new picture of the context's size; null after a message when it cannot be had.
pic *createFrame(t_ZoHostInfo *host) {
  pic *out = host->Services->PicCreate(host->Width, host->Height);
  if (out == nullptr)
    showMemoryError(host);
  return out;
}

/// Copies the pixels, of the picture's size, unless they are the picture's own. Polls the host for every row.
bool copyInto(t_ZoHostInfo *host, const pic &out, const _color_t *pixels) {
  const int width = out.Width;
  return forEachRow(host, out.Height, [&](int y) {
    if (pixels != out.Pixels)
      std::copy_n(pixels + ptrdiff_t{y} * width, width, out.Pixels + ptrdiff_t{y} * width);
  });
}

/// A new picture of the context's size from pixels of another size.
pic *resampled(t_ZoHostInfo *host, const _color_t *pixels, int width, int height) {
  constexpr int kMode = 2;
  OwnedPic out(host, createFrame(host));
  const bool done = out && host->Services->PicResample(host, pixels, width, width, height, out->Pixels,
                                                       host->Width, host->Width, host->Height, kMode) != 0;
  return done && !aborted(host) ? out.release() : nullptr;
}

/// Of fields, which must not be scaled into each other before they are told apart: at the clip's own size.
pic *retimeAtOwnSize(t_ZoHostInfo *host, const Footage &footage, double time) {
  const int width = footage.width, height = footage.height;
  if (isNearFrame(footage, time)) {
    t_ZoHostInfo own = *host;
    own.Width = width;
    own.Height = height;
    const pic *frame = fetchSized(&own, footage.input, frameAt(footage, time) / footage.rate);
    return frame != nullptr ? resampled(host, frame->Pixels, width, height) : nullptr;
  }
  Engine engine(host, footage, width, height);
  if (!engine) {
    showMemoryError(host);
    return nullptr;
  }
  const _color_t *made = engine.at(time, footage.between);
  return made != nullptr ? resampled(host, made, width, height) : nullptr;
}

} // namespace

Footage readFootage(t_ZoHostInfo *host, void *input, int beyondField, int methodField, int fieldsField) {
  t_ZoMediaInfo info;
  mediaGetInfo(host, input, info);
  const FrameFields fields = choice(host, fieldsField, FrameFields::bottomFirst);
  Footage footage = {};
  footage.input = input;
  footage.rate = isRate(info.Rate) ? info.Rate : isRate(host->FrameRate) ? host->FrameRate : 25;
  footage.duration = std::isfinite(info.Duration) ? std::max(0.0, info.Duration) : 0;
  footage.width = std::max(0, info.Width);
  footage.height = std::max(0, info.Height);
  footage.beyond = choice(host, beyondField, Beyond::loop);
  footage.between = choice(host, methodField, Between::objects);
  footage.interlaced =
      fields == FrameFields::asTheMediaSays ? info.Interlaced != 0 : fields != FrameFields::progressive;
  footage.topFirst =
      fields == FrameFields::asTheMediaSays ? info.TopFieldFirst != 0 : fields == FrameFields::topFirst;
  return footage;
}

std::optional<double> timeWithin(const Footage &footage, double time) {
  const double most = kMostFrames / footage.rate, end = footage.duration > 0 ? footage.duration : most;
  time = within(time, -most, most);
  if (time >= 0 && time < end)
    return time;
  switch (footage.beyond) {
  case Beyond::transparent: return std::nullopt;
  case Beyond::loop:
    if (const double again = time - std::floor(time / end) * end; again >= 0 && again < end)
      return again;
    return 0;
  case Beyond::hold: break;
  }
  const double frames = std::max(1.0, std::ceil(end * footage.rate - kNearFrame));
  return time < 0 ? 0 : (frames - 1) / footage.rate;
}

pic *wholeFrame(t_ZoHostInfo *host, const Footage &footage, double time) {
  return host->Services->PicGetSized(host, footage.input, frameAt(footage, time) / footage.rate);
}

pic *createTransparent(t_ZoHostInfo *host) {
  OwnedPic out(host, createFrame(host));
  if (!out)
    return nullptr;
  const int width = out->Width;
  const bool done = forEachRow(
      host, out->Height, [&](int y) { std::fill_n(out->Pixels + ptrdiff_t{y} * width, width, _color_t{}); });
  return done ? out.release() : nullptr;
}

pic *retime(t_ZoHostInfo *host, const Footage &footage, double time) {
  const std::optional<double> shown = timeWithin(footage, time);
  if (!shown)
    return createTransparent(host);
  const bool scales = footage.width > 0 && footage.height > 0 &&
                      (footage.width != host->Width || footage.height != host->Height);
  if (footage.between != Between::wholeFrames && footage.interlaced && scales)
    return retimeAtOwnSize(host, footage, *shown);
  if (footage.between == Between::wholeFrames || isNearFrame(footage, *shown)) {
    const pic *frame = wholeFrame(host, footage, *shown);
    return frame != nullptr ? copyOf(host, frame) : nullptr;
  }
  Engine engine(host, footage, host->Width, host->Height);
  if (!engine) {
    showMemoryError(host);
    return nullptr;
  }
  OwnedPic out(host, createFrame(host));
  const _color_t *made = out ? engine.at(*shown, footage.between, *out) : nullptr;
  return made != nullptr && copyInto(host, *out, made) ? out.release() : nullptr;
}

} // namespace zol
