#include "kernels/motion/exposure.h"

#include "kernels/motion/frame_average.h"
#include "kernels/motion/words.h"

#include <algorithm>

namespace zol {
namespace {

/// The weight of moments from number `first` on to `last`, not included, of `count` that have 256 in all.
uint16_t weightOf(int first, int last, int count) {
  return static_cast<uint16_t>(256 * last / count - 256 * first / count);
}

} // namespace

Exposures Exposures::of(const pic *const *pictures, int count) {
  Exposures exposures;
  int times[kMost] = {};
  for (int i = 0; i < count; ++i) {
    const pic **end = exposures.pictures + exposures.count;
    const auto place = std::find(exposures.pictures, end, pictures[i]) - exposures.pictures;
    if (place == exposures.count)
      exposures.pictures[exposures.count++] = pictures[i];
    ++times[place];
  }
  for (int i = 0, before = 0; i < exposures.count; before += times[i++])
    exposures.weights[i] = weightOf(before, before + times[i], count);
  return exposures;
}

bool FrameRun::isEven() const {
  const pic *first = nullptr;
  return std::all_of(frames, frames + count, [&](const pic *frame) {
    if (first == nullptr)
      first = frame;
    return frame == nullptr || Area::of(*frame) == Area::of(*first);
  });
}

/// From `from` on, as far as the slow motion looks; -1 where there is none.
int FrameRun::nearest(int from, int step) const {
  constexpr int kAttempts = 8;
  for (int i = 0; i < kAttempts && from >= 0 && from < count; ++i, from += step)
    if (frames[from] != nullptr)
      return from;
  return -1;
}

Moment FrameRun::at(double position) const {
  const int frame = static_cast<int>(position);
  const int before = nearest(frame, -1), after = nearest(frame + 1, 1);
  if (before < 0 || after < 0)
    return {before >= 0 ? frames[before] : after >= 0 ? frames[after] : nullptr, nullptr, 0};
  const auto weight = static_cast<unsigned>((position - before) * slomo::kWeightOne / (after - before));
  if (weight == 0 || frames[before] == frames[after])
    return {frames[before], nullptr, 0};
  return {frames[before], frames[after], weight};
}

MomentAverage::MomentAverage(int width, int height)
    : width_(width), height_(height),
      motion_({static_cast<unsigned>(width), static_cast<unsigned>(height), kBlock, kBlock}),
      before_(static_cast<size_t>(place(height))), after_(static_cast<size_t>(place(height))),
      made_(static_cast<size_t>(place(height))), sums_(static_cast<size_t>(place(height))) {}

slomo::FieldPair MomentAverage::pair() const {
  return {&before_[0].b, &after_[0].b, static_cast<unsigned>(width_), static_cast<unsigned>(height_),
          static_cast<size_t>(width_) * sizeof(_color_t)};
}

void MomentAverage::loadRow(const Moment &moment, int y) {
  const auto multiply = ZOL_SELECT(premultiply);
  multiply(moment.before->Pixels + place(y), before_.data() + place(y), width_);
  if (moment.after != nullptr)
    multiply(moment.after->Pixels + place(y), after_.data() + place(y), width_);
}

void MomentAverage::make(const Moment &moment) {
  if (moment.after != nullptr)
    motion_.makeField(pair(), moment.weight, &made_[0].b);
}

void MomentAverage::addRow(const Moment &moment, int y, int i, int count) {
  const _color_t *pixels = (moment.after != nullptr ? made_ : before_).data();
  WidePixel *sums = sums_.data() + place(y);
  if (i == 0)
    std::fill_n(sums, width_, WidePixel{});
  ZOL_SELECT(addWeighted)(pixels + place(y), weightOf(i, i + 1, count), sums, width_);
}

void MomentAverage::writeRow(int y, const _color_t *hidden, _color_t *out) const {
  ZOL_SELECT(averageOfSums)(sums_.data() + place(y), hidden, out, width_);
}

} // namespace zol
