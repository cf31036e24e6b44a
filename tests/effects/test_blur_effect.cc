#include "frame/effects.h"
#include "plain/blur.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace zol {
namespace {

TEST(BlurEffect, BlursByAPartOfTheFramesWidth) {
  const test::Callbacks blur(ProcessBlurDeclare);
  const auto picture = test::randomPicture(31, 40, 7, 4, -2);
  test::PictureClip clip(picture->record());
  host::Session session("Halvenor");
  *session.parameters.inputs.get(0, 0) = {&clip};
  session.info()->Width = 144;
  std::vector<_color_t> expected(picture->pixels());
  for (const double blurriness :
       {0.0, 0.05, 0.1, 0.333, 1.0, 7.5, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
    session.parameters.numbers.get(1, 0)->set(0.5, {blurriness});
    const auto out = session.pictures.take(blur.renderVideo(session.info()));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->record()->X, 4);
    EXPECT_EQ(out->record()->Y, -2);
    plain::blurImage(picture->record()->Pixels, 31, 40, blurriness * 144 / 7.2, expected.data());
    EXPECT_EQ(std::memcmp(out->record()->Pixels, expected.data(), expected.size() * sizeof(_color_t)), 0)
        << blurriness;
  }
}

} // namespace
} // namespace zol
