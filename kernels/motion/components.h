// Connected words of one key: all of a frame's, found in two passes over its rows.
#pragma once

#include "kernels/motion/objects.h"
#include "kernels/simd/levels.h"

#include <cstdint>

namespace zol {

ZOL_LEVELS_TO(avx2,
              /// keys = the words' keys, made non-zero by bit 0.
              void rowKeys(const uint8_t *pic, unsigned words, uint32_t *keys);
              /// The same for the words whose keys differ in a and b, those of b; 0 for the others.
              void changedRowKeys(const uint8_t *a, const uint8_t *b, unsigned words, uint32_t *keys);)

namespace slomo {

struct Component {
  uint32_t key;
  unsigned firstX, firstY; // the first word, row by row
  ObjectBox data;          // topX is left open
};

/// The components that have at least `least` words, in the order of their first words, and for each word of
/// the field the component it belongs to.
class Components {
public:
  /// Bytes of the tables and of the memory that is of use only while they are made.
  static uint64_t bytesFor(uint64_t words, unsigned least);
  static uint64_t workBytesFor(uint64_t fieldWords, uint64_t rowWords);

  /// `memory` and `work` hold the bytes that the above say.
  Components(unsigned words, unsigned rows, unsigned least, void *memory);

  /// Labels the words for which keys(y, row) gives a key other than 0. dropped(x, y, first) is told of every
  /// word of a component that is too small, and whether it is the component's first word.
  template <class Keys, class Dropped> void label(void *work, Keys keys, Dropped dropped);

  [[nodiscard]] unsigned size() const { return size_; }
  [[nodiscard]] const Component &operator[](unsigned index) const { return table_[index]; }
  /// 0 for none, else the index of the word's component + 1.
  [[nodiscard]] const uint32_t *labels(unsigned y) const { return labels_ + size_t{y} * words_; }
  [[nodiscard]] uint32_t label(unsigned x, unsigned y) const { return labels(y)[x]; }

private:
  static uint32_t root(const uint32_t *parents, uint32_t label) {
    while (parents[label] != label)
      label = parents[label];
    return label;
  }
  /// The earlier label becomes the root, so a root is the label of its component's first word.
  static uint32_t unite(uint32_t *parents, uint32_t a, uint32_t b) {
    a = root(parents, a);
    b = root(parents, b);
    if (a == b)
      return a;
    const uint32_t first = a < b ? a : b;
    parents[a < b ? b : a] = first;
    return first;
  }

  unsigned words_, rows_, least_;
  uint32_t *labels_;
  Component *table_;
  unsigned size_ = 0;
};

template <class Keys, class Dropped> void Components::label(void *work, Keys keys, Dropped dropped) {
  auto *parents = static_cast<uint32_t *>(work), *counts = parents + size_t{words_} * rows_ + 1;
  uint32_t *above = counts + size_t{words_} * rows_ + 2, *row = above + words_ + 2; // with a 0 at either end
  for (unsigned x = 0; x < words_ + 2; ++x)
    above[static_cast<int>(x) - 1] = row[static_cast<int>(x) - 1] = 0;

  // First pass: every word takes the label of a neighbour above it or to its left. Of these four only the
  // one above on the right can be apart from another that is alike.
  uint32_t last = 0;
  for (unsigned y = 0; y < rows_; ++y) {
    keys(y, row);
    uint32_t *labels = labels_ + size_t{y} * words_;
    const uint32_t *up = labels - words_;
    for (unsigned x = 0; x < words_; ++x) {
      const uint32_t key = row[x];
      if (key == 0) {
        labels[x] = 0;
        continue;
      }
      const uint32_t *over = above + x, *left = row + x - 1;
      uint32_t label;
      if (over[0] == key)
        label = up[x];
      else if (over[1] == key)
        label = *left == key      ? unite(parents, labels[x - 1], up[x + 1])
                : over[-1] == key ? unite(parents, up[x - 1], up[x + 1])
                                  : up[x + 1];
      else if (*left == key)
        label = labels[x - 1];
      else if (over[-1] == key)
        label = up[x - 1];
      else {
        label = ++last;
        parents[label] = label;
        counts[label] = 0;
      }
      labels[x] = label;
      ++counts[label];
    }
    uint32_t *const swapped = above;
    above = row;
    row = swapped;
  }

  // Labels become roots, and counts of roots the number of the table's entry + 1 or 0.
  for (uint32_t label = 1; label <= last; ++label)
    if (parents[label] != label) {
      parents[label] = parents[parents[label]];
      counts[parents[label]] += counts[label];
    }
  constexpr uint32_t kSeen = 0xFFFFFFFF;
  size_ = 0;
  for (uint32_t label = 1; label <= last; ++label)
    if (parents[label] == label) {
      const uint32_t count = counts[label];
      counts[label] = 0;
      if (count < least_)
        continue;
      Component &made = table_[size_];
      made.data.count = count;
      made.data.minX = 0xFFFFFFFF;
      made.data.maxX = 0;
      made.key = 0; // no word of it met yet
      counts[label] = ++size_;
    }

  for (unsigned y = 0; y < rows_; ++y) {
    uint32_t *labels = labels_ + size_t{y} * words_;
    keys(y, row);
    for (unsigned x = 0; x < words_; ++x) {
      if (labels[x] == 0)
        continue;
      uint32_t &entry = counts[parents[labels[x]]];
      if (entry == 0 || entry == kSeen) {
        dropped(x, y, entry == 0);
        entry = kSeen;
        labels[x] = 0;
        continue;
      }
      labels[x] = entry;
      Component &c = table_[entry - 1];
      if (c.key == 0) {
        c.key = row[x];
        c.firstX = x;
        c.firstY = c.data.minY = y;
      }
      c.data.minX = x < c.data.minX ? x : c.data.minX;
      c.data.maxX = x > c.data.maxX ? x : c.data.maxX;
      c.data.maxY = y;
    }
  }
}

} // namespace slomo
} // namespace zol
