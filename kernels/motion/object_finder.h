// The search for an object of one frame in the other, over that frame's components.
#pragma once

#include "kernels/motion/components.h"
#include "kernels/motion/words.h"

namespace zol::slomo {

/// Marks for fills over one field, which need no clearing between them: each fill has a number of its own.
class Stamps {
public:
  /// `marks` has a word for each of the field's.
  Stamps(uint32_t *marks, unsigned words, unsigned rows);
  /// Starts a fill: no word is marked.
  void begin();
  /// Marks a word; false when it was.
  bool mark(unsigned x, unsigned y) {
    uint32_t &at = marks_[size_t{y} * words_ + x];
    if (at == current_)
      return false;
    at = current_;
    return true;
  }

private:
  void clear();

  uint32_t *marks_;
  unsigned words_, rows_;
  uint32_t current_ = 0;
};

inline constexpr unsigned kLeastTracked = 32; // words of an object that may move

/// Answers what a walk over the rings around an object answers: the first component met whose key and size
/// agree. The size of a component is known beforehand, so the walk starts where one of the right size can
/// be, and only the component that it meets is filled, for the order of a fill decides its topX.
class ObjectFinder {
public:
  static constexpr unsigned kLeast = kLeastTracked - kLeastTracked / 16;
  static uint64_t bytesFor(uint64_t words);

  ObjectFinder(const Components &components, unsigned words, unsigned rows, void *memory);

  /// The displacement of an object of `key` at (x, y) that has at least kLeastTracked words; false without.
  bool find(uint32_t key, const ObjectBox &sought, unsigned x, unsigned y, int *vec, Stamps &stamps,
            Place *stack, size_t capacity);

private:
  int64_t accept(uint32_t key, const ObjectBox &sought, unsigned x, unsigned y);
  bool accepted(unsigned x, unsigned y) const;
  bool walk(int x, int y, int64_t ring, Place &met) const;
  unsigned topX(Place start, const Component &found, Stamps &stamps, Place *stack, size_t capacity) const;

  const Components &components_;
  unsigned words_, rows_;
  uint32_t *order_;    // components by key and count
  uint32_t *accepted_; // for each component the number of the last query that it suits
  uint32_t query_ = 0;
};

} // namespace zol::slomo
