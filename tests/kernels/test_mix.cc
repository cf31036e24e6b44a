#include "kernels/exports/mix.h"

#include "host/services/session.h"
#include "plain/mix.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Service;
using Mix = pic *(*)(pic *, pic *, float, t_ZoHostInfo *);

constexpr float kHuge = std::numeric_limits<float>::max();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

void fillNew(pic *picture) {
  for (int i = 0; i < picture->Width * picture->Height; ++i)
    picture->Pixels[i] = {uint8_t(i * 7), uint8_t(i * 13 + 5), uint8_t(255 - i), uint8_t(i / 3)};
}

/// A session whose new pictures are not blank.
class MixKernels : public testing::Test {
protected:
  MixKernels() {
    services_.PicCreate = [](int width, int height) {
      pic *picture = host::services().PicCreate(width, height);
      if (picture != nullptr)
        fillNew(picture);
      return picture;
    };
    session.info()->Services = &services_;
    COMMON_STR[3] = "Memory allocation error";
  }

  /// Whether the kernel gives the plain form's picture, and polls once a row for it.
  void expectPlain(Mix mix, pic *a, pic *b, float ratio) {
    const int polls = session.faults.calls(Service::IsAborted);
    const auto result = session.pictures.take(mix(a, b, ratio, session.info()));
    ASSERT_NE(result, nullptr);
    const pic *out = result->record();
    EXPECT_EQ(session.faults.calls(Service::IsAborted) - polls, out->Height);
    const auto expected = PictureBuffer::make(out->Width, out->Height);
    fillNew(expected->record());
    (mix == mix_pics_union ? plain::mixUnion : plain::mixIntersect)(a, b, ratio, expected->record());
    ASSERT_TRUE(test::samePixels(*out, *expected->record()))
        << a->Width << "x" << a->Height << " at " << a->X << "," << a->Y << " and " << b->Width << "x"
        << b->Height << " at " << b->X << "," << b->Y << ", ratio " << ratio;
  }

  host::Session session{"Halvenor"};

private:
  t_ZoServices services_ = host::services();
};

TEST_F(MixKernels, GiveThePlainFormsBytes) {
  constexpr float kRatios[] = {0.0F, 1e-5F,  0.37F, 0.5F, 0.49999F, 0.75F,  0.99999F, 1.0F,      -0.3F,
                               1.7F, 300.0F, -1e6F, 1e9F, kHuge,    -kHuge, kNaN,     HUGE_VALF, -0.0F};
  test::atEveryLevel([&] {
    test::Dice dice(1);
    for (unsigned round = 0; round < 600; ++round) {
      const auto first = dice.picture(23, 9, 12, 4), second = dice.picture(23, 9, 12, 4);
      pic *a = first->record(), *b = second->record();
      const float ratio = round % 2 == 0 ? kRatios[round / 2 % std::size(kRatios)] : float(dice.share());
      expectPlain(mix_pics_union, a, b, ratio);
      if (std::min(a->X + a->Width, b->X + b->Width) >= std::max(a->X, b->X) &&
          std::min(a->Y + a->Height, b->Y + b->Height) >= std::max(a->Y, b->Y))
        expectPlain(mix_pics_intersect, a, b, ratio);
      else
        EXPECT_EQ(mix_pics_intersect(a, b, ratio, session.info()), nullptr);
    }
  });
  EXPECT_TRUE(session.messages.empty());
}

TEST_F(MixKernels, AreExactForEveryPairOfBytes) {
  const auto a = PictureBuffer::make(256, 256), b = PictureBuffer::make(256, 256);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x) {
      a->record()->Pixels[y * 256 + x] = {uint8_t(x), uint8_t(y), uint8_t(255 - x), uint8_t(x ^ y)};
      b->record()->Pixels[y * 256 + x] = {uint8_t(y), uint8_t(x), uint8_t(y), uint8_t(x + y)};
    }
  test::atEveryLevel([&] {
    for (const int weight : {0, 1, 63, 64, 1024, 1517, 2047, 2048, 2049, 3333, 4032, 4095, 4096})
      for (const Mix mix : {mix_pics_union, mix_pics_intersect})
        expectPlain(mix, a->record(), b->record(), float(weight) / 4096);
  });
}

TEST_F(MixKernels, AnswerNullWhereTheResultCannotBeCreated) {
  const auto left = test::randomPicture(4, 1, 1, INT16_MIN, INT16_MIN);
  const auto right = test::randomPicture(4, 1, 1, INT16_MAX, INT16_MAX);
  session.tracing = true;
  EXPECT_EQ(mix_pics_intersect(left->record(), right->record(), 0.5F, session.info()), nullptr);
  EXPECT_EQ(mix_pics_union(left->record(), right->record(), 0.5F, session.info()), nullptr);
  EXPECT_EQ(session.trace, (std::vector<std::string>{"PicCreate(-65531, -65534)", "PicCreate(65539, 65536)",
                                                     R"(Message("Memory allocation error"))"}));
}

} // namespace
} // namespace zol
