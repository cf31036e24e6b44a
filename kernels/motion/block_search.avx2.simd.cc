#include "kernels/motion/block_search.h"

#include "kernels/motion/words.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

using slomo::Word;

typedef uint16_t Half __attribute__((may_alias));

constexpr uint32_t kLowBytes = 0x00FF00FF;

// ---- Box sums, modulo 2^16 ----

void byteSums(const Word *row, int words, uint16_t *__restrict out) {
  for (int x = 0; x < words; ++x) {
    const uint32_t pairs = (row[x] & kLowBytes) + (row[x] >> 8 & kLowBytes);
    out[x] = static_cast<uint16_t>(pairs + (pairs >> 16));
  }
}

#ifdef __AVX2__
void squareSums(const Word *row, int words, uint16_t *__restrict out) {
  for (int x = 0; x < words; ++x) {
    const uint32_t b = row[x] & 255, g = row[x] >> 8 & 255, r = row[x] >> 16 & 255, a = row[x] >> 24;
    out[x] = static_cast<uint16_t>(b * b + g * g + r * r + a * a);
  }
}
#endif

/// Box sums of whole frame B, rolled from row to row; `values` makes a row's summands.
template <void (*values)(const Word *, int, uint16_t *)> void boxSums(const BlockSearch &s, uint16_t *plane) {
  const int boxWidth = s.bw / 2, boxRows = s.bh / 2, width = s.words - boxWidth + 1;
  uint16_t *columns = s.rowMemory, *entering = columns + s.planeStep, *leaving = entering + s.planeStep;
  for (size_t x = 0; x < s.planeStep; ++x)
    columns[x] = 0;
  for (int y = 0; y < s.rows; ++y) {
    values(slomo::rowOf(s.b, s.stride, static_cast<size_t>(y)), s.words, entering);
    if (y >= boxRows) {
      values(slomo::rowOf(s.b, s.stride, static_cast<size_t>(y - boxRows)), s.words, leaving);
      for (int x = 0; x < s.words; ++x)
        columns[x] = static_cast<uint16_t>(columns[x] + entering[x] - leaving[x]);
    } else {
      for (int x = 0; x < s.words; ++x)
        columns[x] = static_cast<uint16_t>(columns[x] + entering[x]);
    }
    if (y < boxRows - 1)
      continue;
    uint16_t *__restrict out = plane + static_cast<size_t>(y - boxRows + 1) * s.planeStep;
    for (int x = 0; x < width; ++x)
      out[x] = static_cast<uint16_t>(columns[x] + columns[x + 1] + columns[x + 2] + columns[x + 3]);
    if (boxWidth == 8)
      for (int x = 0; x < width; ++x)
        out[x] =
            static_cast<uint16_t>(out[x] + columns[x + 4] + columns[x + 5] + columns[x + 6] + columns[x + 7]);
  }
}

// ---- Errors ----

inline U32xN squaredError(const uint8_t *a, const uint8_t *b) {
  const U8xN d = absoluteDifference(load<U8xN>(a), load<U8xN>(b));
  const auto low = widenLow<I16xN>(d), high = widenHigh<I16xN>(d);
  return as<U32xN>(mulAddPairs(low, low) + mulAddPairs(high, high));
}

/// The error of two blocks whose rows are a multiple of 32 bytes; any number above `limit` when it is above.
uint32_t blockError(const uint8_t *a, const uint8_t *b, size_t stride, int rowBytes, int rows,
                    uint32_t limit) {
  U32xN sum{};
  for (int y = 0; y < rows; y += 4) {
    for (int row = y; row < y + 4; ++row)
      for (int i = 0; i < rowBytes; i += kVectorBytes) {
        const size_t at = static_cast<size_t>(row) * stride + static_cast<size_t>(i);
        sum += squaredError(a + at, b + at);
      }
    if (const uint32_t partial = zol::ZOL_LEVEL::sum(sum); partial > limit || y + 4 >= rows)
      return partial;
  }
  return 0;
}

