#include "frame/effects.h"
#include "kernels/noise/spread_rows.h"
#include "plain/spread.h"
#include "tests/support/declared.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zol {
namespace {

enum Field { kInput, kHorizontal, kVertical, kGrain, kSeed, kChanges };

TEST(SpreadRender, ScattersAsItsFieldsSay) {
  const test::Callbacks effect(ProcessSpreadDeclare);
  host::Session session("Halvenor");
  t_ZoHostInfo *info = session.info();
  info->Width = 200;
  info->Height = 30;
  info->PixelAspect = 2;
  info->VideoClipStart = 3;
  const auto picture = test::randomPicture(40, 25, 1, -7, 3);
  test::PictureClip clip(picture->record());
  session.defaultClip = &clip;
  EXPECT_EQ(effect.init(info), 1);
  const auto expect = [&](const Spreading &how) {
    const auto out = session.pictures.take(effect.renderVideo(info));
    ASSERT_NE(out, nullptr);
    const auto want = test::randomPicture(40, 25, 2, -7, 3);
    for (int y = 0; y < 25; ++y)
      for (int x = 0; x < 40; ++x)
        want->record()->Pixels[y * 40 + x] = plain::spread(*picture->record(), x, y, how);
    EXPECT_TRUE(test::samePixels(*out->record(), *want->record()));
  };
  const auto set = [&](int field, double value) {
    session.parameters.numbers.get(field, 0)->set(0.5, {value});
  };

  info->FrameTime = 3.25;
  expect({.cellHeight = 2, .radiusX = 16, .radiusY = 32});
  set(kHorizontal, 0.1);
  set(kVertical, 0.2);
  set(kGrain, 0.2);
  *session.parameters.integers.get(kSeed, 0) = 9;
  expect({.seed = 9, .cellWidth = 5, .cellHeight = 10, .radiusX = 32, .radiusY = 128});
  set(kChanges, 12);
  expect({.seed = 9, .step = 3, .cellWidth = 5, .cellHeight = 10, .radiusX = 32, .radiusY = 128});
  info->FrameTime = 3 + 0.9999999 / 3; // the fourth change, but for rounding
  expect({.seed = 9, .step = 4, .cellWidth = 5, .cellHeight = 10, .radiusX = 32, .radiusY = 128});

  // Out of range, and an aspect that is none.
  info->PixelAspect = -1;
  set(kHorizontal, HUGE_VAL);
  set(kVertical, NAN);
  set(kGrain, -4);
  set(kChanges, NAN);
  *session.parameters.integers.get(kSeed, 0) = -1;
  expect({.radiusX = 320});
}

} // namespace
} // namespace zol
