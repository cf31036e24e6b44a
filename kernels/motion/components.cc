#include "kernels/motion/components.h"

namespace zol::slomo {

uint64_t Components::bytesFor(uint64_t words, unsigned least) {
  return words * sizeof(uint32_t) + (words / least + 1) * sizeof(Component);
}

uint64_t Components::workBytesFor(uint64_t fieldWords, uint64_t rowWords) {
  return (2 * (fieldWords + 1) + 2 * (rowWords + 2)) * sizeof(uint32_t);
}

Components::Components(unsigned words, unsigned rows, unsigned least, void *memory)
    : words_(words), rows_(rows), least_(least), labels_(static_cast<uint32_t *>(memory)),
      table_(reinterpret_cast<Component *>(labels_ + size_t{words} * rows)) {}

} // namespace zol::slomo
