#include "effects/filters/exposure.h"

#include "frame/canvas.h"
#include "kernels/motion/frame_average.h"
#include "kernels/motion/pair_motion.h"
#include "kernels/motion/words.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

/// Frames of one input. What cannot be had is reported; once the host has had enough nothing is fetched.
class Fetcher {
public:
  Fetcher(t_ZoHostInfo *host, void *input) : host_(host), input_(input) {}

  const pic *at(double time) {
    if (stopped_)
      return nullptr;
    const pic *frame = host_->Services->PicGetSized(host_, input_, time);
    if (frame == nullptr)
      stopped_ = host_->Services->ErrorCountReport(host_, 0, 0, ++failures_) != 0;
    return frame;
  }

private:
  t_ZoHostInfo *host_;
  void *input_;
  int failures_ = 0;
  bool stopped_ = false;
};

/// The weight of number i of `count` equal ones, of 256 in all.
uint16_t weightOf(int i, int count) { return static_cast<uint16_t>(256 * (i + 1) / count - 256 * i / count); }

pic *copyOfFrame(t_ZoHostInfo *host, const pic *frame) { return copyOf(host, const_cast<pic *>(frame)); }

// ---- As they are ----

struct Exposures {
  const pic *pictures[kMostExposures];
  uint16_t weights[kMostExposures];
  int count = 0;
};

/// Like pictures are one, of the weight of all of them.
Exposures gathered(const pic *const *pictures, int count) {
  Exposures exposures;
  int times[kMostExposures] = {};
  for (int i = 0; i < count; ++i) {
    const pic **end = exposures.pictures + exposures.count;
    const auto place = std::find(exposures.pictures, end, pictures[i]) - exposures.pictures;
    if (place == exposures.count)
      exposures.pictures[exposures.count++] = pictures[i];
    ++times[place];
  }
  for (int i = 0, before = 0; i < exposures.count; before += times[i++])
    exposures.weights[i] = static_cast<uint16_t>(256 * (before + times[i]) / count - 256 * before / count);
  return exposures;
}

pic *average(t_ZoHostInfo *host, const Exposures &exposures) {
  if (exposures.count == 1)
    return copyOfFrame(host, exposures.pictures[0]);
  Area area = Area::of(*exposures.pictures[0]);
  for (int i = 1; i < exposures.count; ++i)
    area = unionOf(area, Area::of(*exposures.pictures[i]));
  OwnedPic out(host, createAt(host, area));
  if (!out)
    return nullptr;
  const auto width = static_cast<size_t>(area.width());
  const Scratch<_color_t> padded(width * static_cast<size_t>(exposures.count));
  if (!padded) {
    showMemoryError(host);
    return nullptr;
  }
  const auto averageRow = ZOL_SELECT(averageRows);
  const bool done = forEachRow(host, area.height(), [&](int row) {
    const _color_t *rows[kMostExposures];
    for (int i = 0; i < exposures.count; ++i)
      rows[i] = canvasRow(area, exposures.pictures[i], area.top + row,
                          padded.data() + static_cast<size_t>(i) * width);
    averageRow(rows, exposures.weights, exposures.count, out->Pixels + ptrdiff_t{row} * area.width(),
               area.width());
  });
  return done ? out.release() : nullptr;
}

pic *expose(t_ZoHostInfo *host, Fetcher &fetcher, const Shutter &shutter) {
  const pic *pictures[kMostExposures];
  int count = 0;
  for (int i = 0; i < shutter.samples; ++i)
    if (const pic *picture = fetcher.at(shutter.time(i, host->FrameTime, host->FrameRate));
        picture != nullptr)
      pictures[count++] = picture;
  return count != 0 ? average(host, gathered(pictures, count)) : nullptr;
}

// ---- Between frames ----

/// A moment between two frames, or at one, the other then being null.
struct Moment {
  const pic *before, *after;
  unsigned weight; ///< of the one after, 32768 = 1.0

  [[nodiscard]] bool isOfPair(const Moment &other) const {
    return before == other.before && after == other.after;
  }
};

/// The frames around the time that a shutter is open.
class FrameRun {
public:
  static constexpr int kMost = 20; ///< of the longest shutter, one more and one to move towards

  /// `position` is the first sample's, in frames.
  FrameRun(t_ZoHostInfo *host, Fetcher &fetcher, const Shutter &shutter, double position)
      : open_(shutter.open), samples_(shutter.samples), part_(position - std::floor(position)) {
    const int last = static_cast<int>(offset(samples_ - 1)) + 1;
    for (count_ = 0; count_ <= last; ++count_)
      frames_[count_] = fetcher.at((std::floor(position) + count_) / host->FrameRate);
  }

  /// Whether all that can be had lie alike.
  [[nodiscard]] bool isEven() const {
    const auto *const end = frames_ + count_;
    const auto *const first = std::find_if(frames_, end, [](const pic *frame) { return frame != nullptr; });
    return std::all_of(first, end, [=](const pic *frame) {
      return frame == nullptr || Area::of(*frame) == Area::of(**first);
    });
  }

  /// Writes the samples' moments that can be had; answers their number.
  int moments(Moment *to) const {
    int count = 0;
    for (int i = 0; i < samples_; ++i)
      if (const Moment moment = at(offset(i)); moment.before != nullptr)
        to[count++] = moment;
    return count;
  }

private:
  /// Frames from the first one.
  [[nodiscard]] double offset(int sample) const { return part_ + open_ * sample / samples_; }

