#include "kernels/shape/coverage_rows.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int32_t kAll = 131072;
constexpr int kCount = kLanes<I32xN>;

template <int by, int... i> U32xN movedUp(U32xN v, std::integer_sequence<int, i...>) {
  return __builtin_shufflevector(v, U32xN{}, (i < by ? kCount : i - by)...);
}
/// Every lane `by` lanes further up, 0 in the first ones.
template <int by> U32xN movedUp(U32xN v) { return movedUp<by>(v, std::make_integer_sequence<int, kCount>()); }

U32xN runningSum(U32xN v) {
  v += movedUp<1>(v);
  v += movedUp<2>(v);
  if constexpr (kCount > 4)
    v += movedUp<4>(v);
  return v;
}

I32xN coverageOf(U32xN sums, int brightness) {
  const auto s = max(min(as<I32xN>(sums), splat<I32xN>(kAll)), I32xN{});
  return ((s * 255 + 65536) >> 17) * brightness >> 8;
}

} // namespace

void coverRow(uint32_t *cells, uint32_t *marks, int blocks, int brightness, uint8_t *bytes) {
  using Bytes = Vector<uint8_t, kCount>;
  uint32_t sum = 0;
  const auto put = [](uint8_t *to, I32xN values) {
    const I32xN before = convert<I32xN>(load<Bytes>(to));
    store(to, convert<Bytes>(max(values, before)));
  };
  for (int i = 0; i < blocks; ++i, cells += kCoverBlock, bytes += kCoverBlock) {
    if (marks[i] == 0) {
      if (sum != 0)
        for (int x = 0; x < kCoverBlock; x += kCount)
          put(bytes + x, coverageOf(splat<U32xN>(sum), brightness));
      continue;
    }
    marks[i] = 0;
    for (int x = 0; x < kCoverBlock; x += kCount) {
      const U32xN sums = runningSum(load<U32xN>(cells + x)) + sum;
      store(cells + x, U32xN{});
      put(bytes + x, coverageOf(sums, brightness));
      sum = sums[kCount - 1];
    }
  }
}

} // namespace zol::ZOL_LEVEL
