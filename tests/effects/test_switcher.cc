#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/moved.h"
#include "plain/route_channels.h"
#include "tests/support/declared.h"
#include "tests/support/dice.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zol {
namespace {

using host::Service;
using Texts = std::vector<std::string>;

enum Field { kInputs, kSwitch = 4, kDissolve, kRedInput, kRedFrom, kRedInvert, kAlphaInput = 15 };

constexpr int kWidth = 40, kHeight = 20;

struct Scene : host::Session {
  Scene() : Session("Halvenor"), callbacks(ProcessMultiswitcherDeclare) {
    info()->Width = kWidth;
    info()->Height = kHeight;
    callbacks.init(info());
  }
  void set(int field, double value) {
    parameters.numbers.get(field, 0)->clear();
    parameters.numbers.get(field, 0)->set(0.5, {value});
  }
  void choose(int field, int value) { *parameters.integers.get(field, 0) = value; }
  void assign(std::vector<host::Clip *> clips) { *parameters.inputs.get(kInputs, 0) = std::move(clips); }
  auto render() { return pictures.take(callbacks.renderVideo(info())); }
  /// The calls that the action makes.
  template <class Action> Texts traced(Action action) {
    trace.clear();
    tracing = true;
    action();
    tracing = false;
    return std::move(trace);
  }
  /// Those that fetch pictures.
  Texts fetched() {
    Texts calls = traced([this] { render(); });
    std::erase_if(calls, [](const std::string &call) {
      return !call.starts_with("InputGetPic") && !call.starts_with("ErrorCountReport");
    });
    return calls;
  }

  test::Callbacks callbacks;
};

TEST(Switcher, TakesEachChannelOfItsInputs) {
  // A channel's item and that of a pixel's bytes, which are blue, green, red, alpha, luminance, none, full.
  constexpr int kBytes[] = {2, 1, 0, 3}, kSources[] = {-1, 2, 1, 0, 3, 4, 5, 6};
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    Scene scene;
    const int inputs = dice.between(1, 5), missing = dice.below(8);
    const bool alike = dice.below(2) != 0, dissolves = dice.below(2) != 0;
    std::vector<std::unique_ptr<host::PictureBuffer>> pictures;
    std::vector<std::unique_ptr<test::PictureClip>> clips;
    std::vector<host::Clip *> list;
    for (int k = 0; k < inputs; ++k) {
      pictures.push_back(alike ? test::randomPicture(30, 12, dice.word(), 3, -2) : dice.picture(50, 30));
      clips.push_back(std::make_unique<test::PictureClip>(pictures.back()->record()));
      list.push_back(k == missing ? nullptr : clips.back().get());
    }
    scene.assign(list);
    const double shown = dice.share() * inputs;
    scene.set(kSwitch, shown);
    scene.choose(kDissolve, dissolves ? 1 : 0);
    struct Take {
      int first = -1, second = -1, weight = 0, source = 0;
      bool inverts = false;
    } takes[4];
    std::vector<bool> isNeeded(static_cast<size_t>(inputs));
    for (int c = 0; c < 4; ++c) {
      const double more = dice.below(2) * dice.share() * inputs;
      const int from = dice.below(8);
      Take &take = takes[kBytes[c]];
      take.inverts = dice.below(3) == 0;
      take.source = from == 0 ? kBytes[c] : kSources[from];
      scene.set(kRedInput + 3 * c, more);
      scene.choose(kRedFrom + 3 * c, from);
      scene.choose(kRedInvert + 3 * c, take.inverts ? 1 : 0);
      const double place = std::min(shown + more, inputs - 1.0);
      if (from >= 6)
        continue;
      take.first = static_cast<int>(place);
      isNeeded[size_t(take.first)] = true;
      take.weight = dissolves ? static_cast<int>(4096 * (place - take.first)) : 0;
      take.second = take.weight > 0 ? take.first + 1 : take.first;
      isNeeded[size_t(take.second)] = true;
    }
    std::vector<Area> areas;
    for (int k = 0; k < inputs; ++k)
      if (isNeeded[size_t(k)] && k != missing)
        areas.push_back(Area::of(*pictures[size_t(k)]->record()));
    const bool same =
        !areas.empty() && std::count(areas.begin(), areas.end(), areas[0]) == ptrdiff_t(areas.size());
    const Area canvas = same ? areas[0] : Area::ofSize(kWidth, kHeight);
    const auto want = host::PictureBuffer::make(canvas.width(), canvas.height());
    placeAt(*want->record(), canvas);
    for (int y = canvas.top; y < canvas.bottom; ++y)
      for (int x = canvas.left; x < canvas.right; ++x) {
        uint8_t bytes[4];
        for (int byte = 0; byte < 4; ++byte) {
          const auto pixel = [&](int k) {
            return k < 0 || k == missing ? _color_t{} : plain::pixelOf(*pictures[size_t(k)]->record(), x, y);
          };
          const Take &take = takes[byte];
          bytes[byte] =
              plain::routed(pixel(take.first), pixel(take.second), take.source, take.weight, take.inverts);
        }
        *pixelAt(*want->record(), x, y) =
            bytes[3] == 0 ? _color_t{} : _color_t{bytes[0], bytes[1], bytes[2], bytes[3]};
      }
    const auto out = scene.render();
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(test::samePixels(*out->record(), *want->record())) << round;
  }
}

