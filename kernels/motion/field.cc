#include "kernels/motion/field.h"

#include "kernels/motion/blend.h"

#include <cstring>

namespace zol::slomo {

void mixField(const FieldPair &field, unsigned w, uint8_t *dst) {
  const auto blend = ZOL_SELECT(blendWords);
  if (field.stride == size_t{field.words} * 4) {
    blend(dst, field.a, field.b, size_t{field.words} * field.rows, w);
    return;
  }
  for (size_t at = 0; at < field.rows * field.stride; at += field.stride)
    blend(dst + at, field.a + at, field.b + at, field.words, w);
}

void markField(const FieldPair &field, uint8_t *dst) {
  const auto mark = ZOL_SELECT(markChanged);
  for (size_t at = 0; at < field.rows * field.stride; at += field.stride)
    mark(dst + at, field.a + at, field.b + at, field.words);
}

void copyRows(const uint8_t *src, uint8_t *dst, unsigned words, unsigned rows, size_t stride) {
  for (size_t y = 0; y < rows; ++y)
    std::memcpy(dst + y * stride, src + y * stride, size_t{words} * 4);
}

} // namespace zol::slomo
