// Object motion: changed areas are taken for objects, searched in the frame before the time and pasted where
// they stand in between; what is small or cannot be found is mixed in place.
//
// Two scans give the same bytes. The quick one rests on this: a word that was mixed is no longer marked as
// changed, so an object that is mixed in place takes all other changed words of its component with it, and
// the mixed frame needs only the moves. Where a mixed word happens to equal the mark, the scan that looks at
// every word is made instead, as it is when no memory can be had for the search.

#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/blend.h"
#include "kernels/motion/components.h"
#include "kernels/motion/object_finder.h"

#include <algorithm>
#include <optional>

using namespace zol;
using slomo::Component;
using slomo::Components;
using slomo::keyOf;
using slomo::Place;
using slomo::rowOf;

/// One run of the method over one field.
class CSlowMotion::SObjectMotion {
public:
  SObjectMotion(CSlowMotion &engine, const SField &field, unsigned w)
      : engine_(engine), f_(field), w_(w), area_(uint64_t{field.words} * field.rows),
        stamps_(reinterpret_cast<uint32_t *>(engine.m_pMask), field.words, field.rows),
        stack_(reinterpret_cast<Place *>(engine.m_pFillStack)),
        list_(reinterpret_cast<Listed *>(engine.m_pObjectList)) {}

  void run() {
    const bool canSearch = reserve();
    engine_.Mix(f_, w_);
    if (canSearch && !mixedHasMark()) {
      scanComponents();
    } else {
      for (size_t y = 0; y < f_.rows; ++y)
        ZOL_SELECT(markChanged)(f_.dst + y * f_.stride, f_.a + y * f_.stride, f_.b + y * f_.stride, f_.words);
      scanWords();
    }
    while (listed_ != 0)
      move(list_[--listed_]);
  }

private:
  struct Listed {
    int16_t x, y, dx, dy;
  };

  // ---- Memory: components of A, of B and of the changed words of B, and what the scan keeps of B's ----

  bool reserve() {
    const unsigned least = slomo::kLeastTracked;
    const uint64_t bytesA = Components::bytesFor(area_, slomo::ObjectFinder::kLeast);
    const uint64_t bytesFinder = slomo::ObjectFinder::bytesFor(area_),
                   bytesB = Components::bytesFor(area_, least);
    const uint64_t bytesMixed = (area_ / least + 1) * sizeof(uint32_t);
    auto *memory = static_cast<unsigned char *>(engine_.Scratch(
        bytesA + bytesFinder + 2 * bytesB + bytesMixed + Components::workBytesFor(area_, f_.words)));
    if (memory == nullptr)
      return false;
    const auto part = [&](uint64_t bytes) {
      void *start = memory;
      memory += bytes;
      return start;
    };
    a_.emplace(f_.words, f_.rows, slomo::ObjectFinder::kLeast, part(bytesA));
    void *finder = part(bytesFinder);
    b_.emplace(f_.words, f_.rows, least, part(bytesB));
    changed_.emplace(f_.words, f_.rows, least, part(bytesB));
    mixedFrom_ = static_cast<uint32_t *>(part(bytesMixed));
    work_ = memory;
    labelAll(*a_, f_.a);
    finder_.emplace(*a_, f_.words, f_.rows, finder);
    return true;
  }

  void labelAll(Components &components, const unsigned char *frame) {
    const auto keys = ZOL_SELECT(rowKeys);
    components.label(
        work_, [&](unsigned y, uint32_t *row) { keys(frame + size_t{y} * f_.stride, f_.words, row); },
        [](unsigned, unsigned, bool) {});
  }

  bool mixedHasMark() const {
    const auto has = ZOL_SELECT(hasMark);
    for (size_t y = 0; y < f_.rows; ++y)
      if (has(f_.dst + y * f_.stride, f_.words))
        return true;
    return false;
  }

  // ---- The quick scan ----