TEST(Switcher, CopiesOneInputAndCutsToTheNext) {
  Scene scene;
  const auto first = test::randomPicture(30, 12, 1, 3, -2), second = test::randomPicture(9, 4, 2, -1, 5);
  test::PictureClip firstClip(first->record()), secondClip(second->record());
  scene.assign({&firstClip, &secondClip});
  for (const auto &[shown, picture] : {std::pair{0.0, first.get()},
                                       {0.99, first.get()},
                                       {1.0, second.get()},
                                       {1e9, second.get()},
                                       {-3.0, first.get()},
                                       {NAN, first.get()}}) {
    scene.set(kSwitch, shown);
    EXPECT_TRUE(test::samePixels(*scene.render()->record(), *picture->record())) << shown;
    scene.choose(kDissolve, shown >= 0.99 ? 1 : 0);
  }
}

TEST(Switcher, FetchesWhatItNeedsAndReportsEveryFailure) {
  Scene scene;
  const auto picture = test::randomPicture(30, 12, 1);
  test::PictureClip clip(picture->record()), nothing(nullptr);
  scene.assign({&nothing, &clip, &nothing, &nothing, nullptr});
  scene.set(kSwitch, 1);
  EXPECT_EQ(scene.fetched(), Texts{"InputGetPic(0, 1)"});
  scene.set(kRedInput, 3);
  scene.set(kAlphaInput, 1.5);
  scene.choose(kDissolve, 1);
  const Texts calls = {"InputGetPic(0, 1)", "InputGetPic(0, 2)",   "ErrorCountReport(1)",
                       "InputGetPic(0, 3)", "ErrorCountReport(2)", "InputGetPic(0, 4)"};
  EXPECT_EQ(scene.fetched(), calls);
  scene.faults.failAt(Service::ErrorCountReport, 3);
  EXPECT_EQ(scene.fetched(), Texts(calls.begin(), calls.begin() + 3));
  EXPECT_TRUE(scene.messages.empty());
  scene.assign({});
  EXPECT_EQ(scene.render(), nullptr);
  ASSERT_EQ(scene.messages.size(), 1U);
  EXPECT_EQ(scene.messages[0], "No inputs");
}

TEST(Switcher, DialogKeepsOneInput) {
  Scene scene;
  scene.assign({});
  const auto edited = [&](int item) {
    return scene.traced([&] { EXPECT_EQ(scene.callbacks.onDialogItemEdit(scene.info(), item), 0); });
  };
  const auto opened = [&] {
    return scene.traced([&] { EXPECT_EQ(scene.callbacks.onDialogOpen(scene.info()), 1); });
  };
  EXPECT_EQ(opened(), (Texts{"DataFieldItemCount(0)", "InputsAdd(0, 0, 0)"}));
  EXPECT_EQ(opened(), Texts{"DataFieldItemCount(0)"});
  EXPECT_EQ(edited(1), (Texts{"InputsAdd(0, 1, 1)", "DialogRefresh(0, 0)"}));
  scene.selectedInputs = {0, 1};
  EXPECT_EQ(edited(2), (Texts{"InputsRemoveSelected(0)", "DataFieldItemCount(0)", "InputsAdd(0, 0, 0)",
                              "DialogRefresh(0, 0)"}));
  for (const int other : {-1, 0, 3, 4, 18})
    EXPECT_EQ(edited(other), Texts{});
}

} // namespace
} // namespace zol
