#include "kernels/motion/components.h"
#include "kernels/motion/words.h"

namespace zol::ZOL_LEVEL {

void rowKeys(const uint8_t *pic, unsigned words, uint32_t *__restrict keys) {
  const auto *row = reinterpret_cast<const slomo::Word *>(pic);
  for (unsigned x = 0; x < words; ++x)
    keys[x] = (row[x] & slomo::kKeyBits) | 1;
}

void changedRowKeys(const uint8_t *a, const uint8_t *b, unsigned words, uint32_t *__restrict keys) {
  const auto *p = reinterpret_cast<const slomo::Word *>(a), *q = reinterpret_cast<const slomo::Word *>(b);
  for (unsigned x = 0; x < words; ++x)
    keys[x] = ((p[x] ^ q[x]) & slomo::kKeyBits) != 0 ? (q[x] & slomo::kKeyBits) | 1 : 0;
}

} // namespace zol::ZOL_LEVEL