  void scanComponents() {
    labelAll(*b_, f_.b);
    std::fill_n(mixedFrom_, b_->size(), 0xFFFFFFFF);
    const auto keys = ZOL_SELECT(changedRowKeys);
    changed_->label(
        work_,
        [&](unsigned y, uint32_t *row) {
          keys(f_.a + size_t{y} * f_.stride, f_.b + size_t{y} * f_.stride, f_.words, row);
        },
        [&](unsigned x, unsigned y, bool first) { mixWord(keyAt(x, y), x, y, first); });

    for (unsigned i = 0; i < changed_->size(); ++i) {
      const Component &object = (*changed_)[i];
      const unsigned x = object.firstX, y = object.firstY;
      const uint32_t key = keyAt(x, y);
      if (key != 0 && mixedFrom_[b_->label(x, y) - 1] < positionOf(x, y))
        continue;
      if (!list(key, object.data, x, y))
        mixObject(i, key);
    }
  }

  uint32_t keyAt(unsigned x, unsigned y) const { return keyOf(rowOf(f_.b, f_.stride, y)[x]); }
  uint32_t positionOf(unsigned x, unsigned y) const { return y * f_.words + x; }

  /// A word of an object that is mixed in place. Of an object of key 0 only the first word is mixed and the
  /// others keep the mark of taken words.
  void mixWord(uint32_t key, unsigned x, unsigned y, bool first) {
    if (key == 0) {
      if (!first)
        rowOf(f_.dst, f_.stride, y)[x] = slomo::kTaken;
    } else if (const uint32_t component = b_->label(x, y); component != 0) {
      uint32_t &from = mixedFrom_[component - 1];
      from = std::min(from, positionOf(x, y));
    }
  }

  void mixObject(unsigned index, uint32_t key) {
    const Component &object = (*changed_)[index];
    mixWord(key, object.firstX, object.firstY, true);
    if (key != 0)
      return; // its whole component is mixed from here on
    for (unsigned y = object.data.minY; y <= object.data.maxY; ++y)
      for (unsigned x = object.data.minX; x <= object.data.maxX; ++x)
        if (changed_->label(x, y) == index + 1)
          mixWord(key, x, y, x == object.firstX && y == object.firstY);
  }

  // ---- The scan of every word ----

  void scanWords() {
    for (unsigned y = 0; y < f_.rows; ++y)
      for (unsigned x = 0; x < f_.words; ++x) {
        if (rowOf(f_.dst, f_.stride, y)[x] != slomo::kChanged)
          continue;
        SObjectData data;
        const uint32_t key = keyAt(x, y);
        const unsigned count = engine_.GetObjectData(f_.b, f_.dst, f_.words, f_.rows, f_.stride, x, y, &data);
        if (count < slomo::kLeastTracked || !list(key, data, x, y))
          mixInPlace(key, x, y);
      }
  }

  void mixInPlace(uint32_t key, unsigned x, unsigned y) {
    const size_t count = key == 0 ? 1 : fillComponent(x, y);
    if (key == 0)
      stack_[0] = {static_cast<int16_t>(x), static_cast<int16_t>(y)};
    for (size_t i = 0; i < count; ++i) {
      const auto [px, py] = stack_[i];
      rowOf(f_.dst, f_.stride, static_cast<size_t>(py))[px] =
          slomo::blendWord(rowOf(f_.a, f_.stride, static_cast<size_t>(py))[px],
                           rowOf(f_.b, f_.stride, static_cast<size_t>(py))[px], w_);
    }
  }