/// The number of a displacement in the walk over the rings: outwards, each ring from its upper left corner
/// along the top, down the right, back along the bottom and up the left.
inline unsigned ringOrder(int dx, int dy) {
  const int ax = dx < 0 ? -dx : dx, ay = dy < 0 ? -dy : dy, r = ax > ay ? ax : ay;
  if (r == 0)
    return 0;
  const int onRing = dy == -r ? dx + r : dx == r ? 3 * r + dy : dy == r ? 5 * r - dx : 7 * r - dy;
  return static_cast<unsigned>((2 * r - 1) * (2 * r - 1) + onRing);
}

// ---- One block's search ----

class Search {
public:
  Search(BlockSearch &s, int bx, int by, unsigned worst)
      : s_(s), bx_(bx), by_(by),
        block_(s.a + static_cast<size_t>(by) * s.stride + static_cast<size_t>(bx) * 4), best_(worst + 1) {
    quarterSums();
    setLimit();
  }

  /// Looks at one displacement; one that leaves the frame is none.
  void consider(int dx, int dy) {
    const int x = bx_ + dx, y = by_ + dy;
    if (x >= 0 && x <= s_.words - s_.bw && y >= 0 && y <= s_.rows - s_.bh)
      tryPosition(x, y);
  }

  /// Looks at all displacements of Chebyshev length inner + 1 to outer.
  void searchShell(int inner, int outer) {
    if (best_ == 0 && bestRadius() < outer)
      outer = bestRadius(); // a good one found: only an earlier good one can replace it
    for (int dy = -outer; dy <= outer; ++dy) {
      const int y = by_ + dy;
      if (y < 0 || y > s_.rows - s_.bh)
        continue;
      if (dy < -inner || dy > inner) {
        searchSpan(y, -outer, outer);
      } else {
        searchSpan(y, -outer, -inner - 1);
        searchSpan(y, inner + 1, outer);
      }
    }
  }

  [[nodiscard]] bool found() const { return order_ != 0 || foundCentre_; }
  [[nodiscard]] bool done(int radius) const { return best_ == 0 && bestRadius() <= radius; }
  [[nodiscard]] int dx() const { return dx_; }
  [[nodiscard]] int dy() const { return dy_; }

private:
  [[nodiscard]] int bestRadius() const {
    const int ax = dx_ < 0 ? -dx_ : dx_, ay = dy_ < 0 ? -dy_ : dy_;
    return ax > ay ? ax : ay;
  }

  void quarterSums() {
    for (uint16_t &sum : quarters_)
      sum = 0;
    for (int y = 0; y < s_.bh; ++y) {
      const Word *row = slomo::rowOf(block_, s_.stride, static_cast<size_t>(y));
      uint16_t sums[16];
      byteSums(row, s_.bw, sums);
      uint16_t *pair = quarters_ + (y < s_.bh / 2 ? 0 : 2);
      for (int x = 0; x < s_.bw; ++x)
        pair[x < s_.bw / 2 ? 0 : 1] = static_cast<uint16_t>(pair[x < s_.bw / 2 ? 0 : 1] + sums[x]);
    }
  }

  // Differences of sums are compared in units of 2^shift, capped at 127: the squares, added with saturation,
  // never exceed the true ones, and one that is capped exceeds the limit alone.
  void setLimit() {
    limit_ = best_ == 0 ? kGoodEnough - 1 : best_;
    const uint32_t full = limit_ * static_cast<uint32_t>(s_.bw * s_.bh);
    shift_ = 0;
    while (full >> (2 * shift_) >= 127 * 127)
      ++shift_;
    sumLimit_ = splat<I16xN>(static_cast<int16_t>(full >> (2 * shift_)));
  }

