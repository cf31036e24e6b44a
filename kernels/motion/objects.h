// Objects: connected words of one key, taken by fills. What the quick search by components gives is told by
// these.
#pragma once

#include "kernels/motion/field.h"
#include "kernels/motion/words.h"

namespace zol::slomo {

/// The box is inclusive, in words and rows.
struct ObjectBox {
  unsigned minX, maxX, minY, maxY;
  unsigned topX;  ///< the smallest x met on the rows that were topmost when they were met
  unsigned count; ///< of words
};

/// Whether a candidate's size is near enough to the sought object's. Heights are differences of rows,
/// widths numbers of words.
bool isSameObject(const ObjectBox &candidate, const ObjectBox &sought);

/// Where fills put the places that they have yet to go on from.
struct FillStack {
  Place *places;
  size_t capacity;
};

/// Words of a picture and of marks for it.
struct Plane {
  unsigned words, rows;
  size_t stride; ///< bytes, of both
};

/// Takes the connected words of one key among those marked as changed, from (x, y) on.
ObjectBox takeObject(const Plane &plane, const void *picture, void *marks, unsigned x, unsigned y,
                     const FillStack &stack);

/// Searches an object of a key and like `sought` around (x, y), ring by ring; false without one, else its
/// displacement.
bool walkToObject(const Plane &plane, const void *picture, uint32_t key, const ObjectBox &sought, unsigned x,
                  unsigned y, int *vec, void *marks, const FillStack &stack);

/// Clears the mask and sets it over the connected words of the key at (x, y).
void maskObject(const Plane &plane, const void *picture, void *mask, unsigned x, unsigned y,
                const FillStack &stack);

/// Mixes the masked object at (x, y) in place and clears its mask.
void mixMasked(const Plane &plane, const void *a, const void *b, void *dst, void *mask, unsigned w,
               unsigned x, unsigned y, const FillStack &stack);

/// Copies the masked words from startRow on, read at vecSrc and written at vecDst from where they are.
void copyMasked(const Plane &plane, const void *src, void *dst, const void *mask, const int *vecSrc,
                const int *vecDst, unsigned startRow);

} // namespace zol::slomo
