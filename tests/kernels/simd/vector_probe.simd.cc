#include "tests/kernels/simd/vector_probe.h"

#include "kernels/simd/divide.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

static_assert(kVectorBytes <= kMaxVectorBytes);

#define ZOL_CASE(name, In, Out, operation, lane)                                                             \
  void run##name(const void *from, const void *other, void *to, size_t bytes) {                              \
    for (size_t at = 0; at < bytes; at += kVectorBytes) {                                                    \
      const auto a = load<FullVector<In>>(static_cast<const char *>(from) + at);                             \
      [[maybe_unused]] const auto b = load<FullVector<In>>(static_cast<const char *>(other) + at);           \
      const FullVector<Out> result = operation;                                                              \
      store(static_cast<char *>(to) + at, result);                                                           \
    }                                                                                                        \
  }
#include "tests/kernels/simd/vector_cases.inc"
#undef ZOL_CASE

template <class Vec, class Lane> int copy(const Lane *from, Lane *to, int count) {
  int steps = 0;
  forEachVector<Vec>(count, [&](int i, int n) {
    store(to + i, load<Vec>(from + i, n), n);
    ++steps;
  });
  return steps;
}

} // namespace

const VectorCase *vectorCases() {
  static constexpr VectorCase kCases[] = {
#define ZOL_CASE(name, ...) run##name,
#include "tests/kernels/simd/vector_cases.inc"
#undef ZOL_CASE
  };
  return kCases;
}

int wordLanes() { return kLanes<U32xN>; }
int copyWords(const uint32_t *from, uint32_t *to, int count) { return copy<U32xN>(from, to, count); }
int copyBytes(const uint8_t *from, uint8_t *to, int count) { return copy<U8xN>(from, to, count); }

void narrowWords(const uint32_t *low, const uint32_t *high, uint16_t *to) {
  store(to, narrow(load<U32xN>(low), load<U32xN>(high)));
}

void gatherWords(const uint32_t *table, const uint32_t *index, uint32_t *to) {
  store(to, gather(table, load<U32xN>(index)));
}

void moveBlocks(const void *const *from, void *const *to) { storeBlocks(to, loadBlocks<U32xN>(from)); }

uint32_t sumWords(const uint32_t *words) { return sum(load<U32xN>(words)); }

int setBytes(const uint8_t *bytes, int *places, bool *any, bool *all) {
  const auto mask = load<U8xN>(bytes) == 255;
  *any = anySet(mask);
  *all = allSet(mask);
  for (ByteMask bits = byteMask(mask); bits != 0; bits &= bits - 1)
    *places++ = lowestBit(bits);
  return countBits(byteMask(mask));
}

void splatNumber(double number, float *to) { store(to, splat<F32xN>(static_cast<float>(number))); }

} // namespace zol::ZOL_LEVEL
