// Two scans give the same bytes. The quick one rests on this: a word that was mixed is no longer marked as
// changed, so an object that is mixed in place takes all other changed words of its component with it, and
// the mixed frame needs only the moves. Where a mixed word happens to equal the mark, the scan that looks at
// every word is made instead, as it is when no memory can be had for the search.

#include "kernels/motion/object_motion.h"

#include "kernels/motion/blend.h"
#include "kernels/motion/components.h"
#include "kernels/motion/object_finder.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace zol::slomo {
namespace {

/// Bytes of the tables: components of A, of B and of the changed words of B, and what the scan keeps of B's.
struct Tables {
  explicit Tables(const FieldPair &field) {
    const uint64_t words = uint64_t{field.words} * field.rows;
    a = Components::bytesFor(words, ObjectFinder::kLeast);
    finder = ObjectFinder::bytesFor(words);
    b = Components::bytesFor(words, kLeastTracked);
    mixed = (words / kLeastTracked + 1) * sizeof(uint32_t);
    work = Components::workBytesFor(words, field.words);
  }
  [[nodiscard]] uint64_t all() const { return a + finder + 2 * b + mixed + work; }

  uint64_t a, finder, b, mixed, work;
};

/// One run of the method over one field.
class ObjectMotion {
public:
  ObjectMotion(const FieldPair &field, unsigned w, const ObjectMemory &memory, uint8_t *dst)
      : f_(field), w_(w), memory_(memory), dst_(dst),
        stamps_(reinterpret_cast<uint32_t *>(memory.marks), field.words, field.rows), stack_(memory.places) {
    if (memory.tables != nullptr)
      makeTables();
  }

  void run() {
    mixField(f_, w_, dst_);
    if (finder_ && !mixedHasMark()) {
      scanComponents();
    } else {
      markField(f_, dst_);
      scanWords();
    }
    while (listed_ != 0)
      move(memory_.list[--listed_]);
  }

private:
  // ---- Tables ----

  void makeTables() {
    const Tables size(f_);
    auto *at = static_cast<unsigned char *>(memory_.tables);
    const auto part = [&](uint64_t bytes) { return std::exchange(at, at + bytes); };
    a_.emplace(f_.words, f_.rows, ObjectFinder::kLeast, part(size.a));
    void *finder = part(size.finder);
    b_.emplace(f_.words, f_.rows, kLeastTracked, part(size.b));
    changed_.emplace(f_.words, f_.rows, kLeastTracked, part(size.b));
    mixedFrom_ = reinterpret_cast<uint32_t *>(part(size.mixed));
    work_ = at;
    labelAll(*a_, f_.a);
    finder_.emplace(*a_, f_.words, f_.rows, finder);
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
      if (has(dst_ + y * f_.stride, f_.words))
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
        rowOf(dst_, f_.stride, y)[x] = kTaken;
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
        if (rowOf(dst_, f_.stride, y)[x] != kChanged)
          continue;
        const uint32_t key = keyAt(x, y);
        const ObjectBox box = takeObject(plane(), f_.b, dst_, x, y, fillStack());
        if (box.count < kLeastTracked || !list(key, box, x, y))
          mixInPlace(key, x, y);
      }
  }

  void mixInPlace(uint32_t key, unsigned x, unsigned y) {
    const size_t count = key == 0 ? 1 : fillComponent(x, y);
    if (key == 0)
      stack_[0] = {static_cast<int16_t>(x), static_cast<int16_t>(y)};
    for (size_t i = 0; i < count; ++i) {
      const auto [px, py] = stack_[i];
      rowOf(dst_, f_.stride, static_cast<size_t>(py))[px] =
          blendWord(rowOf(f_.a, f_.stride, static_cast<size_t>(py))[px],
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
    const int64_t one = kWeightOne;
    return static_cast<int>((one - w_) * distance / one);
  }

  /// Searches an object and lists it; false when it is not found or does not move. Where the same words
  /// become marked again and again the list can run full; what it cannot hold is mixed in place.
  bool list(uint32_t key, const ObjectBox &box, unsigned x, unsigned y) {
    int vec[2] = {0, 0};
    const bool found = finder_ ? finder_->find(key, box, x, y, vec, stamps_, stack_, memory_.fillable)
                               : walkToObject(plane(), f_.a, key, box, x, y, vec, memory_.marks, fillStack());
    if (!found || (remaining(vec[0]) == 0 && remaining(vec[1]) == 0) || listed_ >= memory_.listed)
      return false;
    memory_.list[listed_++] = {static_cast<int16_t>(x), static_cast<int16_t>(y), static_cast<int16_t>(vec[0]),
                               static_cast<int16_t>(vec[1])};
    return true;
  }

  /// Shows what was behind the object: A where it stands in B, B where it stood in A. Then pastes it.
  void move(MovedObject object) {
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
    const ObjectBox &box = (*b_)[label - 1].data;
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
        rowOf(dst_, f_.stride, ty)[tx] = rowOf(source, f_.stride, sy)[sx];
    }
  }

  [[nodiscard]] Plane plane() const { return {f_.words, f_.rows, f_.stride}; }
  [[nodiscard]] FillStack fillStack() const { return {memory_.places, memory_.fillable}; }

  const FieldPair &f_;
  unsigned w_;
  const ObjectMemory &memory_;
  uint8_t *dst_;
  Stamps stamps_;
  Place *stack_; // holds every word of the field
  size_t listed_ = 0;
  std::optional<Components> a_, b_, changed_;
  std::optional<ObjectFinder> finder_;
  uint32_t *mixedFrom_ = nullptr; // of B's components: the position in the scan from which it is mixed
  void *work_ = nullptr;
};

} // namespace

uint64_t objectTableBytes(const FieldPair &field) { return Tables(field).all(); }

void moveObjects(const FieldPair &field, unsigned w, const ObjectMemory &memory, uint8_t *dst) {
  ObjectMotion(field, w, memory, dst).run();
}

} // namespace zol::slomo