  /// As far from where it is wanted as the slow motion looks.
  [[nodiscard]] int nearest(int from, int step) const {
    constexpr int kAttempts = 8;
    for (int i = 0; i < kAttempts && from >= 0 && from < count_; ++i, from += step)
      if (frames_[from] != nullptr)
        return from;
    return -1;
  }

  [[nodiscard]] Moment at(double position) const {
    const int before = nearest(static_cast<int>(position), -1),
              after = nearest(static_cast<int>(position) + 1, 1);
    if (before < 0 || after < 0)
      return {before >= 0 ? frames_[before] : after >= 0 ? frames_[after] : nullptr, nullptr, 0};
    const double weight = (position - before) * slomo::kWeightOne / (after - before);
    if (weight < 1 || frames_[before] == frames_[after])
      return {frames_[before], nullptr, 0};
    return {frames_[before], frames_[after], static_cast<unsigned>(weight)};
  }

  double open_;
  int samples_;
  double part_; ///< of a frame, that the first sample lies behind the first frame
  const pic *frames_[kMost];
  int count_;
};

/// Sums up moments of frames of one size.
class Exposure {
public:
  Exposure(int width, int height)
      : width_(width), height_(height), size_(static_cast<size_t>(width) * static_cast<size_t>(height)),
        motion_({static_cast<unsigned>(width), static_cast<unsigned>(height), kBlock, kBlock}),
        before_(size_), after_(size_), made_(size_), sums_(size_) {}
  explicit operator bool() const { return motion_ && before_ && after_ && made_ && sums_; }

  /// All of them; false when the host wants to stop.
  bool add(t_ZoHostInfo *host, const Moment *moments, int count) {
    std::fill_n(sums_.data(), size_, WidePixel{});
    for (int i = 0; i < count; ++i) {
      if ((i == 0 || !moments[i].isOfPair(moments[i - 1])) && !load(host, moments[i]))
        return false;
      const _color_t *pixels = before_.data();
      if (moments[i].after != nullptr) {
        motion_.makeField(pair(), moments[i].weight, &made_[0].b);
        pixels = made_.data();
      }
      const auto addRow = ZOL_SELECT(addWeighted);
      const bool added = forEachRow(host, height_, [&](int y) {
        addRow(pixels + place(y), weightOf(i, count), sums_.data() + place(y), width_);
      });
      if (!added)
        return false;
    }
    return true;
  }

  [[nodiscard]] bool write(t_ZoHostInfo *host, const pic &hidden, _color_t *out) const {
    const auto write = ZOL_SELECT(averageOfSums);
    return forEachRow(host, height_, [&](int y) {
      write(sums_.data() + place(y), hidden.Pixels + place(y), out + place(y), width_);
    });
  }

private:
  static constexpr unsigned kBlock = 16;

  [[nodiscard]] ptrdiff_t place(int y) const { return ptrdiff_t{y} * width_; }
  [[nodiscard]] slomo::FieldPair pair() const {
    return {&before_[0].b, &after_[0].b, static_cast<unsigned>(width_), static_cast<unsigned>(height_),
            static_cast<size_t>(width_) * sizeof(_color_t)};
  }

  /// Takes in a moment's frames and how the one moves into the other.
  bool load(t_ZoHostInfo *host, const Moment &moment) {
    const auto multiplyRow = ZOL_SELECT(premultiply);
    const auto multiplied = [&](const pic &frame, _color_t *to) {
      return forEachRow(host, height_,
                        [&](int y) { multiplyRow(frame.Pixels + place(y), to + place(y), width_); });
    };
    if (!multiplied(*moment.before, before_.data()))
      return false;
    if (moment.after == nullptr)
      return true;
    if (!multiplied(*moment.after, after_.data()))
      return false;
    motion_.begin(pair());
    return forEachRow(host, static_cast<int>(motion_.blockRows()),
                      [&](int row) { motion_.searchRow(static_cast<unsigned>(row)); });
  }

  int width_, height_;
  size_t size_;
  slomo::PairMotion motion_;
  Scratch<_color_t> before_, after_, made_; ///< colours times alpha
  Scratch<WidePixel> sums_;
};

pic *exposeMoments(t_ZoHostInfo *host, const Moment *moments, int count) {
  const pic &first = *moments[0].before;
  const bool still = std::all_of(moments, moments + count, [&](const Moment &moment) {
    return moment.before == &first && moment.after == nullptr;
  });
  if (still)
    return copyOfFrame(host, &first);
  OwnedPic out(host, createAt(host, Area::of(first)));
  if (!out)
    return nullptr;
  Exposure exposure(first.Width, first.Height);
  if (!exposure) {
    showMemoryError(host);
    return nullptr;
  }
  return exposure.add(host, moments, count) && exposure.write(host, first, out->Pixels) ? out.release()
                                                                                        : nullptr;
}

} // namespace

pic *exposeInput(t_ZoHostInfo *host, void *input, const Shutter &shutter) {
  Fetcher fetcher(host, input);
  return expose(host, fetcher, shutter);
}

pic *exposeBetweenFrames(t_ZoHostInfo *host, void *input, const Shutter &shutter) {
  Fetcher fetcher(host, input);
  constexpr double kSlack = 1e-6; // a sample that should lie at a frame is not before it
  const double first = shutter.time(0, host->FrameTime, host->FrameRate);
  const double position = first * host->FrameRate + kSlack;
  if (!std::isfinite(position))
    return expose(host, fetcher, shutter);
  const FrameRun run(host, fetcher, shutter, position);
  if (!run.isEven())
    return expose(host, fetcher, shutter);
  Moment moments[kMostExposures];
  const int count = run.moments(moments);
  return count != 0 ? exposeMoments(host, moments, count) : nullptr;
}

} // namespace zol
