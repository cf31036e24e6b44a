// Object motion: changed areas are taken for objects, searched in the frame before the time and pasted where
// they stand in between; what is small or cannot be found is mixed in place.
#pragma once

#include "kernels/motion/field.h"
#include "kernels/motion/words.h"

namespace zol::slomo {

/// An object at (x, y) of the frame after and its way back to the frame before.
struct MovedObject {
  int16_t x, y, dx, dy;
};

/// Memory that the method works in.
struct ObjectMemory {
  uint8_t *marks;    ///< a frame like those of the field, stride included
  MovedObject *list; ///< objects that move
  size_t listed;     ///< as many of them; what the list cannot hold is mixed in place
  Place *places;     ///< of fills
  size_t fillable;   ///< as many of them; every word of the field for a search in full
  void *tables;      ///< objectTableBytes(); where it is null the same field is made, slowly
};

/// Bytes, aligned to 4.
uint64_t objectTableBytes(const FieldPair &field);

/// Writes the field that lies w / 32768 of the way from the one before to the one after to dst. It is not
/// empty.
void moveObjects(const FieldPair &field, unsigned w, const ObjectMemory &memory, uint8_t *dst);

} // namespace zol::slomo