  void tryPosition(int x, int y) {
    const size_t at = static_cast<size_t>(y) * s_.stride + static_cast<size_t>(x) * 4;
    const uint32_t error = blockError(block_, s_.b + at, s_.stride, s_.bw * 4, s_.bh, limit_);
    if (error > limit_)
      return;
    const uint32_t rank = error < kGoodEnough ? 0 : error; // all good ones are equal: the first wins
    const unsigned order = ringOrder(x - bx_, y - by_);
    if (rank > best_ || (rank == best_ && order >= order_))
      return;
    best_ = rank;
    order_ = order;
    dx_ = x - bx_;
    dy_ = y - by_;
    foundCentre_ = foundCentre_ || order == 0;
    setLimit();
  }

  /// Masks of lanes whose quarters' sums allow an error within the limit, for positions from (x, y) to the
  /// right.
  [[nodiscard]] ByteMask mayMatch(const uint16_t *sums) const {
    const size_t down = static_cast<size_t>(s_.bh / 2) * s_.planeStep;
    const int right = s_.bw / 2;
    const I16xN total = addSaturated(addSaturated(quarter(sums, 0), quarter(sums + right, 1)),
                                     addSaturated(quarter(sums + down, 2), quarter(sums + down + right, 3)));
    return byteMask(total <= sumLimit_);
  }
  [[nodiscard]] I16xN quarter(const uint16_t *sums, int index) const {
    const U16xN d = absoluteDifference(load<U16xN>(sums), splat<U16xN>(quarters_[index]));
    const I16xN capped = min(as<I16xN>(shiftRight(d, shift_)), splat<I16xN>(127));
    return capped * capped;
  }

  void searchSpan(int y, int fromDx, int toDx) {
    const int from = bx_ + fromDx < 0 ? 0 : bx_ + fromDx;
    const int to = bx_ + toDx > s_.words - s_.bw ? s_.words - s_.bw : bx_ + toDx;
    const uint16_t *sums = s_.sums + static_cast<size_t>(y) * s_.planeStep;
    for (int x = from; x <= to; x += kPositions) {
      ByteMask lanes = mayMatch(sums + x);
      if (const int count = to - x + 1; count < kPositions)
        lanes &= (ByteMask{1} << (2 * count)) - 1;
#ifdef __AVX2__
      if (countBits(lanes) >= kPositions && x + kPositions - 1 <= s_.words - s_.bw && canCorrelate())
        lanes &= mayMatchExactly(x, y);
#endif
      while (lanes != 0) {
        const int lane = lowestBit(lanes) / 2;
        lanes &= lanes - 1; // both bits of the lane
        lanes &= lanes - 1;
        tryPosition(x + lane, y);
      }
    }
  }

#ifdef __AVX2__
  // Flat areas with faint noise pass every bound on sums. There the square is expanded,
  // A^2 + B^2 - 2AB modulo 2^16, for sixteen positions at once; what is above the limit is surely out. The
  // products are of B and of A less its middle value, which keeps pairs of them within 16 bits.
  bool canCorrelate() {
    if (!prepared_) {
      prepared_ = true;
      prepareCorrelation();
    }
    return correlates_;
  }

  void prepareCorrelation() {
    const int rowBytes = s_.bw * 4;
    int least = 255, most = 0;
    for (int y = 0; y < s_.bh; ++y)
      for (int i = 0; i < rowBytes; ++i) {
        const int value = block_[static_cast<size_t>(y) * s_.stride + static_cast<size_t>(i)];
        least = value < least ? value : least;
        most = value > most ? value : most;
      }
    constexpr int kReach = 64; // 2 * 255 * 64 < 2^15
    middle_ = (least + most + 1) / 2;
    correlates_ = most - middle_ <= kReach && middle_ - least <= kReach;
    if (!correlates_)
      return;
    if (s_.squares == nullptr) {
      s_.squares = s_.squaresMemory;
      boxSums<squareSums>(s_, s_.squares);
    }
    uint32_t squares = 0;
    for (int y = 0; y < s_.bh; ++y)
      for (int i = 0; i < rowBytes; ++i) {
        const int value = block_[static_cast<size_t>(y) * s_.stride + static_cast<size_t>(i)];
        squares += static_cast<uint32_t>(value * value);
        centred_[y * rowBytes + i] = static_cast<int8_t>(value - middle_);
      }
    blockSquares_ = static_cast<uint16_t>(squares);
  }

