#include "kernels/exports/mix.h"

#include "host/services/session.h"
#include "plain/mix.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Service;
using host::Session;
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

  Session session{"Halvenor"};

private:
  t_ZoServices services_ = host::services();
};

TEST_F(MixKernels, GiveThePlainFormsBytes) {
  test::atEveryLevel([this] {
    std::mt19937 random(1);
    const auto upTo = [&](int n) { return static_cast<int>(random() % unsigned(n + 1)); };
    constexpr float kRatios[] = {0.0F, 1e-5F,  0.37F, 0.5F, 0.49999F, 0.75F,  0.99999F, 1.0F,      -0.3F,
                                 1.7F, 300.0F, -1e6F, 1e9F, kHuge,    -kHuge, kNaN,     HUGE_VALF, -0.0F};
    for (unsigned round = 0; round < 600; ++round) {
      const auto a = test::randomPicture(upTo(23), upTo(9), 2 * round, upTo(24) - 12, upTo(8) - 4);
      const auto b = test::randomPicture(upTo(23), upTo(9), 2 * round + 1, upTo(24) - 12, upTo(8) - 4);
      const float ratio =
          round % 2 == 0 ? kRatios[round / 2 % std::size(kRatios)] : float(random()) / 4294967296.0F;
      expectPlain(mix_pics_union, a->record(), b->record(), ratio);
      const int width = std::min(a->record()->X + a->record()->Width, b->record()->X + b->record()->Width) -
                        std::max(a->record()->X, b->record()->X);
      const int height =
          std::min(a->record()->Y + a->record()->Height, b->record()->Y + b->record()->Height) -
          std::max(a->record()->Y, b->record()->Y);
      if (width >= 0 && height >= 0)
        expectPlain(mix_pics_intersect, a->record(), b->record(), ratio);
      else
        EXPECT_EQ(mix_pics_intersect(a->record(), b->record(), ratio, session.info()), nullptr);
    }
  });
  EXPECT_TRUE(session.messages.empty());
  EXPECT_EQ(session.pictures.live(), 0U);
}

TEST_F(MixKernels, AreExactForEveryPairOfBytes) {
  const auto a = PictureBuffer::make(256, 256);
  const auto b = PictureBuffer::make(256, 256);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x) {
      a->record()->Pixels[y * 256 + x] = {uint8_t(x), uint8_t(y), uint8_t(255 - x), uint8_t(x ^ y)};
      b->record()->Pixels[y * 256 + x] = {uint8_t(y), uint8_t(x), uint8_t(y), uint8_t(x + y)};
    }
  test::atEveryLevel([&] {
    for (const int weight : {0, 1, 63, 64, 1024, 1517, 2047, 2048, 2049, 3333, 4032, 4095, 4096}) {
      expectPlain(mix_pics_union, a->record(), b->record(), float(weight) / 4096);
      expectPlain(mix_pics_intersect, a->record(), b->record(), float(weight) / 4096);
    }
  });
}

TEST_F(MixKernels, KeepTheMeanOfFlatAreas) {
  const auto a = PictureBuffer::make(10, 1);
  const auto b = PictureBuffer::make(10, 1);
  std::fill_n(a->record()->Pixels, 10, _color_t{101, 101, 101, 101});
  const auto out = session.pictures.take(mix_pics_union(a->record(), b->record(), 0.5F, session.info()));
  for (int x = 0; x < 10; ++x)
    EXPECT_EQ(out->record()->Pixels[x].g, x % 2 == 0 ? 50 : 51);
}

TEST_F(MixKernels, StopAtAnyRowAndLeaveNothingBehind) {
  const auto a = test::randomPicture(9, 6, 1);
  const auto b = test::randomPicture(9, 6, 2, 3, 1);
  for (const auto &[mix, rows] : {std::pair<Mix, int>{mix_pics_union, 7}, {mix_pics_intersect, 5}})
    for (int row = 1; row <= rows; ++row) {
      session.faults.clear();
      session.faults.abortAtPoll(row);
      EXPECT_EQ(mix(a->record(), b->record(), 0.5F, session.info()), nullptr);
      EXPECT_EQ(session.faults.calls(Service::IsAborted), row);
      EXPECT_EQ(session.faults.calls(Service::PicFree), 1);
    }
  EXPECT_TRUE(session.messages.empty());
  EXPECT_TRUE(session.complaints.empty());
  EXPECT_EQ(session.pictures.live(), 0U);
}

TEST_F(MixKernels, AnswerNullWhereTheResultCannotBeCreated) {
  const auto left = PictureBuffer::make(4, 1);
  const auto right = PictureBuffer::make(4, 1);
  left->record()->X = left->record()->Y = INT16_MIN;
  right->record()->X = right->record()->Y = INT16_MAX;
  session.tracing = true;
  EXPECT_EQ(mix_pics_intersect(left->record(), right->record(), 0.5F, session.info()), nullptr);
  EXPECT_TRUE(session.messages.empty());
  EXPECT_EQ(mix_pics_union(left->record(), right->record(), 0.5F, session.info()), nullptr);
  EXPECT_EQ(session.messages.size(), 1U);
  EXPECT_EQ(session.messages.at(0), "Memory allocation error");
  EXPECT_EQ(session.trace, (std::vector<std::string>{"PicCreate(-65531, -65534)", "PicCreate(65539, 65536)",
                                                     R"(Message("Memory allocation error"))"}));
}

} // namespace
} // namespace zol
