// What hashes cannot say of rendered sound: what it sounds like, and what is said where there is none.

#include "tests/apps/zol.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <numeric>
#include <utility>

namespace zol::test {
namespace {

using Sound = std::vector<float>; // interleaved

class Listening : public InFolder {
protected:
  Sound heard(const std::string &words) {
    const std::string bytes = rendered(words);
    Sound sound(bytes.size() / sizeof(float));
    std::memcpy(sound.data(), bytes.data(), sound.size() * sizeof(float));
    return sound;
  }
};

/// Amplitude of the tone of a frequency within the sound, its offset aside (Goertzel's recurrence).
double amplitude(const Sound &sound, double frequency, double rate) {
  const double turn = 2 * std::numbers::pi * frequency / rate;
  const double mean = std::accumulate(sound.begin(), sound.end(), 0.0) / static_cast<double>(sound.size());
  double last = 0, before = 0;
  for (const float sample : sound)
    before = std::exchange(last, sample - mean + 2 * std::cos(turn) * last - before);
  return 2 * std::abs(last - std::polar(1.0, -turn) * before) / static_cast<double>(sound.size());
}

TEST_F(Listening, TheSineHasItsFrequencyAndVolumeAlone) {
  for (const double frequency : {100.0, 440.0, 1234.5, 19000.0}) {
    const Sound tone = heard("'sine audio generator' --audio-rate 48000 --channels 1 --duration 2 "
                             "--set Volume=0.6 --set Frequency=" +
                             std::to_string(frequency));
    ASSERT_EQ(tone.size(), 96000U);
    EXPECT_NEAR(amplitude(tone, frequency, 48000), 0.3, 1e-3) << frequency;
    for (const double other : {0.5, 2.0, 3.0, 1 + 5 / frequency}) // phase in float: about 2^-9
      EXPECT_LT(amplitude(tone, frequency * other, 48000), 3e-3) << frequency;
    EXPECT_GE(*std::min_element(tone.begin(), tone.end()), 0.0F);
    EXPECT_LE(*std::max_element(tone.begin(), tone.end()), 0.6F);
  }
}

TEST_F(Listening, BlocksJoinWithoutAClick) {
  const std::string tone =
      "'sine audio generator' --audio-rate 48000 --channels 1 --duration 0.5 --set Frequency=997";
  const Sound one = heard(tone + " --block 48000");
  const double slope = std::numbers::pi * 997 / 48000; // of (1 + sin) / 2
  for (size_t i = 1; i < one.size(); ++i)
    ASSERT_LE(std::abs(double{one[i]} - one[i - 1]), slope * 1.01) << i;
  // The time of a sample within a block and the block's own are rounded apart: a step of float, no more.
  for (const char *block : {"", " --block 100", " --block 777"}) {
    const Sound blocks = heard(tone + block);
    ASSERT_EQ(blocks.size(), one.size());
    for (size_t i = 0; i < one.size(); ++i)
      ASSERT_NEAR(blocks[i], one[i], 997 * 2 * std::numbers::pi * 0x1p-24) << i << block;
  }
}

TEST_F(Listening, InputsFollowTheFormatOfTheRender) {
  make("low.wav", "-f lavfi -i sine=f=440:r=22050:d=1 -c:a pcm_s16le");
  const Sound up = heard("'simple audio switcher' -i low.wav --audio-rate 96000 --channels 2 --duration 2");
  ASSERT_EQ(up.size(), 4U * 96000);
  Sound left;
  for (size_t i = 0; i < 2U * 96000; i += 2) {
    left.push_back(up[i]);
    ASSERT_EQ(up[i], up[i + 1]) << i;
  }
  // One channel spread over two shares its power.
  EXPECT_NEAR(amplitude(left, 440, 96000), std::sqrt(0.5) / 8, 1e-3);
  EXPECT_LT(amplitude(left, 435, 96000), 1e-3);
  // Beyond the end: silence.
  EXPECT_TRUE(std::all_of(up.begin() + 192200, up.end(), [](float sample) { return sample == 0; }));
  EXPECT_EQ(heard("'simple audio switcher' -i low.wav").size(), 22050U);
  EXPECT_EQ(heard("'simple audio switcher' -i low.wav --frames 5-9").size(), 5U * 22050 / 25);
  EXPECT_EQ(heard("'sine audio generator' --audio-rate 768000 --channels 64 --duration 0.01").size(),
            7680U * 64);
  // A file holds what a pipe is given, and a pipe can be read again.
  const std::string brief = "'sine audio generator' --audio-rate 8000 --channels 2 --duration 0.5";
  const Sound piped = heard(brief);
  render(brief + " -o file.wav");
  EXPECT_EQ(samples("file.wav"), piped);
  EXPECT_EQ(shell(ZOL_BUILD_DIR "/zol render " + brief +
                  " -o - | " ZOL_BUILD_DIR "/zol render 'simple audio switcher' -i - --audio-rate 8000 "
                  "--channels 2 --duration 0.5 -o - | wc -c")
                .out,
            "32000\n");
}

TEST_F(Listening, SaysInOneLineWhatIsMissing) {
  make("tone.wav", "-f lavfi -i sine=d=0.2");
  make("mute.mp4", "-f lavfi -i testsrc2=d=0.2");
  const std::string sine = "render 'sine audio generator' --duration 0.2 -o out.wav ";
  const std::string transition = "render 'audio transition' -o out.wav ";
  const std::string switcher = "render 'audio switcher' -o out.wav ";
  fails(sine + "--fault AudioCreate@1", "at 0 s: Memory allocation error");
  fails(sine + "--fault AudioCreate@3", "at 0.08 s: Memory allocation error");
  fails(transition, "No inputs are assigned");
  fails(transition + "-i tone.wav --fault AudioCreate@2", "at 0.04 s: Memory allocation failure");
  fails(transition + "-i tone.wav --fault InputGetAudio@1", "rendered nothing");
  fails(transition + "-i tone.wav -i tone.wav -i tone.wav", "has 2 inputs");
  fails("render 'simple audio switcher' -o out.wav", "Input not assigned");
  fails("render 'simple audio switcher' -i tone.wav --fault AudioCreate@1 -o out.wav",
        "Memory allocation failure");
  fails(switcher, "No inputs");
  fails(switcher + "-i tone.wav --fault AudioCreate@1", "Memory allocation error");
  fails(switcher + "-i tone.wav -i tone.wav --fault InputGetAudio@2 --fault ErrorCountReport@1",
        "rendered nothing");
  fails(switcher + "-i tone.wav --set 'Level 1=1'", "no field \"Level 1\"");
  fails(switcher + "-i tone.wav --set 'Level 0=loud'", "takes a number");
  fails(switcher + "-i tone.wav --set Master=1.5", "from 0 to 1");
  fails(switcher + "-i tone.wav -i absent.flac", "absent.flac");
  fails(switcher + "-i mute.mp4", "holds no sound");
  fails(switcher + "-i -", "nothing came");
  fails(sine + "--set Frequency=99", "from 100 to 20000");
  fails(sine + "--set Frequency=nan", "from 100 to 20000");
  fails(sine + "--set Volume=-1", "at least 0");
  fails("render 'sine audio generator' -o out.png", "makes sound");
  fails("render 'sine audio generator' ! copy -o out.wav", "cannot be chained");
  for (const char *absurd :
       {"--audio-rate 0", "--audio-rate 768001", "--audio-rate -8000", "--channels 0", "--channels 65",
        "--block 0", "--block -5", "--block 1e30", "--duration 0", "--duration -1", "--duration nan",
        "--duration 1e300", "--rate 0", "--rate inf", "--rate nan"})
    fails("render 'sine audio generator' -o out.wav " + std::string(absurd),
          std::string(absurd).substr(0, std::string(absurd).find(' ')), 2);
}

} // namespace
} // namespace zol::test
