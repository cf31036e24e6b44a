// The sound kernels against their literal forms, bit for bit, at every level.

#include "kernels/sound/channel_routes.h"
#include "kernels/sound/crossfade.h"
#include "kernels/sound/tone.h"
#include "plain/audio.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <limits>
#include <random>
#include <vector>

namespace zol {
namespace {

const std::vector<SimdLevel> kLevels = test::levels();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kLeast = std::numeric_limits<float>::denorm_min();

/// The first place where two arrays differ in bits, or -1. One NaN is as good as another.
ptrdiff_t difference(const std::vector<float> &a, const std::vector<float> &b) {
  for (size_t i = 0; i < a.size(); ++i)
    if (std::bit_cast<uint32_t>(a[i]) != std::bit_cast<uint32_t>(b[i]) && (a[i] == a[i] || b[i] == b[i]))
      return static_cast<ptrdiff_t>(i);
  return -1;
}

void expectSine(uint32_t first, size_t frames, unsigned channels, double start, uint32_t rate,
                float frequency, float volume) {
  std::vector<float> expected(frames * channels), actual(frames * channels);
  plain::sineTone(expected.data(), first, frames, channels, start, rate, frequency, volume);
  for (const SimdLevel level : kLevels) {
    capSimdLevel(level);
    sineTone(actual.data(), first, frames, channels, start, rate, frequency, volume);
    EXPECT_EQ(difference(expected, actual), -1)
        << "level " << static_cast<int>(level) << ", frame " << first << " + " << frames << ", channels "
        << channels << ", start " << start << ", rate " << rate << ", frequency " << frequency << ", volume "
        << volume;
  }
}

TEST(Sine, EqualsThePlainForm) {
  test::Dice random(5);
  for (int i = 0; i < 1000; ++i)
    expectSine(random.below(100000), random.below(700), random.below(4), random.scaled(-20, 22),
               8000 + random.below(200000), static_cast<float>(random.scaled(-4, 15)),
               static_cast<float>(random.share()) * 2);
  for (int hour = 0; hour < 30; ++hour) // whole phases, which meet the lowest point exactly
    for (const float frequency : {1.0F, 100.0F, 1000.0F, 12000.0F, 20000.0F})
      expectSine(0, 480, 2, hour * 3600.0, 48000, frequency, 1);
}

TEST(Sine, HasADefinedSampleForEveryArgument) {
  constexpr double kMost = DBL_MAX;
  for (const double start : {0.0, -0.0, -7.5, 1e-310, 1e300, -kMost, double{kInfinity}, double{kNan}})
    for (const uint32_t rate : {0U, 1U, 48000U, UINT32_MAX})
      for (const float frequency : {0.0F, -440.0F, kLeast, FLT_MAX, -kInfinity, kNan})
        for (const float volume : {0.0F, -1.0F, kLeast, FLT_MAX, kInfinity, kNan})
          expectSine(UINT32_MAX - 130, 130, 1, start, rate, frequency, volume);
}

// Phases everywhere up to the limit, most of them beside the extremes and the crossings.
TEST(Sine, BoundsHoldTheLibrarysSine) {
  test::Dice random(5);
  constexpr int kCount = 1024;
  std::vector<float> turns(kCount), low(kCount), high(kCount);
  for (int round = 0; round < 300; ++round) {
    for (float &turn : turns) {
      turn = static_cast<float>(random.scaled(-40, 25));
      if (random.below(4) != 0) {
        turn = std::round(turn * 4) / 4;
        for (uint32_t step = random.below(4); step > 0; --step)
          turn = std::nextafter(turn, 0.0F);
      }
    }
    int open = 0;
    for (const SimdLevel level : kLevels) {
      capSimdLevel(level);
      ZOL_SELECT(sineSwing)(turns.data(), low.data(), high.data(), kCount);
      for (int i = 0; i < kCount; ++i) {
        const auto exact =
            static_cast<float>(std::sin(6.283185307179586 * static_cast<double>(turns[i])) + 1.0);
        ASSERT_TRUE(low[i] <= exact && exact <= high[i]) << turns[i];
        const float apart = high[i] - low[i];
        ASSERT_LE(apart, std::max(exact * 0x1p-23F, 0x1p-47F)) << turns[i];
        open += apart != 0;
      }
    }
    EXPECT_LT(open, kCount);
  }
}

float anySample(test::Dice &random, int kind) {
  switch (kind) {
  case 0: return static_cast<float>(static_cast<int16_t>(random.word())) * 0x1p-15F;
  case 1: return std::bit_cast<float>(random.word());
  case 2: return (static_cast<float>(random.below(5)) - 2) * (random.below(2) != 0 ? kLeast : 0.5F);
  default: return static_cast<float>(random.scaled(-60, 3));
  }
}

TEST(Crossfade, EqualsThePlainForm) {
  test::Dice random(5);
  constexpr Ramp kRamps[] = {
      {0, 0x1p-10F}, {1, -0x1p-9F}, {-3, 0.01F},        {0.999F, 1e-5F}, {0, kLeast},
      {1, 0},        {1, 1e-9F},    {0.5F, -kInfinity}, {kNan, 0.1F},    {FLT_MAX, FLT_MAX}};
  for (int round = 0; round < 3000; ++round) {
    const unsigned channels = round % 40 == 0 ? 700 : random.below(4);
    const size_t frames = random.below(2000) / (channels + 1);
    std::vector<float> first(frames * channels), second(first), expected(first), actual(first);
    const int kind = round % 4;
    for (std::vector<float> *samples : {&first, &second})
      for (float &sample : *samples)
        sample = anySample(random, kind);
    const Ramp ramp =
        round % 3 == 0 ? kRamps[random.below(std::size(kRamps))]
                       : Ramp{static_cast<float>(random.share()), static_cast<float>(random.scaled(-30, -8))};
    const bool fadeOut = random.below(2) != 0, fadeIn = random.below(2) != 0;
    const uint32_t assigned = 1 + random.below(3);
    const float *a = (assigned & 1) != 0 ? first.data() : nullptr;
    const float *b = (assigned & 2) != 0 ? second.data() : nullptr;
    plain::crossfade(expected.data(), frames, channels, a, fadeOut, b, fadeIn, ramp.position, ramp.step);
    const AudioSource outgoing{a, frames, channels}, incoming{b, frames, channels};
    for (const SimdLevel level : kLevels) {
      capSimdLevel(level);
      crossfade(actual.data(), frames, channels, a != nullptr ? &outgoing : nullptr, fadeOut,
                b != nullptr ? &incoming : nullptr, fadeIn, ramp);
      const ptrdiff_t at = difference(expected, actual);
      EXPECT_EQ(at, -1) << "kind " << kind << ", fades " << fadeOut << fadeIn << ", inputs " << assigned
                        << ", ramp " << ramp.position << " " << ramp.step << ", channels " << channels;
    }
  }
}

TEST(Crossfade, MeetsSilenceWhereAnInputHasNoSamples) {
  const std::vector<float> ones(4000, 1.0F);
  const AudioSource whole{ones.data(), 1000, 2};
  std::vector<float> out(2000);
  for (const AudioSource &partial :
       {AudioSource{ones.data(), 700, 2}, AudioSource{ones.data(), 1000, 1}, AudioSource{ones.data(), 900, 3},
        AudioSource{ones.data(), 1, 0}, AudioSource{nullptr, 0, 2}, AudioSource{ones.data(), 2000, 2}}) {
    for (const bool fades : {false, true}) {
      crossfade(out.data(), 1000, 2, &whole, fades, &partial, fades, {0.5F, 0});
      const float all = fades ? 1.0F : 2.0F;
      for (size_t i = 0; i < out.size(); ++i)
        ASSERT_EQ(out[i], partial.holds(i / 2, i % 2) ? all : all / 2) << i;
    }
    crossfade(out.data(), 1000, 2, nullptr, true, &partial, false, {0, 0});
    EXPECT_EQ(out[1999], partial.holds(999, 1) ? 1.0F : 0.0F);
  }
}

TEST(Routing, EqualsThePlainFormAndLeavesTheRest) {
  constexpr float kLeft = 77.0F; // what is found there before
  constexpr size_t kFrames = 37;
  test::Dice random(5);
  for (unsigned inChannels = 0; inChannels < 4; ++inChannels) {
    std::vector<float> in(kFrames * inChannels);
    for (float &sample : in)
      sample = random.below(4) != 0 ? anySample(random, 1 + static_cast<int>(random.below(2))) : FLT_MAX;
    for (unsigned channels = 0; channels < 4; ++channels)
      for (int first = -1; first < 5; ++first)
        for (int second = -1; second < 5; ++second) {
          std::vector<float> expected(kFrames * channels, kLeft), actual(expected);
          for (const size_t held : {kFrames, size_t{20}, size_t{0}}) {
            std::fill(expected.begin(), expected.end(), kLeft);
            std::fill(actual.begin(), actual.end(), kLeft);
            std::vector<float> silent = in; // a short input continues as silence
            std::fill(silent.begin() + static_cast<ptrdiff_t>(held * inChannels), silent.end(), 0.0F);
            for (unsigned c = 0; c < std::min(channels, 2U); ++c)
              plain::routeChannel(expected.data(), c, channels, silent.data(), inChannels, kFrames,
                                  c == 0 ? first : second);
            routeChannels(actual.data(), kFrames, channels, {in.data(), held, inChannels}, first, second);
            ASSERT_EQ(difference(expected, actual), -1)
                << inChannels << " to " << channels << " by " << first << " " << second;
          }
        }
  }
}

} // namespace
} // namespace zol