  U16xN boxesAt(const uint16_t *plane, int x, int y) const {
    const uint16_t *p = plane + static_cast<size_t>(y) * s_.planeStep + x;
    const size_t down = static_cast<size_t>(s_.bh / 2) * s_.planeStep;
    const int right = s_.bw / 2;
    return load<U16xN>(p) + load<U16xN>(p + right) + load<U16xN>(p + down) + load<U16xN>(p + down + right);
  }

  [[nodiscard]] ByteMask mayMatchExactly(int x, int y) const {
    I16xN low{}, high{};
    const int8_t *a = centred_;
    for (int row = 0; row < s_.bh; ++row) {
      const uint8_t *b = s_.b + static_cast<size_t>(y + row) * s_.stride + static_cast<size_t>(x) * 4;
      for (int i = 0; i < s_.bw; ++i, a += 4, b += 4) {
        int32_t word;
        __builtin_memcpy(&word, a, sizeof word);
        const auto factors = as<I8xN>(splat<I32xN>(word));
        low += mulAddPairs(load<U8xN>(b), factors);
        high += mulAddPairs(load<U8xN>(b + kVectorBytes), factors);
      }
    }
    const auto pairs = [](I16xN v) { return as<U32xN>(v) + (as<U32xN>(v) >> 16); };
    const U16xN products = narrow(pairs(low), pairs(high)) +
                           boxesAt(s_.sums, x, y) * splat<U16xN>(static_cast<uint16_t>(middle_));
    const U16xN error = boxesAt(s_.squares, x, y) + splat<U16xN>(blockSquares_) - products * 2;
    return byteMask(error <= splat<U16xN>(static_cast<uint16_t>(limit_)));
  }

  bool prepared_ = false, correlates_ = false;
  int middle_ = 0;
  uint16_t blockSquares_ = 0;
  alignas(4) int8_t centred_[16 * 16 * 4];
#endif

  static constexpr int kPositions = kLanes<U16xN>; // that are looked at together

  BlockSearch &s_;
  int bx_, by_;
  const uint8_t *block_;
  uint32_t best_;
  unsigned order_ = 0; // nothing found yet: no displacement precedes it
  int dx_ = 0, dy_ = 0;
  bool foundCentre_ = false;
  uint32_t limit_;
  int shift_;
  I16xN sumLimit_;
  uint16_t quarters_[4];
};

} // namespace

uint32_t rowError(const uint8_t *a, const uint8_t *b, unsigned words) {
  const size_t bytes = size_t{words} * 4;
  U32xN sum{};
  size_t i = 0;
  for (; i + kVectorBytes <= bytes; i += kVectorBytes)
    sum += squaredError(a + i, b + i);
  uint32_t error = zol::ZOL_LEVEL::sum(sum);
  for (; i < bytes; ++i) {
    const int d = a[i] - b[i];
    error += static_cast<uint32_t>(d * d);
  }
  return error;
}

void prepareSearch(BlockSearch &search) { boxSums<byteSums>(search, search.sums); }

bool searchBlock(BlockSearch &search, int bx, int by, unsigned worst, int *vec) {
  Search s(search, bx, by, worst);
  s.consider(0, 0);
  if (!s.done(0)) {
    if (search.guessX != 0 || search.guessY != 0)
      s.consider(search.guessX, search.guessY);
    int inner = 0;
    static constexpr int kShells[] = {4, 8, 16, 32, kSearchRadius};
    for (const int outer : kShells) {
      s.searchShell(inner, outer);
      if (s.done(outer))
        break;
      inner = outer;
    }
  }
  if (!s.found())
    return false;
  vec[0] = search.guessX = s.dx();
  vec[1] = search.guessY = s.dy();
  return true;
}

} // namespace zol::ZOL_LEVEL
