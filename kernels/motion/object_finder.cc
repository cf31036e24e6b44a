#include "kernels/motion/object_finder.h"

#include <algorithm>
#include <cstring>

namespace zol::slomo {

Stamps::Stamps(uint32_t *marks, unsigned words, unsigned rows) : marks_(marks), words_(words), rows_(rows) {
  clear();
}

void Stamps::clear() {
  std::memset(marks_, 0, size_t{words_} * rows_ * sizeof(uint32_t));
  current_ = 0;
}

// Below the mark of a changed word and every taken word's, so that the memory may hold such marks in between.
void Stamps::begin() {
  if (++current_ == kChanged) {
    clear();
    current_ = 1;
  }
}

uint64_t ObjectFinder::bytesFor(uint64_t words) { return 2 * (words / kLeast + 1) * sizeof(uint32_t); }

ObjectFinder::ObjectFinder(const Components &components, unsigned words, unsigned rows, void *memory)
    : components_(components), words_(words), rows_(rows), order_(static_cast<uint32_t *>(memory)),
      accepted_(order_ + components.size()) {
  for (unsigned i = 0; i < components.size(); ++i) {
    order_[i] = i;
    accepted_[i] = 0;
  }
  std::sort(order_, order_ + components.size(), [&](uint32_t i, uint32_t j) {
    const Component &a = components[i], &b = components[j];
    return a.key != b.key ? a.key < b.key : a.data.count < b.data.count;
  });
}

bool ObjectFinder::find(uint32_t key, const ObjectBox &sought, unsigned x, unsigned y, int *vec,
                        Stamps &stamps, Place *stack, size_t capacity) {
  const int64_t ring = accept(key, sought, x, y);
  Place met;
  if (ring < 0 || !walk(static_cast<int>(x), static_cast<int>(y), ring, met))
    return false;
  const unsigned label = components_.label(static_cast<unsigned>(met.x), static_cast<unsigned>(met.y));
  const Component &found = components_[label - 1];
  vec[0] = static_cast<int>(topX(met, found, stamps, stack, capacity)) - static_cast<int>(x);
  vec[1] = static_cast<int>(found.data.minY) - static_cast<int>(y);
  return true;
}

/// Notes the components that suit and answers the first ring that can meet one of them, -1 without any.
int64_t ObjectFinder::accept(uint32_t key, const ObjectBox &sought, unsigned x, unsigned y) {
  ++query_;
  const uint32_t *end = order_ + components_.size();
  const unsigned most = sought.count + sought.count / 16;
  const uint32_t *i = std::partition_point(order_, order_ + components_.size(), [&](uint32_t index) {
    const Component &c = components_[index];
    return c.key != (key | 1) ? c.key < (key | 1) : c.data.count < sought.count - sought.count / 16;
  });
  int64_t ring = -1;
  for (; i != end && components_[*i].key == (key | 1) && components_[*i].data.count <= most; ++i) {
    const ObjectBox &box = components_[*i].data;
    if (!isSameObject(box, sought))
      continue;
    accepted_[*i] = query_;
    const auto outside = [](int64_t at, int64_t from, int64_t to) {
      return std::max({from - at, at - to, int64_t{0}});
    };
    const int64_t away = std::max(outside(x, box.minX, box.maxX), outside(y, box.minY, box.maxY));
    ring = ring < 0 ? away : std::min(ring, away);
  }
  return ring;
}

bool ObjectFinder::accepted(unsigned x, unsigned y) const {
  const uint32_t label = components_.label(x, y);
  return label != 0 && accepted_[label - 1] == query_;
}

bool ObjectFinder::walk(int x, int y, int64_t ring, Place &met) const {
  const int right = static_cast<int>(words_) - 1, bottom = static_cast<int>(rows_) - 1;
  const auto meets = [&](int px, int py) {
    if (!accepted(static_cast<unsigned>(px), static_cast<unsigned>(py)))
      return false;
    met = {static_cast<int16_t>(px), static_cast<int16_t>(py)};
    return true;
  };
  for (int r = static_cast<int>(ring); r <= std::min(right, bottom) + 1; ++r) {
    const int x0 = std::max(x - r, 0), y0 = std::max(y - r, 0);
    if (y - r >= 0)
      for (int px = x0; px <= std::min(x + r, right); ++px)
        if (meets(px, y - r))
          return true;
    if (x + r <= right)
      for (int py = std::max(y - r + 1, 0); py <= std::min(y + r, bottom); ++py)
        if (meets(x + r, py))
          return true;
    if (y + r <= bottom)
      for (int px = std::min(x + r - 1, right); px >= x0; --px)
        if (meets(px, y + r))
          return true;
    if (x - r >= 0)
      for (int py = std::min(y + r - 1, bottom); py >= y0; --py)
        if (meets(x - r, py))
          return true;
  }
  return false;
}

/// What topX is for a fill that starts at `start`: its order matters, so it is the same fill,
/// ended where nothing more can change.
unsigned ObjectFinder::topX(Place start, const Component &found, Stamps &stamps, Place *stack,
                            size_t capacity) const {
  const auto x = static_cast<unsigned>(start.x), y = static_cast<unsigned>(start.y);
  const uint32_t label = components_.label(x, y);
  unsigned leftmost = x, top = y;
  stamps.begin();
  stamps.mark(x, y);
  bool settled = top == found.firstY && leftmost <= found.firstX;
  const auto take = [&](unsigned nx, unsigned ny) {
    if (settled || components_.label(nx, ny) != label || !stamps.mark(nx, ny))
      return false;
    if (ny <= top) {
      top = ny;
      leftmost = std::min(leftmost, nx);
      settled = top == found.firstY && leftmost <= found.firstX;
    }
    return true;
  };
  floodFill(stack, capacity, words_, rows_, x, y, take);
  return leftmost;
}

} // namespace zol::slomo
