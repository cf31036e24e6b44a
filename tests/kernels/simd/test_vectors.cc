// The vocabulary for vectors against arithmetic, over whole domains where they are small, at every level.

#include "tests/kernels/simd/vector_probe.h"
#include "tests/support/levels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <string>

namespace zol {
namespace {

template <class Lane> Lane saturated(int value) {
  using Limits = std::numeric_limits<Lane>;
  return static_cast<Lane>(std::clamp<int>(value, Limits::min(), Limits::max()));
}

/// All pairs of bytes; of wider integers all pairs of 16 bits with a few, and of those at the ends of their
/// range; of floats all pairs of special numbers.
template <class Lane> void fillDomain(std::vector<Lane> &a, std::vector<Lane> &b) {
  using Limits = std::numeric_limits<Lane>;
  std::vector<Lane> first, second;
  if constexpr (std::is_floating_point_v<Lane>) {
    first = {0,
             -Lane{0},
             1,
             -1.5,
             255,
             Limits::min(),
             Limits::denorm_min(),
             Limits::max(),
             Limits::lowest(),
             Limits::infinity(),
             -Limits::infinity(),
             Limits::quiet_NaN()};
    second = first;
  } else {
    std::mt19937 random(1);
    for (int i = 0; i < 65536 && i <= int64_t{Limits::max()} - Limits::min(); ++i)
      first.push_back(static_cast<Lane>(Limits::min() + i));
    if (sizeof(Lane) == 1)
      second = first;
    for (const int ofEnd : {0, 1, 2, 127, 128, 255, 256}) {
      second.push_back(static_cast<Lane>(ofEnd));
      second.push_back(static_cast<Lane>(-ofEnd));
      second.push_back(static_cast<Lane>(Limits::min() + ofEnd));
      second.push_back(static_cast<Lane>(Limits::max() - ofEnd));
      second.push_back(static_cast<Lane>(random()));
    }
    if (sizeof(Lane) == 4)
      first.insert(first.end(), second.begin(), second.end());
  }
  for (const Lane y : second)
    for (const Lane x : first) {
      a.push_back(x);
      b.push_back(y);
    }
  a.resize((a.size() + kMaxVectorBytes - 1) / kMaxVectorBytes * kMaxVectorBytes);
  b.resize(a.size());
}

/// Where two results differ first, bit for bit; empty where they do not.
template <class Out>
std::string difference(const std::vector<Out> &actual, const std::vector<Out> &expected) {
  for (size_t i = 0; i < actual.size(); ++i)
    if (std::memcmp(&actual[i], &expected[i], sizeof(Out)) != 0)
      return "lane " + std::to_string(i) + ": " + testing::PrintToString(actual[i]) + ", not " +
             testing::PrintToString(expected[i]);
  return "";
}

/// `lane` gives a lane of the result from the blocks of both operands.
template <class In, class Out, class Lane> void expectCase(const char *name, size_t index, Lane lane) {
  static constexpr int kIns = 16 / sizeof(In), kOuts = 16 / sizeof(Out);
  std::vector<In> a, b;
  fillDomain(a, b);
  std::vector<Out> expected(a.size() / kIns * kOuts), actual(expected.size());
  for (size_t block = 0; block < a.size() / kIns; ++block)
    for (int i = 0; i < kOuts; ++i)
      expected[block * kOuts + static_cast<size_t>(i)] =
          static_cast<Out>(lane(&a[block * kIns], &b[block * kIns], i));
  test::atEveryLevel([&] {
    ZOL_SELECT(vectorCases)()[index](a.data(), b.data(), actual.data(), a.size() * sizeof(In));
    EXPECT_EQ(difference(actual, expected), "") << name;
  });
}

TEST(Vectors, EqualArithmeticLaneByLane) {
  size_t index = 0;
#define ZOL_CASE(name, In, Out, operation, lane)                                                             \
  expectCase<In, Out>(#name, index++,                                                                        \
                      []([[maybe_unused]] const In *a, [[maybe_unused]] const In *b,                         \
                         [[maybe_unused]] int i) { return lane; });
#include "tests/kernels/simd/vector_cases.inc"
#undef ZOL_CASE
}

TEST(Vectors, TouchNothingBehindTheLanesThatAreAskedFor) {
  test::atEveryLevel([] {
    const int lanes = ZOL_SELECT(wordLanes)();
    const auto expectCopies = [](auto copy, auto element, int lanesAtOnce) {
      using Lane = decltype(element);
      for (int count = 0; count <= 3 * lanesAtOnce; ++count) {
        const auto size = static_cast<size_t>(count);
        std::vector<Lane> from(size), to(size + 1, 77); // the sanitizers watch the end of `from`
        std::iota(from.begin(), from.end(), Lane{1});
        EXPECT_EQ(copy(from.data(), to.data(), count), (count + lanesAtOnce - 1) / lanesAtOnce);
        EXPECT_TRUE(std::equal(from.begin(), from.end(), to.begin())) << count;
        EXPECT_EQ(to.back(), 77U);
      }
    };
    expectCopies(ZOL_SELECT(copyWords), uint32_t{}, lanes);
    expectCopies(ZOL_SELECT(copyBytes), uint8_t{}, 4 * lanes);
  });
}

TEST(Vectors, MoveAcrossBlocksInOrder) {
  test::atEveryLevel([] {
    const int lanes = ZOL_SELECT(wordLanes)();
    const auto size = static_cast<size_t>(lanes);
    std::mt19937 random(2);
    std::vector<uint32_t> words(2 * size), gathered(size), index(size);
    for (int round = 0; round < 1000; ++round) {
      for (uint32_t &word : words)
        word = static_cast<uint32_t>(random());
      std::vector<uint16_t> halves(2 * size);
      ZOL_SELECT(narrowWords)(words.data(), words.data() + lanes, halves.data());
      for (size_t i = 0; i < 2 * size; ++i)
        EXPECT_EQ(halves[i], static_cast<uint16_t>(words[i]));

      for (uint32_t &place : index)
        place = static_cast<uint32_t>(random() % words.size());
      ZOL_SELECT(gatherWords)(words.data(), index.data(), gathered.data());
      for (size_t i = 0; i < size; ++i)
        EXPECT_EQ(gathered[i], words[index[i]]);

      EXPECT_EQ(ZOL_SELECT(sumWords)(words.data()),
                std::accumulate(words.begin(), words.begin() + lanes, 0U));

      const void *from[kMaxVectorBytes / 16];
      void *to[kMaxVectorBytes / 16];
      for (size_t block = 0; block < size / 4; ++block) { // odd places, in reverse
        from[block] = &words[4 * block + 1];
        to[block] = &gathered[4 * (size / 4 - 1 - block)];
      }
      ZOL_SELECT(moveBlocks)(from, to);
      for (size_t block = 0; block < size / 4; ++block)
        EXPECT_EQ(std::memcmp(from[block], to[block], 16), 0);
    }
  });
}

TEST(Vectors, TellEachSetByte) {
  test::atEveryLevel([] {
    const int bytes = 4 * ZOL_SELECT(wordLanes)();
    std::mt19937 random(3);
    for (unsigned round = 0; round < 2000; ++round) {
      std::vector<uint8_t> mask(static_cast<size_t>(bytes));
      std::vector<int> expected;
      const unsigned share = round % 9; // eighths that are set
      for (int i = 0; i < bytes; ++i)
        if (random() % 8 < share) {
          mask[static_cast<size_t>(i)] = 255;
          expected.push_back(i);
        }
      std::vector<int> places(static_cast<size_t>(bytes));
      bool any = false, all = false;
      const int count = ZOL_SELECT(setBytes)(mask.data(), places.data(), &any, &all);
      places.resize(static_cast<size_t>(count));
      EXPECT_EQ(places, expected);
      EXPECT_EQ(any, !expected.empty());
      EXPECT_EQ(all, static_cast<int>(expected.size()) == bytes);
    }
  });
}

TEST(Vectors, SplatKeepsTheSignOfZero) {
  test::atEveryLevel([] {
    const auto lanes = static_cast<size_t>(ZOL_SELECT(wordLanes)());
    for (const double number : {-0.0, 0.0, 1.25}) {
      std::vector<float> splat(lanes);
      ZOL_SELECT(splatNumber)(number, splat.data());
      for (const float value : splat)
        EXPECT_TRUE(value == static_cast<float>(number) && std::signbit(value) == std::signbit(number));
    }
  });
}

} // namespace
} // namespace zol
