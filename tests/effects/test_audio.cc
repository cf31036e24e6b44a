// The audio effects through the host's services: what they give, and their calls in order.

#include "frame/effects.h"
#include "plain/audio.h"
#include "tests/support/declared.h"
#include "tests/support/sound.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using host::Service;
using host::Session;
using test::Sound;
using Samples = std::vector<float>;
using Texts = std::vector<std::string>;

/// An effect after its declaration, as a host works with it.
struct Effect : Session {
  explicit Effect(int (*declare)(t_ZoHostInfo *)) : Session("Halvenor"), callbacks(declare) {}

  Samples render() { return test::taken(*this, callbacks.renderAudio(info())); }
  Texts traced(int (*callback)(t_ZoHostInfo *)) {
    trace.clear();
    tracing = true;
    EXPECT_EQ(callback(info()), 1);
    tracing = false;
    return std::move(trace);
  }
  Texts tracedRender() {
    trace.clear();
    tracing = true;
    render();
    tracing = false;
    return std::move(trace);
  }
  void setNumber(int field, int item, double value) { parameters.numbers.get(field, item)->set(0, {value}); }
  void setInput(int field, Sound *sound) {
    *parameters.inputs.get(field, 0) = {sound != nullptr ? &sound->clip : nullptr};
  }

  test::Callbacks callbacks;
};

// ---- Sine Audio Generator ----

TEST(SineGenerator, ReadsItsCurvesEveryHundredFrames) {
  Effect effect(ProcessAudioSineGeneratorDeclare);
  effect.callbacks.init(effect.info());
  effect.info()->ClipStart = -2;
  effect.info()->ClipEnd = 6;
  test::setBlock(effect, 2, 250, 250, 1);
  EXPECT_EQ(effect.tracedRender(),
            (Texts{"AudioCreate(2, 3, 250, 1)", "ParamGetFloat(0, 0, 0.5)", "ParamGetFloat(1, 0, 0.5)",
                   "ParamGetFloat(0, 0, 0.55)", "ParamGetFloat(1, 0, 0.55)", "ParamGetFloat(0, 0, 0.6)",
                   "ParamGetFloat(1, 0, 0.6)"}));
  test::setBlock(effect, 2, 0, 250, 1);
  EXPECT_EQ(effect.tracedRender(), Texts{"AudioCreate(2, 2, 250, 1)"});
}

TEST(SineGenerator, FollowsTheCurvesAndJoinsBlocks) {
  Effect effect(ProcessAudioSineGeneratorDeclare);
  effect.parameters.numbers.get(0, 0)->set(0, {100});
  effect.parameters.numbers.get(0, 0)->set(1, {2000});
  effect.setNumber(1, 0, 1.5);
  for (const auto &[rate, channels] :
       {std::pair{48000U, 2U}, {44100U, 1U}, {8000U, 6U}, {0U, 2U}, {48000U, 0U}})
    for (const unsigned frames : {1U, 100U, 1920U}) {
      test::setBlock(effect, 0.25, frames, rate, channels);
      const unsigned created = rate == 0 ? 0 : frames;
      Samples expected;
      for (unsigned first = 0; first < created; first += 100) {
        const double length = effect.info()->BlockEnd - 0.25;
        const double time = 0.25 + static_cast<double>(static_cast<float>(first)) / created * length;
        Samples run(std::min(100U, created - first) * channels);
        plain::sineTone(run.data(), first, std::min(100U, created - first), channels, 0.25, rate,
                        static_cast<float>(effect.parameters.numbers.get(0, 0)->at(time)[0]), 1.5F);
        expected.insert(expected.end(), run.begin(), run.end());
      }
      EXPECT_EQ(effect.render(), expected);
    }

  Effect steady(ProcessAudioSineGeneratorDeclare);
  steady.callbacks.init(steady.info());
  test::setBlock(steady, 0, 192, 48000, 1);
  const Samples whole = steady.render();
  EXPECT_EQ(whole[0], 0.5F);
  test::setBlock(steady, 0.002, 96, 48000, 1);
  const Samples half = steady.render();
  for (size_t i = 0; i < half.size(); ++i)
    EXPECT_NEAR(half[i], whole[i + 96], 1e-5);
}

// ---- Audio Switcher ----

