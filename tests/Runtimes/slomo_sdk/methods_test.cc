// Frames and building blocks against the plain form, at every level.

#include "kernels/simd/levels.h"
#include "tests/Runtimes/slomo_sdk/clip.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

namespace zol::test {
namespace {

struct Sequence {
  unsigned width, height, interlaced, order, format;
  [[nodiscard]] unsigned words() const { return (width * (format == 1 ? 2 : 4) + 3) / 4; }
};

std::ostream &operator<<(std::ostream &out, const Sequence &s) {
  return out << s.width << "x" << s.height << " interlaced " << s.interlaced << " order " << s.order
             << " format " << s.format;
}

class EveryLevel : public testing::TestWithParam<SimdLevel> {
protected:
  void SetUp() override { capSimdLevel(GetParam()); }
  void TearDown() override { capSimdLevel(kWidestLevel); }
};
INSTANTIATE_TEST_SUITE_P(Levels, EveryLevel, testing::ValuesIn(test::levels()));

/// A pair of one of all kinds: unrelated, moving, flat, dark, and such whose mixtures look like marks.
FramePair anyPair(unsigned words, unsigned rows, unsigned seed) {
  Scenes scenes(words, rows, seed);
  const int dx = scenes.between(-12, 12), dy = scenes.between(-9, 9);
  switch (seed % 8) {
  case 0: return scenes.noise(0, 255);
  case 1: return scenes.texture(dx, dy, 0);
  case 2: return scenes.texture(dx, dy, 1);
  case 3: return scenes.noise(127, 129);
  case 4: return scenes.discs(6, {0xFF404040, 0xFF0000C0, 0xFF00C000, 0xFF101010});
  case 5: return scenes.discs(40, {0x00000000, 0x01000000, 0x21202020, 0x05050505});
  case 6: return scenes.noise(20, 44);
  default: {
    FramePair pair = scenes.discs(20, {0x21202020, 0x01000000, 0x00200000});
    const FramePair grain = scenes.noise(0, 1);
    for (size_t i = 0; i < pair.a.size(); ++i)
      pair.a[i] ^= grain.a[i] & 0x01000001;
    return pair;
  }
  }
}

template <class Run> void forRandomSequences(unsigned from, unsigned count, Run run) {
  for (unsigned seed = from; seed < from + count; ++seed) {
    Scenes dice(1, 1, seed * 977 + 5);
    const Sequence s{unsigned(dice.between(1, 150)), unsigned(dice.between(1, 110)),
                     unsigned(dice.between(0, 1)), unsigned(dice.between(0, 1)),
                     unsigned(dice.between(0, 2))};
    SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << s);
    run(s, seed, dice);
    if (testing::Test::HasFailure())
      return;
  }
}

template <class Engine> void open(Engine &engine, const Sequence &s, double fps = 25) {
  static int id;
  ASSERT_EQ(engine.SetSequence(&id, s.width, s.height, fps, 2, s.interlaced, s.order, s.format), 0);
}

Frame copyOf(const void *frame, const Sequence &s) {
  Frame copy(size_t{s.words()} * s.height);
  std::memcpy(copy.data(), frame, copy.size() * 4);
  return copy;
}

TEST_P(EveryLevel, FramesAreThePlainOnes) {
  forRandomSequences(0, 96, [](const Sequence &s, unsigned seed, Scenes &dice) {
    Fast fast;
    Plain plain;
    open(fast, s, 1), open(plain, s, 1);
    const FramePair pair = anyPair(s.words(), s.height, seed);
    fast.frames = plain.frames = {{0, pair.a}, {1, pair.b}};
    for (const int w : {1, 40, 600, 16384, 32767, dice.between(0, 32767), dice.between(0, 32767)})
      for (unsigned mode = 0; mode < 4; ++mode)
        ASSERT_EQ(copyOf(fast.GetFrameToTime(w / 32768.0, mode), s),
                  copyOf(plain.GetFrameToTime(w / 32768.0, mode), s))
            << "weight " << w << " mode " << mode;
  });
}

TEST_P(EveryLevel, LargeFramesAreThePlainOnes) {
  const Sequence s{300, 200, 0, 0, 0};
  Scenes scenes(s.words(), s.height, 9);
  for (const FramePair &pair :
       {scenes.texture(31, -17, 1), scenes.noise(126, 130), scenes.texture(-60, 44, 0),
        scenes.discs(30, {0xFF202020, 0xFF8080C0, 0xFF20E000, 0xFFFF1080})}) {
    Fast fast;
    Plain plain;
    open(fast, s, 1), open(plain, s, 1);
    fast.frames = plain.frames = {{0, pair.a}, {1, pair.b}};
    for (const unsigned mode : {1, 2})
      ASSERT_EQ(copyOf(fast.GetFrameToTime(0.4, mode), s), copyOf(plain.GetFrameToTime(0.4, mode), s))
          << mode;
  }
}

// The engine searches a pair once, and knows it again by its bytes.
TEST(Pairs, ChangedInPlaceAreSearchedAnew) {
  forRandomSequences(900, 8, [](const Sequence &s, unsigned seed, Scenes &dice) {
    Fast fast;
    Plain plain;
    open(fast, s, 1), open(plain, s, 1);
    FramePair pair = anyPair(s.words(), s.height, 1 + seed % 2);
    fast.frames = {{0, pair.a}, {1, pair.b}, {2, pair.a}};
    for (const int changes : {0, 1, 40}) {
      for (int i = 0; i < changes; ++i)
        fast.frames[dice.between(0, 1)][size_t(dice.between(0, int(pair.a.size()) - 1))] ^= 0x00FFFFFF;
      plain.frames = fast.frames;
      for (const double time : {0.3, 0.45, 0.9, 1.4, 0.8})
        ASSERT_EQ(copyOf(fast.GetFrameToTime(time, 1), s), copyOf(plain.GetFrameToTime(time, 1), s))
            << changes << " changes, at " << time;
    }
  });
}

TEST_P(EveryLevel, FramesDoNotDependOnScratchMemory) {
  forRandomSequences(300, 24, [](const Sequence &s, unsigned seed, Scenes &) {
    Fast rich, poor;
    open(rich, s, 1), open(poor, s, 1);
    const FramePair pair = anyPair(s.words(), s.height, seed);
    rich.frames = poor.frames = {{0, pair.a}, {1, pair.b}};
    for (const unsigned mode : {1, 2}) {
      const Frame expected = copyOf(rich.GetFrameToTime(0.7, mode), s);
      const FailingMalloc failing(1);
      ASSERT_EQ(copyOf(poor.GetFrameToTime(0.7, mode), s), expected) << mode;
    }
  });
}

TEST_P(EveryLevel, BuildingBlocksAreThePlainOnes) {
  forRandomSequences(600, 64, [](const Sequence &s, unsigned seed, Scenes &dice) {
    Fast fast;
    Plain plain;
    open(fast, s), open(plain, s);
    FramePair pair = anyPair(s.words(), s.height, seed);
    const unsigned words = s.words(), rows = s.height, stride = words * 4;
    const unsigned x = unsigned(dice.between(0, int(words) - 1)),
                   y = unsigned(dice.between(0, int(rows) - 1));

    const unsigned bw = unsigned(dice.between(0, int(words - x))),
                   bh = unsigned(dice.between(0, int(rows - y)));
    const unsigned limit = unsigned(dice.between(0, 4000)) * unsigned(dice.between(0, 4000));
    ASSERT_EQ(fast.ComputeMSE(&pair.a[y * words + x], &pair.b[y * words + x], stride, bw, bh, limit),
              plain.ComputeMSE(&pair.a[y * words + x], &pair.b[y * words + x], stride, bw, bh, limit));
    int v0[2] = {dice.between(-20, 20), dice.between(-20, 20)}, v1[2] = {v0[0], v0[1]};
    ASSERT_EQ(fast.GetVector(pair.a.data(), pair.b.data(), words, rows, stride, x, y, bw, bh, v0),
              plain.GetVector(pair.a.data(), pair.b.data(), words, rows, stride, x, y, bw, bh, v1));
    ASSERT_TRUE(v0[0] == v1[0] && v0[1] == v1[1]);

    Frame m0(pair.a.size(), plain::kChanged), m1 = m0, d0 = pair.a, d1 = pair.a;
    for (size_t i = 0; i < m0.size(); i += 3)
      m0[i] = m1[i] = pair.a[i];
    SObjectData o0, f0;
    Plain::ObjectData o1;
    ASSERT_EQ(fast.GetObjectData(pair.b.data(), m0.data(), words, rows, stride, x, y, &o0),
              plain.GetObjectData(pair.b.data(), m1.data(), words, rows, stride, x, y, &o1));
    ASSERT_TRUE(std::memcmp(&o0, &o1, sizeof o0) == 0 && m0 == m1);
    const unsigned key = pair.b[y * words + x] & plain::kKeyBits;
    f0 = o0;
    ASSERT_EQ(fast.FindObject(pair.a.data(), words, rows, stride, key, &f0, x, y, v0, m0.data()),
              plain.FindObject(pair.a.data(), words, rows, stride, key, &o1, x, y, v1, m1.data()));
    ASSERT_TRUE(v0[0] == v1[0] && v0[1] == v1[1] && m0 == m1);

    ASSERT_EQ(fast.GetObject(m0.data(), pair.b.data(), words, rows, stride, x, y), 0u);
    plain.GetObject(m1.data(), pair.b.data(), words, rows, stride, x, y);
    ASSERT_EQ(m0, m1);
    int to[2] = {dice.between(-30, 30), dice.between(-30, 30)};
    ASSERT_EQ(fast.MoveObject(d0.data(), pair.b.data(), m0.data(), words, rows, stride, v0, to, y), 0u);
    plain.MoveObject(d1.data(), pair.b.data(), m1.data(), words, rows, stride, v1, to, y);
    const unsigned w = unsigned(dice.between(0, 32768));
    fast.InterpolateObject(d0.data(), pair.a.data(), pair.b.data(), m0.data(), words, rows, stride, w, x, y);
    plain.InterpolateObject(d1.data(), pair.a.data(), pair.b.data(), m1.data(), words, rows, stride, w, x, y);
    ASSERT_TRUE(d0 == d1 && m0 == m1);

    for (const unsigned field : {0, 1}) { // the field that is not made stays as it is
      fast.StaticSel(d0.data(), pair.a.data(), pair.b.data(), w, field);
      plain.StaticSel(d1.data(), pair.a.data(), pair.b.data(), w, field);
      ASSERT_EQ(d0, d1);
      fast.Interpol(d0.data(), pair.b.data(), pair.a.data(), 32768 + w, field);
      plain.Interpol(d1.data(), pair.b.data(), pair.a.data(), 32768 + w, field);
      ASSERT_EQ(d0, d1);
    }
  });
}

// A plane of one key pushes every word once, which the stack holds; the sanitizers watch its ends.
TEST_P(EveryLevel, FillStackHoldsTheWorstFills) {
  for (const unsigned format : {0, 1}) {
    const Sequence s{64, 48, 0, 0, format};
    Fast fast;
    open(fast, s);
    const Frame plane(size_t{s.words()} * s.height, 0x40404040);
    Frame marks(plane.size(), plain::kChanged);
    SObjectData data;
    EXPECT_EQ(fast.GetObjectData(plane.data(), marks.data(), s.words(), s.height, s.words() * 4,
                                 s.words() / 2, 20, &data),
              plane.size());
    // A frame beyond the sequence's is not followed further than the stack reaches.
    const Frame larger(4 * plane.size() * 4, 0x40404040);
    marks.assign(larger.size(), plain::kChanged);
    EXPECT_GT(fast.GetObjectData(larger.data(), marks.data(), s.words() * 4, s.height * 4, s.words() * 16, 0,
                                 0, &data),
              31u);
  }
}

// With the fast paths switched off in the flags nothing is mixed and no block is found.
TEST(Methods, FlagBitSwitchesMixingAndBlockSearchOff) {
  const Sequence s{64, 48, 0, 0, 0};
  Fast fast;
  Plain plain;
  open(fast, s), open(plain, s);
  fast.m_nCPUFlags = plain.flags = 1;
  const FramePair pair = Scenes(64, 48, 1).texture(3, 1, 0);
  Frame d0(pair.a.size(), 7), d1 = d0;
  fast.Vector(d0.data(), pair.a.data(), pair.b.data(), 20000, 0);
  EXPECT_EQ(d0, d1);
  fast.Object(d0.data(), pair.a.data(), pair.b.data(), 20000, 0);
  plain.Object(d1.data(), pair.a.data(), pair.b.data(), 20000, 0);
  EXPECT_EQ(d0, d1);
  int vec[2] = {2, 3};
  EXPECT_EQ(fast.GetVector(pair.a.data(), pair.b.data(), 64, 48, 256, 0, 0, 16, 16, vec), 0xFFFFFFFFu);
  EXPECT_TRUE(vec[0] == 2 && vec[1] == 3);
}

} // namespace
} // namespace zol::test
