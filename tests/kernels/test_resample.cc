// Sound at other steps: against its literal form bit for bit, and as it sounds.

#include "kernels/sound/resample.h"
#include "plain/resample.h"
#include "tests/support/dice.h"

#include <gtest/gtest.h>

#include <bit>

namespace zol {
namespace {

using Sound = std::vector<float>;

Sound readAt(const Sound &sound, double first, double step, size_t frames) {
  Sound out(frames);
  const SoundReader reader(1);
  EXPECT_TRUE(reader);
  reader.read({sound.data(), sound.size(), 1}, first, step, frames, 1, out.data());
  return out;
}

Sound tone(double frequency, size_t frames) {
  Sound sound(frames);
  for (size_t i = 0; i < frames; ++i)
    sound[i] = float(std::sin(2 * std::numbers::pi * frequency / 48000 * double(i)));
  return sound;
}

TEST(SoundReader, EqualsThePlainForm) {
  test::Dice dice(3);
  for (const double step : {1.0, 0.5, 1.37, -1.0, -2.25, 0.0, 16.0, 44100.0 / 48000}) {
    Sound left(300), right(300), both;
    for (size_t i = 0; i < left.size(); ++i) {
      left[i] = float(dice.share() * 2 - 1);
      right[i] = float(dice.share() * 2 - 1);
      both.insert(both.end(), {left[i], right[i]});
    }
    const double first = dice.share() * 500 - 100;
    constexpr size_t kFrames = 70;
    Sound out(3 * kFrames, 9);
    const SoundReader reader(2);
    reader.read({both.data(), left.size(), 2}, first, step, kFrames, 3, out.data());
    for (size_t i = 0; i < kFrames; ++i) {
      const double place = first + double(i) * step;
      const float expected[] = {plain::resampled(left, place, step), plain::resampled(right, place, step), 0};
      for (size_t c = 0; c < 3; ++c)
        ASSERT_EQ(std::bit_cast<uint32_t>(out[3 * i + c]), std::bit_cast<uint32_t>(expected[c]))
            << step << " at " << place << " channel " << c;
    }
  }
}

/// What is left of a sound besides one frequency, in decibels below it.
double cleanness(const Sound &sound, double turn) {
  double s = 0, c = 0;
  for (size_t i = 0; i < sound.size(); ++i) {
    s += double(sound[i]) * std::sin(turn * double(i));
    c += double(sound[i]) * std::cos(turn * double(i));
  }
  s *= 2 / double(sound.size());
  c *= 2 / double(sound.size());
  double rest = 0;
  for (size_t i = 0; i < sound.size(); ++i)
    rest += std::pow(double(sound[i]) - s * std::sin(turn * double(i)) - c * std::cos(turn * double(i)), 2);
  return 10 * std::log10((s * s + c * c) / 2 / (rest / double(sound.size())));
}

TEST(SoundReader, KeepsTonesCleanAndCutsWhatCannotBeHeard) {
  // Whole periods of 5 kHz at 1.37 times the speed: 6850 Hz of 48000.
  const Sound faster = readAt(tone(5000, 20000), 100, 1.37, 9600);
  EXPECT_GT(cleanness(faster, 2 * std::numbers::pi * 6850 / 48000), 80);
  const Sound slower = readAt(tone(5000, 20000), 100, 0.5, 9600);
  EXPECT_GT(cleanness(slower, 2 * std::numbers::pi * 2500 / 48000), 80);
  const Sound gone = readAt(tone(20000, 20000), 500, 2, 9000);
  const Sound even = readAt(Sound(20000, 0.5F), 200.25, -0.73 / 1, 200);
  for (const float sample : gone)
    ASSERT_NEAR(sample, 0, 1e-4);
  for (size_t i = 0; i < 200; ++i)
    ASSERT_NEAR(even[i], 0.5, 0.5e-4) << i;
}

TEST(Frames, AreCopiedFromAnyPlaceAndScaled) {
  const float mono[] = {1, 2, 3}, stereo[] = {1, -1, 2, -2};
  Sound out(10);
  copyFrames({mono, 3, 1}, -1, 5, 2, out.data());
  EXPECT_EQ(out, (Sound{0, 0, 1, 1, 2, 2, 3, 3, 0, 0}));
  copyFrames({stereo, 2, 2}, 1, 3, 3, out.data());
  EXPECT_EQ(Sound(out.begin(), out.begin() + 9), (Sound{2, -2, 0, 0, 0, 0, 0, 0, 0}));
  Sound fading(8, 1);
  scaleFrames(fading.data(), 4, 2, 1, 0);
  EXPECT_EQ(fading, (Sound{1, 1, 0.75F, 0.75F, 0.5F, 0.5F, 0.25F, 0.25F}));
}

} // namespace
} // namespace zol