TEST(AudioSwitcher, DialogKeepsOneLevelForEachInput) {
  Effect effect(ProcessAudioSwitcherDeclare);
  const auto edited = [&](int item) {
    effect.trace.clear();
    effect.tracing = true;
    EXPECT_EQ(effect.callbacks.onDialogItemEdit(effect.info(), item), 0);
    effect.tracing = false;
    return std::move(effect.trace);
  };
  const std::string display = ", 16760960, 1)"; // 128, 192, 255, 0 as a word
  EXPECT_EQ(
      effect.traced(effect.callbacks.onDialogOpen),
      (Texts{"DataFieldItemCount(0)", "InputsAdd(0, 0, 0)", "DataFieldItemCount(0)", "DataFieldItemCount(4)",
             "DatasetClear(4, 0)", "DatasetItemAdd(4, \"FloatA\", \"Level 0\"" + display,
             "ParamSetFloat(4, 0, 0, 0.5)", "DatasetRefresh(4, -1, 1)"}));
  EXPECT_EQ(effect.traced(effect.callbacks.onDialogOpen),
            (Texts{"DataFieldItemCount(0)", "DataFieldItemCount(0)", "DataFieldItemCount(4)"}));
  effect.setNumber(4, 0, 0.9);
  EXPECT_EQ(
      edited(1),
      (Texts{"InputsAdd(0, 1, 1)", "DialogRefresh(0, 0)", "DataFieldItemCount(0)", "DataFieldItemCount(4)",
             "DatasetClear(4, 1)", "DatasetItemAdd(4, \"FloatA\", \"Level 0\"" + display,
             "ParamSetFloat(4, 0, 0, 0.5)", "DatasetItemAdd(4, \"FloatA\", \"Level 1\"" + display,
             "ParamSetFloat(4, 1, 0, 0.5)", "DatasetRefresh(4, -1, 2)"}));
  effect.selectedInputs = {0, 1};
  EXPECT_EQ(edited(2), (Texts{"InputsRemoveSelected(0)", "DataFieldItemCount(0)", "InputsAdd(0, 0, 0)",
                              "DialogRefresh(0, 0)", "DataFieldItemCount(0)", "DataFieldItemCount(4)",
                              "DatasetClear(4, 2)", "DatasetItemAdd(4, \"FloatA\", \"Level 0\"" + display,
                              "ParamSetFloat(4, 0, 0, 0.5)", "DatasetRefresh(4, -1, 1)"}));
  EXPECT_EQ(edited(2), (Texts{"InputsRemoveSelected(0)", "DataFieldItemCount(0)", "DialogRefresh(0, 0)",
                              "DataFieldItemCount(0)", "DataFieldItemCount(4)"}));
  for (const int other : {-1, 0, 3, 4, 5})
    EXPECT_EQ(edited(other), Texts{});
}

TEST(AudioSwitcher, ClampsTheSumBeforeTheMaster) {
  Effect effect(ProcessAudioSwitcherDeclare);
  Sound loud({0.8F, -0.8F, 0.1F, 0.7F}, 2), same({0.8F, -0.8F, 0.1F, 0.7F}, 2), brief({0.5F}, 1);
  test::setBlock(effect, 0, 2, 4, 2);
  effect.setNumber(5, 0, 1);
  effect.setNumber(4, 0, 0.5);
  effect.setInput(0, &loud);
  EXPECT_EQ(effect.render(), (Samples{0.4F, -0.4F, 0.05F, 0.35F}));

  *effect.parameters.inputs.get(0, 0) = {nullptr, &loud.clip, &same.clip};
  effect.setNumber(4, 1, 1);
  effect.setNumber(4, 2, 1);
  effect.setNumber(5, 0, 3);
  EXPECT_EQ(effect.render(), (Samples{3, -3, static_cast<float>(3.0 * static_cast<double>(0.2F)), 3}));

  // One frame of one channel; elsewhere it contributes nothing, whatever its level.
  *effect.parameters.inputs.get(0, 0) = {&brief.clip};
  effect.setNumber(4, 0, std::numeric_limits<double>::infinity());
  effect.setNumber(5, 0, 1);
  EXPECT_EQ(effect.render(), (Samples{1, 0, 0, 0}));

  // Product and addition in extended precision, one rounding: -1 + 2^-40 is heard only there.
  Sound one({1}, 1), minus({-1}, 1);
  *effect.parameters.inputs.get(0, 0) = {&one.clip, &minus.clip};
  test::setBlock(effect, 0, 1, 4, 1);
  effect.setNumber(4, 0, 0x1p-24 + 0x1p-60);
  effect.setNumber(4, 1, 0x1p-24);
  EXPECT_EQ(effect.render(),
            Samples{static_cast<float>(static_cast<long double>(static_cast<float>(0x1p-24 + 0x1p-60)) -
                                       0x1p-24L)});
}

