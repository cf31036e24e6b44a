// The sound plug-ins' common code: what is heard, in blocks of any length, without a click and without
// memory.

#include "bridges/catalogue/catalogue.h"
#include "bridges/sound/ports.h"
#include "tests/bridges/counted_memory.h"
#include "tests/support/dice.h"
#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

namespace zol::bridge {
namespace {

constexpr double kRate = 48000;

const SoundPlugin &plugin(const std::string &id) {
  for (const SoundPlugin &known : soundPlugins())
    if (known.id == id)
      return known;
  throw std::runtime_error(id);
}

/// A plug-in with all its ports connected.
class Bench {
public:
  explicit Bench(const SoundPlugin &plugin, size_t frames, double rate = kRate) : ports_(plugin, rate) {
    for (size_t i = 0; i < 2 * plugin.inputs.size(); ++i) {
      in.emplace_back(frames);
      for (size_t k = 0; k < frames; ++k)
        in.back()[k] = static_cast<float>(std::sin(0.01 * static_cast<double>((i + 1) * k)) / 2);
    }
    out.assign(2, std::vector<float>(frames, 9));
    for (const Control &control : plugin.controls)
      controls.push_back(static_cast<float>(control.standard));
    ports_.start();
  }

  /// The block from a frame on; `inPlace` where the first input's memory is the output's too.
  void run(size_t first, size_t frames, bool inPlace = false) {
    size_t port = 0;
    for (auto &channel : in)
      ports_.connect(port++, channel.data() + first);
    for (size_t c = 0; c < out.size(); ++c)
      ports_.connect(port++, inPlace ? in[c].data() + first : out[c].data() + first);
    for (float &control : controls)
      ports_.connect(port++, &control);
    ports_.run(frames);
  }

  std::vector<std::vector<float>> in, out;
  std::vector<float> controls;

private:
  Ports ports_;
};

/// The greatest step from a sample to the next.
float greatestStep(const std::vector<float> &samples) {
  float most = 0;
  for (size_t i = 1; i < samples.size(); ++i)
    most = std::max(most, std::abs(samples[i] - samples[i - 1]));
  return most;
}

TEST(SoundPlugins, PortsAreThoseOfTheFile) {
  std::ostringstream text;
  for (const SoundPlugin &known : soundPlugins()) {
    text << known.id << ' ' << known.number << ' ' << known.inputs.size() << " inputs\n";
    for (const Control &control : known.controls)
      text << "  " << control.symbol << ' ' << control.least << ' ' << control.most << ' ' << control.standard
           << ' ' << control.items.size() << " items\n";
  }
  const std::string file = ZOL_SOURCE_DIR "/tests/bridges/sound.txt";
  if (test::writesGolden())
    std::ofstream(file) << text.str();
  std::ifstream stream(file);
  std::ostringstream kept;
  kept << stream.rdbuf();
  EXPECT_EQ(text.str(), kept.str());
  for (const host::Effect &effect : catalogue().registry().effects())
    if (effect.renderAudio != nullptr && effect.renderVideo == nullptr) {
      EXPECT_TRUE(std::any_of(soundPlugins().begin(), soundPlugins().end(), [&](const SoundPlugin &known) {
        return known.effect == &effect;
      })) << effect.name;
    }
}

TEST(SoundPlugins, SwitchersRouteInPlaceAndInAnyBlocks) {
  constexpr size_t kFrames = 5000;
  for (const char *id : {"zol_simple_audio_switcher", "zol_audio_switcher", "zol_audio_transition"}) {
    SCOPED_TRACE(id);
    Bench whole(plugin(id), kFrames), parts(plugin(id), kFrames), inPlace(plugin(id), kFrames);
    whole.run(0, kFrames);
    inPlace.run(0, kFrames, true);
    test::Dice dice(5);
    for (size_t first = 0; first < kFrames;) {
      const size_t count = std::min<size_t>(kFrames - first, static_cast<size_t>(dice.below(700)));
      parts.run(first, count);
      first += count;
    }
    EXPECT_EQ(whole.out, parts.out);
    EXPECT_EQ(whole.out[0], inPlace.in[0]);
    EXPECT_EQ(whole.out[1], inPlace.in[1]);
  }
  Bench routed(plugin("zol_simple_audio_switcher"), 100);
  routed.controls = {2, 0};
  routed.run(0, 100);
  EXPECT_EQ(routed.out[0], routed.in[1]);
  EXPECT_EQ(routed.out[1], std::vector<float>(100, 0));
}

TEST(SoundPlugins, TransitionGoesFromTheFirstInputToTheSecond) {
  Bench bench(plugin("zol_audio_transition"), 4000);
  bench.controls.back() = 0;
  bench.run(0, 1000);
  EXPECT_TRUE(std::equal(bench.in[0].begin(), bench.in[0].begin() + 1000, bench.out[0].begin()));
  bench.controls.back() = 1;
  bench.run(1000, 1000); // moves over this block
  bench.run(2000, 2000);
  EXPECT_TRUE(std::equal(bench.in[2].begin() + 2000, bench.in[2].end(), bench.out[0].begin() + 2000));
  EXPECT_LT(greatestStep(bench.out[0]), 0.03);
}

TEST(SoundPlugins, SineIsContinuousOverBlocksAndChanges) {
  constexpr size_t kFrames = 40000;
  Bench bench(plugin("zol_sine_audio_generator"), kFrames);
  bench.controls[0] = 200;
  test::Dice dice(6);
  for (size_t first = 0, block = 0; first < kFrames; ++block) {
    const size_t count = std::min<size_t>(kFrames - first, 1 + static_cast<size_t>(dice.below(900)));
    bench.run(first, count);
    first += count;
    if (block % 8 == 7)
      bench.controls = {block % 16 == 7 ? 230.0F : 200.0F, block % 16 == 7 ? 0.5F : 1.0F};
  }
  // A tone of 230 Hz between 0 and 1 moves by 0.015 a frame; a fade over 480 frames adds 0.002.
  EXPECT_LT(greatestStep(bench.out[0]), 0.02);
  EXPECT_GT(*std::max_element(bench.out[0].begin(), bench.out[0].end()), 0.9);
}

TEST(SoundPlugins, AsksForNoMemoryWhileItPlays) {
  for (const SoundPlugin &known : soundPlugins()) {
    SCOPED_TRACE(known.id);
    Bench bench(known, 3000);
    const size_t before = test::allocations();
    for (size_t block = 0; block < 3; ++block) {
      for (size_t i = 0; i < bench.controls.size(); ++i)
        bench.controls[i] = block % 2 == 0 ? std::numeric_limits<float>::quiet_NaN() : 1e9F;
      bench.run(block * 1000, 1000);
    }
    EXPECT_EQ(test::allocations(), before);
    EXPECT_TRUE(
        std::all_of(bench.out[0].begin(), bench.out[0].end(), [](float s) { return std::isfinite(s); }));
  }
}

} // namespace
} // namespace zol::bridge