  /// Gathers the words of B's component at (x, y) in the fill stack and answers their number.
  size_t fillComponent(unsigned x, unsigned y) {
    const uint32_t key = keyAt(x, y);
    stamps_.begin();
    stamps_.mark(x, y);
    stack_[0] = {static_cast<int16_t>(x), static_cast<int16_t>(y)};
    size_t count = 1;
    for (size_t i = 0; i < count; ++i)
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          const unsigned nx = static_cast<unsigned>(stack_[i].x + dx),
                         ny = static_cast<unsigned>(stack_[i].y + dy);
          if (nx < f_.words && ny < f_.rows && keyAt(nx, ny) == key && stamps_.mark(nx, ny))
            stack_[count++] = {static_cast<int16_t>(nx), static_cast<int16_t>(ny)};
        }
    return count;
  }

  // ---- Objects that move ----

  /// How far an object is still from its place in B, truncated toward zero.
  int remaining(int distance) const {
    const int64_t one = slomo::kWeightOne;
    return static_cast<int>((one - w_) * distance / one);
  }

  /// Searches an object and lists it; false when it is not found or does not move. Where the same words
  /// become marked again and again the list can run full; what it cannot hold is mixed in place.
  bool list(uint32_t key, const SObjectData &data, unsigned x, unsigned y) {
    int vec[2] = {0, 0};
    const bool found = finder_ ? finder_->find(key, data, x, y, vec, stamps_, stack_, engine_.StackPlaces())
                               : engine_.FindObject(f_.a, f_.words, f_.rows, f_.stride, key, &data, x, y, vec,
                                                    engine_.m_pMask + f_.offset) != 0;
    if (!found || (remaining(vec[0]) == 0 && remaining(vec[1]) == 0) ||
        listed_ >= engine_.m_nArea / sizeof(Listed))
      return false;
    list_[listed_++] = {static_cast<int16_t>(x), static_cast<int16_t>(y), static_cast<int16_t>(vec[0]),
                        static_cast<int16_t>(vec[1])};
    return true;
  }

  /// Shows what was behind the object: A where it stands in B, B where it stood in A. Then pastes it.
  void move(Listed object) {
    const size_t count = gatherFrom(static_cast<unsigned>(object.x), static_cast<unsigned>(object.y));
    copyWords(count, f_.a, 0, 0, 0, 0);
    copyWords(count, f_.b, object.dx, object.dy, object.dx, object.dy);
    copyWords(count, f_.b, 0, 0, remaining(object.dx), remaining(object.dy));
  }

  /// The words of B's component at (x, y) from row y on, in the fill stack.
  size_t gatherFrom(unsigned x, unsigned y) {
    size_t count = 0;
    if (!componentsKnown()) {
      const size_t all = fillComponent(x, y);
      for (size_t i = 0; i < all; ++i)
        if (static_cast<unsigned>(stack_[i].y) >= y)
          stack_[count++] = stack_[i];
      return count;
    }
    const uint32_t label = b_->label(x, y);
    const SObjectData &box = (*b_)[label - 1].data;
    for (unsigned py = y; py <= box.maxY; ++py) {
      const uint32_t *labels = b_->labels(py);
      for (unsigned px = box.minX; px <= box.maxX; ++px)
        if (labels[px] == label)
          stack_[count++] = {static_cast<int16_t>(px), static_cast<int16_t>(py)};
    }
    return count;
  }
  [[nodiscard]] bool componentsKnown() const { return b_ && b_->size() != 0; }

  void copyWords(size_t count, const unsigned char *source, int fromX, int fromY, int toX, int toY) {
    for (size_t i = 0; i < count; ++i) {
      const auto [x, y] = stack_[i];
      const auto sx = static_cast<unsigned>(x + fromX), sy = static_cast<unsigned>(y + fromY);
      const auto tx = static_cast<unsigned>(x + toX), ty = static_cast<unsigned>(y + toY);
      if (sx < f_.words && sy < f_.rows && tx < f_.words && ty < f_.rows)
        rowOf(f_.dst, f_.stride, ty)[tx] = rowOf(source, f_.stride, sy)[sx];
    }
  }

  CSlowMotion &engine_;
  const SField &f_;
  unsigned w_;
  uint64_t area_; // words
  slomo::Stamps stamps_;
  Place *stack_; // holds every word of the field
  Listed *list_;
  size_t listed_ = 0;
  std::optional<Components> a_, b_, changed_;
  std::optional<slomo::ObjectFinder> finder_;
  uint32_t *mixedFrom_ = nullptr; // of B's components: the position in the scan from which it is mixed
  void *work_ = nullptr;
};

void CSlowMotion::Object(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  const SField f = FieldOf(dst, frameA, frameB, field);
  if (HasBuffers() && f.words != 0 && f.rows != 0)
    SObjectMotion(*this, f, w).run();
}
