// Listens to what the command renders: spectra, energies, and real sounds sample for sample.

#include "tests/apps/zol.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>

namespace zol::test {
namespace {

constexpr int kRate = 48000;

using Sound = std::vector<float>; // interleaved

class Listening : public InFolder {
protected:
  /// What a command leaves in a file of the name, which is replaced.
  Sound rendered(const std::string &arguments) {
    render(arguments + " -y -o rendered.wav");
    return samples("rendered.wav");
  }

  /// A file as it sounds at a rate and a number of channels.
  Sound heard(const std::string &file, int rate, int channels) {
    make("heard.wav", "-i " + file + " -ar " + std::to_string(rate) + " -ac " + std::to_string(channels) +
                          " -c:a pcm_f32le");
    return samples("heard.wav");
  }
};

Sound channel(const Sound &sound, size_t which, size_t channels) {
  Sound one;
  for (size_t i = which; i < sound.size(); i += channels)
    one.push_back(sound[i]);
  return one;
}

double energy(const Sound &sound, size_t from, size_t to) {
  double sum = 0;
  for (size_t i = from; i < to; ++i)
    sum += double{sound[i]} * sound[i];
  return sum;
}

/// Amplitude of the tone of a frequency within the sound, its offset aside (Goertzel's recurrence).
double amplitude(const Sound &sound, double frequency, double rate) {
  const double turn = 2 * std::numbers::pi * frequency / rate;
  const double mean = std::accumulate(sound.begin(), sound.end(), 0.0) / static_cast<double>(sound.size());
  double last = 0, before = 0;
  for (const float sample : sound)
    before = std::exchange(last, sample - mean + 2 * std::cos(turn) * last - before);
  return 2 * std::abs(last - std::polar(1.0, -turn) * before) / static_cast<double>(sound.size());
}

/// Where the spectrum peaks, to a hundredth of a hertz: the finer the search, the longer the stretch.
double pitch(const Sound &sound, double rate) {
  double best = rate / 4, reach = rate / 4 - 50;
  for (const double step : {20.0, 2.0, 0.2, 0.01}) {
    const auto length = static_cast<ptrdiff_t>(std::min(rate / step, static_cast<double>(sound.size())));
    const Sound part(sound.begin(), sound.begin() + length);
    const double lowest = best - reach, highest = best + reach;
    double loudest = 0;
    for (double f = lowest; f <= highest; f += step)
      if (const double found = amplitude(part, f, rate); found > loudest) {
        loudest = found;
        best = f;
      }
    reach = step;
  }
  return best;
}

void expectNear(const Sound &is, const Sound &expected, double tolerance) {
  ASSERT_EQ(is.size(), expected.size());
  for (size_t i = 0; i < is.size(); ++i)
    ASSERT_NEAR(is[i], expected[i], tolerance) << i;
}

TEST_F(Listening, TheSineHasItsFrequencyAndVolumeAlone) {
  for (const double frequency : {100.0, 440.0, 1234.5, 19000.0}) {
    const Sound tone =
        rendered("'sine audio generator' --audio-rate 48000 --channels 1 --duration 2 --set Volume=0.6 --set "
                 "Frequency=" +
                 std::to_string(frequency));
    ASSERT_EQ(tone.size(), 2U * kRate);
    EXPECT_NEAR(pitch(tone, kRate), frequency, 0.02);
    EXPECT_NEAR(amplitude(tone, frequency, kRate), 0.3, 1e-3) << frequency;
    for (const double overtone : {2.0, 3.0, 0.5})
      EXPECT_LT(amplitude(tone, frequency * overtone, kRate), 3e-3)
          << frequency; // phase in float: about 2^-9
    EXPECT_NEAR(std::accumulate(tone.begin(), tone.end(), 0.0) / (2 * kRate), 0.3, 1e-3);
    EXPECT_GE(*std::min_element(tone.begin(), tone.end()), 0.0F);
    EXPECT_LE(*std::max_element(tone.begin(), tone.end()), 0.6F);
  }
}

TEST_F(Listening, BlocksJoinWithoutAClick) {
  const std::string tone =
      "'sine audio generator' --audio-rate 48000 --channels 2 --duration 1 --set Frequency=997";
  const Sound one = rendered(tone + " --block 48000");
  ASSERT_EQ(one.size(), 2U * kRate);
  const double slope = std::numbers::pi * 997 / kRate; // of (1 + sin) / 2
  for (size_t i = 2; i < one.size(); ++i)
    ASSERT_LE(std::abs(double{one[i]} - one[i - 2]), slope * 1.01) << i;
  expectNear(channel(one, 0, 2), channel(one, 1, 2), 0);
  // The time of a sample within a block and the block's own are rounded apart: a step of float, no more.
  for (const char *block : {"", " --block 100", " --block 777"})
    expectNear(rendered(tone + block), one, 997 * 2 * std::numbers::pi * 0x1p-24);
}

TEST_F(Listening, ASwellMovesEveryHundredFrames) {
  const std::string swell = "'sine audio generator' --audio-rate 48000 --channels 1 --duration 0.5 --set "
                            "Frequency=12000 --set 'Volume=0=0;1=1' --block ";
  const Sound sound = rendered(swell + "24000");
  for (size_t i = 0; i + 400 < sound.size(); i += 400) // phase 1/4: the volume itself
    EXPECT_NEAR(sound[i + 1], static_cast<double>(i) / 24000, 1e-3) << i;
  expectNear(rendered(swell + "100"), sound, 2e-3);
}

TEST_F(Listening, ACrossfadeOfRealSoundsFallsAndRises) {
  const std::string a = media("choir.flac"), b = media("drone.flac");
  if (a.empty() || b.empty())
    GTEST_SKIP() << "scripts/media --all fetches the sounds";
  const std::string span = " --duration 1.5";
  const Sound both = rendered("'audio transition' -i " + a + " -i " + b + span);
  const size_t frames = 44100U * 3 / 2;
  ASSERT_EQ(both.size(), 2 * frames);
  Sound outgoing = heard(a, 44100, 2), incoming = heard(b, 44100, 2), expected(both.size());
  outgoing.resize(both.size());
  incoming.resize(both.size());
  for (size_t i = 0; i < both.size(); ++i) {
    const double r = static_cast<double>(i / 2) / static_cast<double>(frames);
    expected[i] = static_cast<float>(outgoing[i] * (1 - r) + incoming[i] * r);
  }
  expectNear(both, expected, 1e-6);

  const Sound falling = rendered("'audio transition' -i " + a + span);
  const Sound rising =
      rendered("'audio transition' --set Input2=" + b + " --audio-rate 44100 --channels 2" + span);
  ASSERT_EQ(falling.size(), both.size());
  ASSERT_EQ(rising.size(), both.size());
  double lastFall = 1, lastRise = 0;
  for (size_t from = 0, part = both.size() / 10; from + part <= both.size(); from += part) {
    const double fall = energy(falling, from, from + part) / energy(outgoing, from, from + part);
    const double rise = energy(rising, from, from + part) / energy(incoming, from, from + part);
    const double r =
        (static_cast<double>(from) + static_cast<double>(part) / 2) / static_cast<double>(both.size());
    EXPECT_NEAR(std::sqrt(fall), 1 - r, 0.04);
    EXPECT_NEAR(std::sqrt(rise), r, 0.04);
    EXPECT_LT(fall, lastFall);
    EXPECT_GT(rise, lastRise);
    lastFall = fall;
    lastRise = rise;
  }
  std::transform(falling.begin(), falling.end(), rising.begin(), expected.begin(), std::plus<>());
  expectNear(both, expected, 1e-6);
  std::transform(outgoing.begin(), outgoing.end(), incoming.begin(), expected.begin(), std::plus<>());
  expectNear(rendered("'audio transition' -i " + a + " -i " + b + span +
                      " --set FadeIn=0 --set 'FadeOut=Off (as is)'"),
             expected, 0);
}

TEST_F(Listening, ChannelsAreSwappedFoldedAndMuted) {
  const std::string left = media("speech-left.wav"), right = media("speech-right.wav");
  if (left.empty() || right.empty())
    GTEST_SKIP() << "scripts/media --all fetches the speech";
  make("stereo.wav",
       "-i " + left + " -i " + right + " -filter_complex '[0][1]amerge=inputs=2' -ac 2 -c:a pcm_s16le");
  const Sound speech = samples("stereo.wav");
  const Sound l = channel(speech, 0, 2), r = channel(speech, 1, 2);
  ASSERT_GT(energy(l, 0, l.size()), 1);
  ASSERT_GT(energy(r, 0, r.size()), 1);
  const std::string switcher = "'simple audio switcher' -i stereo.wav";
  expectNear(rendered(switcher), speech, 0);
  const std::string swap = switcher + " --set 'Output 1=Input 2' --set 'Second output channel=Input 1'";
  const Sound swapped = rendered(swap);
  expectNear(channel(swapped, 0, 2), r, 0);
  expectNear(channel(swapped, 1, 2), l, 0);
  for (const char *block : {" --block 100", " --block 48000", " --rate 30"})
    expectNear(rendered(swap + block), swapped, 0);
  // Twice swapped is as before.
  expectNear(rendered(swap + " ! 'simple audio switcher' --set 'Output 1=2' --set 'Output 2=1'"), speech, 0);
  const Sound folded = rendered(switcher + " --set 'Output 1=Mix of all inputs' --set 'Output 2=Off'");
  Sound mean;
  std::transform(l.begin(), l.end(), r.begin(), std::back_inserter(mean),
                 [](double a, double b) { return static_cast<float>((a + b) * 0.5); });
  expectNear(channel(folded, 0, 2), mean, 0);
  EXPECT_EQ(energy(channel(folded, 1, 2), 0, l.size()), 0);
}

TEST_F(Listening, TheSwitcherMixesAnyNumberOfInputs) {
  const std::string speech = media("speech-left.wav"), drone = media("drone.flac"),
                    choir = media("choir.flac");
  if (speech.empty() || drone.empty() || choir.empty())
    GTEST_SKIP() << "scripts/media --all fetches the sounds";
  // One channel at 48 kHz, and two at 44.1 kHz of which one file ends before the render does.
  const std::string words =
      "'audio switcher' -i " + speech + " -i " + drone + " -i " + choir +
      " --channels 2 --duration 2 --set 'Level 0=0.8' --set 'Level 2=0=0;1=1' --set Master=0.5";
  const Sound mix = rendered(words);
  const size_t frames = 2U * kRate;
  ASSERT_EQ(mix.size(), 2 * frames);
  Sound in[] = {heard(speech, kRate, 2), heard(drone, kRate, 2), heard(choir, kRate, 2)};
  EXPECT_LT(in[0].size(), mix.size()); // shorter ones end in silence
  EXPECT_GT(in[1].size(), mix.size());
  for (Sound &sound : in)
    sound.resize(mix.size());
  Sound expected(mix.size());
  for (size_t i = 0; i < mix.size(); ++i) {
    const double rising = static_cast<double>(i / 2) / static_cast<double>(frames);
    expected[i] =
        static_cast<float>(std::clamp(0.8 * in[0][i] + 0.5 * in[1][i] + rising * in[2][i], -1.0, 1.0) * 0.5);
  }
  expectNear(mix, expected, 1e-6);
  expectNear(rendered(words + " --block 100"), mix, 1e-6);

  const std::string loud = "'audio switcher' -i " + speech + " --set 'Level 0=20' --set Master=0.25";
  const Sound clamped = rendered(loud);
  EXPECT_EQ(clamped.size(), heard(speech, kRate, 1).size());
  EXPECT_EQ(*std::max_element(clamped.begin(), clamped.end()), 0.25F);
  EXPECT_EQ(*std::min_element(clamped.begin(), clamped.end()), -0.25F);
  expectNear(rendered(loud + " --block 100"), clamped, 0); // levels that stay: blocks do not matter
}

TEST_F(Listening, InputsFollowTheFormatOfTheRender) {
  make("low.wav", "-f lavfi -i sine=f=440:r=22050:d=1 -c:a pcm_s16le");
  const Sound up =
      rendered("'simple audio switcher' -i low.wav --audio-rate 96000 --channels 2 --duration 2");
  ASSERT_EQ(up.size(), 4U * 96000);
  const Sound left = channel(up, 0, 2);
  EXPECT_NEAR(pitch(Sound(left.begin(), left.begin() + 96000), 96000), 440, 0.5);
  // One channel spread over two shares its power.
  EXPECT_NEAR(amplitude(Sound(left.begin(), left.begin() + 96000), 440, 96000), std::sqrt(0.5) / 8, 1e-3);
  expectNear(left, channel(up, 1, 2), 0);
  EXPECT_EQ(energy(left, 96100, left.size()), 0); // beyond the end: silence
  EXPECT_EQ(rendered("'simple audio switcher' -i low.wav").size(), 22050U);
  EXPECT_EQ(rendered("'simple audio switcher' -i low.wav --frames 5-9").size(), 5U * 22050 / 25);
  EXPECT_EQ(rendered("'sine audio generator' --audio-rate 768000 --channels 64 --duration 0.01").size(),
            7680U * 64);
  EXPECT_EQ(rendered("'sine audio generator' --audio-rate 1 --channels 1 --duration 3").size(), 3U);
  const Outcome raw = zol("render 'sine audio generator' --audio-rate 8000 --channels 1 --duration 0.5 -o -");
  const Sound same = rendered("'sine audio generator' --audio-rate 8000 --channels 1 --duration 0.5");
  EXPECT_EQ(raw.out, std::string(reinterpret_cast<const char *>(same.data()), same.size() * sizeof(float)));
  const Outcome piped =
      shell(ZOL_BUILD_DIR "/zol render 'sine audio generator' --audio-rate 8000 --channels 2 "
                          "--duration 0.5 -o - | " ZOL_BUILD_DIR "/zol render 'simple audio switcher' -i - "
                          "--audio-rate 8000 --channels 2 --duration 0.5 -o - | wc -c");
  EXPECT_EQ(piped.out, "32000\n") << piped.err;
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
