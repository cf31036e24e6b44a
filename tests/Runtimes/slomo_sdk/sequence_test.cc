// The engine's life, the choice of frames, assertions, and the engine over a media reader.

#include "Runtimes/slomo_sdk/mySM.h"
#include "tests/Runtimes/slomo_sdk/clip.h"
#include "tests/Runtimes/slomo_sdk/failing_new.h"
#include "tests/support/failing_malloc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <tuple>

namespace zol::test {
namespace {

int id;

TEST(Sequence, CloseForgetsTheSequenceAndKeepsTheFlags) {
  Fast e;
  for (int d = -256; d < 256; ++d)
    EXPECT_EQ(e.m_pSquares[d], unsigned(d * d));
  EXPECT_TRUE(e.m_pSeqID == nullptr && e.m_dNewFPS == 25 && e.m_dOldFPS == 25 && e.m_nBytesPerPixel == 4);
  ASSERT_EQ(e.SetSequence(&id, 17, 9, 50, 12, 3, 4, 1), 0);
  EXPECT_TRUE(e.m_bInterlaced == 1 && e.m_bFieldOrder == 1 && e.m_nBytesPerPixel == 2);
  e.m_nCPUFlags = 6;
  e.Close();
  EXPECT_TRUE(e.m_pSeqID == nullptr && e.m_dNewFPS == 0 && e.m_dOldFPS == 0 && e.m_nOldFrames == 0 &&
              e.m_nNewFrames == 0 && e.m_nWidth == 0 && e.m_nHeight == 0 && e.m_nFormat == 0);
  EXPECT_TRUE(e.m_bInterlaced == 0 && e.m_bFieldOrder == 0 && e.m_nBytesPerPixel == 4 && e.m_nCPUFlags == 6);
  EXPECT_TRUE(e.m_pOutFrame == nullptr && e.m_pMask == nullptr && e.m_pObjectList == nullptr &&
              e.m_pFillStack == nullptr);
}

TEST(Sequence, EachAllocationMayFail) {
  for (int nth = 1; nth <= 4; ++nth) {
    Fast e;
    e.frames = {{0, Frame(640, 1)}, {1, Frame(640, 0xFFFFFFFF)}};
    ASSERT_EQ(e.SetSequence(&id, 16, 16, 1, 2, 0, 0, 0), 0);
    {
      FailingNew failing(nth);
      ASSERT_EQ(e.SetSequence(&id, 32, 20, 1, 2, 0, 0, 0), -1);
    }
    EXPECT_EQ(e.m_pOutFrame != nullptr, nth > 1);
    EXPECT_EQ(e.m_pMask != nullptr, nth > 2);
    EXPECT_EQ(e.m_pObjectList != nullptr, nth > 3);
    EXPECT_EQ(e.m_pFillStack, nullptr);
    for (unsigned mode = 0; mode < 3; ++mode)
      EXPECT_EQ(e.GetFrameToTime(0.5, mode), nullptr);
    EXPECT_EQ(e.GetFrameToTime(0, 0), e.frames[0].data());
    ASSERT_EQ(e.SetSequence(&id, 32, 20, 1, 2, 0, 0, 0), 0);
    EXPECT_EQ(e.GetFrameToTime(0.5, 2), e.m_pOutFrame);
  }
}

TEST(Sequence, RefusesWhatCoordinatesCannotName) {
  Fast e;
  EXPECT_EQ(e.SetSequence(&id, 32769, 1, 25, 1, 0, 0, 0), -1);
  EXPECT_EQ(e.SetSequence(&id, 1, 32769, 25, 1, 0, 0, 0), -1);
  EXPECT_EQ(e.SetSequence(&id, 65538, 1, 25, 1, 0, 0, 1), -1);
  EXPECT_EQ(e.SetSequence(&id, 32768, 32768, 25, 1, 0, 0, 0), -1); // area of 2^32
  EXPECT_EQ(e.SetSequence(&id, 0xFFFFFFFF, 0xFFFFFFFF, 25, 1, 0, 0, 0), -1);
  EXPECT_EQ(e.SetSequence(&id, 32768, 1, 25, 1, 0, 0, 0), 0);
  EXPECT_EQ(e.SetSequence(&id, 65536, 2, 25, 1, 1, 0, 1), 0);
  for (const auto &[width, height] : {std::pair{0u, 0u}, {0u, 9u}, {9u, 0u}, {1u, 1u}}) {
    ASSERT_EQ(e.SetSequence(&id, width, height, 1, 2, 1, 0, 1), 0);
    e.frames = {{0, Frame(16, 5)}, {1, Frame(16, 0x80808080)}};
    for (unsigned mode = 0; mode < 3; ++mode)
      EXPECT_EQ(e.GetFrameToTime(0.8, mode), e.m_pOutFrame);
  }
}

TEST(Sequence, FramesAskedAndAnswered) {
  const unsigned width = 8, height = 4;
  const auto flat = [&](uint32_t word) { return Frame(width * height, word); };
  struct Case {
    double time;
    std::vector<unsigned> there;
  };
  const double inf = HUGE_VAL, nan = NAN;
  const Case cases[] = {{5.25, {5, 6}},
                        {5.25, {3, 6}},
                        {5.25, {5, 9}},
                        {5.25, {5}},
                        {5.25, {9}},
                        {5.25, {}},
                        {5, {5, 6}},
                        {2.5, {40}},
                        {0.5, {1}},
                        {0.5, {0}},
                        {-0.5, {0, 1}},
                        {-1.5, {0, 1}},
                        {1e300, {0, 1}},
                        {inf, {0, 1}},
                        {-inf, {0, 1}},
                        {nan, {0, 1}},
                        {4e9, {4000000000u, 4000000001u}},
                        {5e9, {705032704, 705032705}},
                        {4294967295.5, {4294967295u, 0}},
                        {8.999999999, {8, 9}},
                        {13.5, {6, 21}},
                        {13.5, {14, 5}}};
  for (const unsigned interlaced : {0, 1})
    for (const double rate : {1.0, 0.0, -2.0, 1e30, double{NAN}, 25.0})
      for (const Case &c : cases) {
        Fast fast;
        Plain plain;
        for (const unsigned frame : c.there)
          fast.frames[frame] = plain.frames[frame] = flat(frame * 0x03050709);
        ASSERT_EQ(fast.SetSequence(&id, width, height, rate, 1, interlaced, 1, 0), 0);
        plain.SetSequence(&id, width, height, rate, 1, interlaced, 1, 0);
        const auto *p = static_cast<uint32_t *>(fast.GetFrameToTime(c.time, 0));
        const auto *q = static_cast<uint32_t *>(plain.GetFrameToTime(c.time, 0));
        ASSERT_EQ(fast.asked, plain.asked) << c.time << " at " << rate;
        ASSERT_EQ(p == nullptr, q == nullptr);
        ASSERT_TRUE(p == nullptr || std::equal(p, p + width * height, q)) << c.time << " at " << rate;
        for (const auto &[number, frame] : fast.frames) // the provider's own, not a copy
          ASSERT_EQ(p == frame.data(), q == plain.frames[number].data());
      }
}

TEST(Sequence, FrameNumbersGoByTheNewRate) {
  Fast e;
  ASSERT_EQ(e.SetSequence(&id, 4, 4, 10, 2, 0, 0, 0), 0);
  e.m_dNewFPS = 40;
  e.GetFrameToNum(0x80000001u, 0);
  EXPECT_EQ(e.asked.front(), 0x80000001u / 4);
}

TEST(SequenceDeathTest, AssertionsNameSourceLineAndFunction) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  Fast e;
  int vec[2] = {0, 0};
  EXPECT_DEATH(e.SetSequence(nullptr, 1, 1, 1, 1, 0, 0, 0),
               "Runtimes/slomo_sdk/SlowMotion:150: .*SetSequence.*`pSeqID'");
  EXPECT_DEATH(e.GetFrameToTime(0, 0), "Runtimes/slomo_sdk/SlowMotion:273: .*GetFrameToTime.*`m_pSeqID'");
  EXPECT_DEATH(e.GetVector(nullptr, nullptr, 1, 1, 4, 0, 0, 1, 1, vec),
               "Runtimes/slomo_sdk/SlowMotion:843: .*GetVector.*`pBuf1'");
  EXPECT_DEATH(e.GetVector(&id, nullptr, 1, 1, 4, 0, 0, 1, 1, vec),
               "Runtimes/slomo_sdk/SlowMotion:844: .*GetVector.*`pBuf2'");
  e.Close(); // the rate is asserted before the sequence
  EXPECT_DEATH(e.GetFrameToNum(0, 0), "Runtimes/slomo_sdk/SlowMotion:418: .*GetFrameToNum.*`m_dNewFPS'");
}

// ---- The engine over a media reader ----

struct Media {
  std::vector<double> times;
  uint32_t pixels[4] = {1, 2, 3, 4};
  bool fails = false;
};

pic *fetch(t_ZoHostInfo *context, void *handle, double time) {
  auto *media = static_cast<Media *>(handle);
  EXPECT_TRUE(context->Width == 2 && context->Height == 2 && context->FrameTime == 7);
  media->times.push_back(time);
  if (media->fails)
    return nullptr;
  auto *picture = static_cast<pic *>(std::calloc(1, sizeof(pic)));
  picture->Pixels = reinterpret_cast<_color_t *>(media->pixels);
  return picture;
}

TEST(MediaEngine, CachesFramesNewestFirst) {
  t_ZoHostInfo host{};
  host.Width = 100;
  host.FrameTime = 7;
  Media media;
  mySM engine(&host, fetch, &media, 4, 2, 2, 0, 10);
  EXPECT_EQ(engine.m_pCache, nullptr);
  EXPECT_EQ(engine.FrameProvider(&id, 3), media.pixels);
  EXPECT_EQ(engine.FrameProvider(&id, 0x80000000u), media.pixels);
  EXPECT_EQ(engine.FrameProvider(&id, 3), media.pixels);
  EXPECT_EQ(media.times, (std::vector<double>{0.75, 536870912.0}));
  media.fails = true;
  EXPECT_EQ(engine.FrameProvider(&id, 9), nullptr);
  media.fails = false;
  {
    FailingMalloc failing(1);
    EXPECT_EQ(engine.FrameProvider(&id, 9), nullptr);
  }
  ASSERT_NE(engine.m_pCache, nullptr);
  SFrameNode *newest = engine.m_pCache, *oldest = newest->next;
  EXPECT_TRUE(newest->frame == 0x80000000u && oldest->frame == 3 && oldest->prev == newest);
  EXPECT_TRUE(newest->prev == nullptr && oldest->next == nullptr);
  for (SFrameNode *node : {newest, oldest}) {
    std::free(node->picture);
    std::free(node);
  }
}

TEST(Processor, HasMmx) { EXPECT_EQ(GetCPUProp(), 1u); }

#if defined(__i386__)
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
TEST(Layout, FieldsFollowThePointerToTheProvider) {
#define ZOL_FIELD(name) std::tuple{#name, offsetof(CSlowMotion, name), sizeof(CSlowMotion::name)}
  size_t at = 4;
  for (const auto &[name, offset, size] :
       {ZOL_FIELD(m_pSeqID),      ZOL_FIELD(m_dNewFPS),        ZOL_FIELD(m_dOldFPS),
        ZOL_FIELD(m_bInterlaced), ZOL_FIELD(m_bFieldOrder),    ZOL_FIELD(m_nFormat),
        ZOL_FIELD(m_nWidth),      ZOL_FIELD(m_nHeight),        ZOL_FIELD(m_nOldFrames),
        ZOL_FIELD(m_nNewFrames),  ZOL_FIELD(m_nBytesPerPixel), ZOL_FIELD(m_nCPUFlags),
        ZOL_FIELD(m_pOutFrame),   ZOL_FIELD(m_pFrameA),        ZOL_FIELD(m_pFrameB),
        ZOL_FIELD(m_SquareTable), ZOL_FIELD(m_pSquares),       ZOL_FIELD(m_pMask),
        ZOL_FIELD(m_pObjectList), ZOL_FIELD(m_pFillStack)}) {
    EXPECT_EQ(offset, at) << name;
    at += size;
  }
#undef ZOL_FIELD
}
#endif

} // namespace
} // namespace zol::test