// A failed input leaves nothing to render; the host decides whether the others are fetched.
TEST(AudioSwitcher, ReportsEveryFailedInput) {
  Effect effect(ProcessAudioSwitcherDeclare);
  test::setBlock(effect, 0, 3, 4, 2);
  Sound sound(Samples(6), 2);
  test::SoundClip silent(nullptr);
  *effect.parameters.inputs.get(0, 0) = {&silent, &sound.clip, nullptr, &silent};
  const Texts calls{"DataFieldItemCount(0)", "InputGetPic(0, 0)", "InputGetAudio(0, 0.75)",
                    "ErrorCountReport(1)",   "InputGetPic(0, 1)", "InputGetAudio(0, 0.75)",
                    "InputGetPic(0, 2)",     "InputGetPic(0, 3)", "InputGetAudio(0, 0.75)",
                    "ErrorCountReport(2)"};
  EXPECT_EQ(effect.tracedRender(), calls);
  effect.faults.failAt(Service::ErrorCountReport, 3);
  EXPECT_EQ(effect.tracedRender(), Texts(calls.begin(), calls.begin() + 4));
  EXPECT_TRUE(effect.messages.empty());
}

// ---- Audio Transition ----

TEST(AudioTransition, FadesOverTheClip) {
  Effect effect(ProcessAudioTransitionDeclare);
  Samples a, b;
  for (int i = 0; i < 600; ++i) {
    a.push_back(std::sin(static_cast<float>(i) * 0.3F));
    b.push_back(std::cos(static_cast<float>(i) * 0.1F));
  }
  Sound first(a, 2), second(b, 2);
  test::setBlock(effect, 2, 300, 300, 2);
  effect.info()->ClipStart = 1.5;
  effect.info()->ClipEnd = 4;
  const float position = 0.5F / 2.5F;
  const auto step = static_cast<float>(1.0 / (300 * 2.5));
  for (const int fadeOut : {0, 1, 2})
    for (const int fadeIn : {0, 1, -1})
      for (const int inputs : {1, 2, 3}) {
        effect.setInput(0, (inputs & 1) != 0 ? &first : nullptr);
        effect.setInput(1, (inputs & 2) != 0 ? &second : nullptr);
        *effect.parameters.integers.get(2, 0) = fadeOut;
        *effect.parameters.integers.get(3, 0) = fadeIn;
        Samples expected(600);
        plain::crossfade(expected.data(), 300, 2, (inputs & 1) != 0 ? a.data() : nullptr, fadeOut == 1,
                         (inputs & 2) != 0 ? b.data() : nullptr, fadeIn == 1, position, step);
        EXPECT_EQ(effect.render(), expected);
      }
  // A clip without length and a block without frames have no place; nothing goes wrong.
  effect.info()->ClipEnd = effect.info()->ClipStart;
  EXPECT_EQ(effect.render().size(), 600U);
  test::setBlock(effect, 2, 0, 300, 2);
  EXPECT_EQ(effect.render().size(), 0U);
}

// ---- Simple Audio Switcher ----

TEST(SimpleAudioSwitcher, Routes) {
  Effect effect(ProcessSimpleAudioSwitcherDeclare);
  effect.callbacks.init(effect.info());
  test::setBlock(effect, 0, 2, 4, 2);
  Sound sound({1, 2, 3, 5}, 2);
  effect.setInput(0, &sound);
  EXPECT_EQ(effect.render(), (Samples{1, 2, 3, 5}));
  *effect.parameters.integers.get(1, 0) = 3;
  *effect.parameters.integers.get(2, 0) = 0;
  EXPECT_EQ(effect.render(), (Samples{1.5, 0, 4, 0}));
}

} // namespace
} // namespace zol
