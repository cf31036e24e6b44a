// Time Warp: the times that it shows, what it blends, and its buttons.

#include "frame/effects.h"
#include "plain/frame_average.h"
#include "tests/support/declared.h"
#include "tests/support/numbered_clip.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;
using Keys = std::vector<std::pair<double, double>>;

enum Field {
  kInput,
  kMode,
  kSpeed,
  kPosition,
  kStartOffset,
  kBeyond,
  kMethod,
  kFields,
  kBlend,
  kFreeze,
  kReverse
};

constexpr double kLength = 8; // seconds

class TimeWarp : public testing::Test {
protected:
  TimeWarp() {
    t_ZoHostInfo &info = *session.info();
    info.Width = 12;
    info.Height = 5;
    info.FrameRate = 25;
    info.VideoClipStart = 1;
    session.onStatement = test::NumberedClip::answer;
    session.defaultClip = &clip;
    EXPECT_EQ(effect.init(&info), 1);
  }
  void set(Field field, const Keys &keys) {
    auto &curve = *session.parameters.numbers.get(field, 0);
    curve.clear();
    for (const auto &[time, value] : keys)
      curve.set(time, {value});
  }
  void choose(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  /// So many seconds after the effect's beginning.
  Picture render(double elapsed) {
    clip.times.clear();
    session.info()->FrameTime = 1 + elapsed;
    session.info()->Time = elapsed / kLength;
    return session.pictures.take(effect.renderVideo(session.info()));
  }
  /// The time of the one whole frame that is shown then.
  double shown(double elapsed) {
    EXPECT_NE(render(elapsed), nullptr);
    EXPECT_EQ(clip.times.size(), 1U);
    return clip.times.at(0);
  }

  test::NumberedClip clip{{25, 10, 12, 5, 1, 0, 0, 0}};
  host::Session session{"Halvenor"};
  const test::Callbacks effect{ProcessTimeWarpDeclare};
};

TEST_F(TimeWarp, GoesAsFarAsItsSpeedSays) {
  const struct {
    Keys speed;
    double offset, elapsed, expected; // seconds
  } cases[] = {
      {{{0.5, 1}}, 0, 3, 3},
      {{{0.5, 0.5}}, 1, 4, 3},
      {{{0.5, -1}}, 9, 2, 7},
      {{{0.5, 0}}, 2, 5, 2},
      {{{0, 0}, {1, 1}}, 0, 4, 1},
      {{{0, 0}, {1, 1}}, 0, 8, 4},
      {{{0, 1}, {1, -1}}, 2, 8, 2},
      {{{0, 1}, {1, -1}}, 2, 4, 4},
      {{{0.5, 3}}, 4, 0, 4},
      {{{0.5, 3}}, 4, -1, 4},
      {{{0.5, 10}}, 0, 8, 10 - 0.04},
      {{{0.5, NAN}}, 1, 4, 1},
      {{{0, 1}, {0.5, 0.1}, {1, 1}}, 0, 8, 4.4},
  };
  for (const auto &c : cases) {
    set(kSpeed, c.speed);
    set(kStartOffset, {{0.5, c.offset}});
    EXPECT_NEAR(shown(c.elapsed), c.expected, 1e-9) << c.speed[0].second << " at " << c.elapsed;
  }
  // A key between steps is met no worse than by a step of one frame.
  set(kSpeed, {{0, 1}, {0.3, 1}, {0.3001, 0}, {1, 0}});
  set(kStartOffset, {{0.5, 0}});
  EXPECT_NEAR(shown(7.7), 2.4, 0.041);
  // As many steps as frames, up to the time alone.
  session.trace.clear();
  session.tracing = true;
  (void)render(2);
  session.tracing = false;
  EXPECT_EQ(std::count_if(session.trace.begin(), session.trace.end(),
                          [](const std::string &call) { return call.starts_with("ParamGetFloat(2"); }),
            256 / 4 + 1 + 1);

  choose(kMode, 1);
  set(kPosition, {{0, 2}, {1, 6}});
  set(kStartOffset, {{0.5, 1}});
  EXPECT_NEAR(shown(4), 5, 1e-9);
  EXPECT_NEAR(shown(0), 3, 1e-9);
}

TEST_F(TimeWarp, BlendsTheFramesThatItSkips) {
  choose(kBlend, 1);
  const struct {
    Keys speed, position;
    double elapsed;
    std::vector<int> frames; // each of one weight; -1: nothing
  } cases[] = {
      {{{0.5, 1}}, {}, 2, {50}},
      {{{0.5, 4}}, {}, 1, {100, 101, 102, 103}},
      {{{0.5, -2}}, {}, 0, {0, -1}},
      {{{0.5, 2.5}}, {}, 0.4, {25, 25, 26}},
      {{}, {{0, 4}, {1, 8}}, 4, {150}},
      {{}, {{0, 0}, {1, 16}}, 2, {100, 101}},
      {{{0.5, 4}}, {}, 2.48, {248, 249, -1, -1}},
  };
  choose(kBeyond, 1);
  for (const auto &c : cases) {
    choose(kMode, c.speed.empty() ? 1 : 0);
    set(c.speed.empty() ? kPosition : kSpeed, c.speed.empty() ? c.position : c.speed);
    const Picture got = render(c.elapsed);
    ASSERT_NE(got, nullptr);
    for (ptrdiff_t i = 0; i < 12 * 5; ++i) {
      std::vector<plain::Exposed> exposed;
      const int count = int(c.frames.size());
      for (int f = 0; f < count; ++f)
        exposed.push_back(
            {c.frames[size_t(f)] < 0 ? _color_t{} : clip.at(c.frames[size_t(f)], 12, 5)->Pixels[i],
             256 * (f + 1) / count - 256 * f / count});
      const _color_t expected = count == 1 ? exposed[0].pixel : plain::average(exposed);
      const _color_t actual = got->record()->Pixels[i];
      ASSERT_EQ(std::memcmp(&actual, &expected, sizeof actual), 0) << c.elapsed << " pixel " << i;
    }
  }
  // So many frames are put together at most.
  choose(kMode, 0);
  clip.told->Rate = 250;
  set(kSpeed, {{0.5, 10}});
  (void)render(0.1);
  EXPECT_EQ(clip.times.size(), 64U);
}

TEST_F(TimeWarp, ItsButtonsPutKeys) {
  t_ZoHostInfo *info = session.info();
  EXPECT_EQ(effect.onDialogOpen(info), 1);
  *session.parameters.inputs.get(kInput, 0) = {nullptr};
  EXPECT_EQ(effect.onDialogOpen(info), 1);
  EXPECT_EQ(info->Services->InputGetPic(info, kInput, 0), &clip);
  const auto press = [&](int field, double time) {
    info->Time = time;
    session.trace.clear();
    session.tracing = true;
    EXPECT_EQ(effect.onDialogItemEdit(info, field), 0);
    session.tracing = false;
    return session.trace;
  };
  set(kSpeed, {{0.5, 2}});
  using Texts = std::vector<std::string>;
  EXPECT_EQ(press(kReverse, 0.75),
            (Texts{"ParamGetFloat(2, 0, 0.75)", "ParamSetFloat(2, 0, 0.75, -2)", "DialogRefresh(0, 0)"}));
  EXPECT_EQ(press(kFreeze, 0.25), (Texts{"ParamSetFloat(2, 0, 0.25, 0)", "DialogRefresh(0, 0)"}));
  EXPECT_EQ(press(kSpeed, 0.5), Texts());
}

} // namespace
} // namespace zol
