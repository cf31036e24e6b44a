#include "kernels/exports/blur.h"

#include "host/services/session.h"
#include "kernels/blur/tent.h"
#include "plain/blur.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zol {
namespace {

using host::Service;
using host::Session;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Form {
  const char *name;
  pic *(*kernel)(t_ZoHostInfo *, pic *, double);
  void (*plain)(const _color_t *, int, int, double, _color_t *);
};
constexpr Form kForms[] = {{"image", FillBlurImage, plain::blurImage},
                           {"alpha", FillBlurAlpha, plain::blurAlpha}};

/// Both kernels at every level against the plain form.
void expectPlain(pic *src, double radius) {
  std::vector<_color_t> pixels(static_cast<size_t>(src->Width) * src->Height);
  const pic expected{src->X, src->Y, src->Width, src->Height, pixels.data()};
  for (const Form &form : kForms) {
    form.plain(src->Pixels, src->Width, src->Height, radius, pixels.data());
    test::atEveryLevel([&] {
      Session session("Halvenor");
      const pic *out = form.kernel(session.info(), src, radius);
      ASSERT_NE(out, nullptr);
      EXPECT_TRUE(test::samePixels(*out, expected))
          << form.name << ' ' << src->Width << 'x' << src->Height << " radius " << radius;
      EXPECT_EQ(session.faults.calls(Service::IsAborted), src->Height);
    });
  }
}

TEST(Tent, FallsAddUpToTheWeights) {
  std::vector<double> radii{1.5, 100.2, 100.5, 127, 255.9, 256, 1000, 1e9, 1e300, kInfinity};
  for (int i = 1; i <= 100; ++i)
    for (const double radius : {i * 1.0, i + 0.37, std::nextafter(i, 0), std::nextafter(i, 200), 256.0 / i})
      radii.push_back(radius);
  for (const double radius : radii) {
    const Tent tent(radius);
    const std::vector<int32_t> weights = plain::blurWeights(radius);
    ASSERT_LE(tent.stepCount, 51) << radius;
    ASSERT_GE(tent.weight[tent.reach], 1);
    int left = 256;
    int step = 0;
    for (int d = 0; d <= Tent::kMaxReach; ++d) {
      ASSERT_EQ(left, d < static_cast<int>(weights.size()) ? weights[static_cast<size_t>(d)] : 0)
          << radius << " at " << d;
      left -= d < tent.ramp ? tent.slope : 0;
      for (; step < tent.stepCount && tent.step[step] == d; ++step)
        left -= tent.stepFall;
      left -= d == tent.reach && !tent.isCopy() ? tent.edgeFall : 0;
      if (tent.isCopy())
        left = 0;
    }
  }
  for (const double radius : {-kInfinity, -5.0, -1.0, -0.5, 0.0, 0.5, 1.0, 1.0039, kNaN})
    EXPECT_TRUE(Tent(radius).isCopy()) << radius;
  EXPECT_FALSE(Tent(1.01).isCopy());
}

TEST(StepGroups, AreTheStepsInShapesThatReadTheSameBackwards) {
  int gathered = 0;
  for (double radius = 1.5; radius < 300; radius += 0.7) {
    const Tent tent(radius);
    const StepGroups groups(tent);
    gathered += groups.count > 0;
    std::vector<short> steps(groups.single, groups.single + groups.singleCount);
    for (int i = 0; i < groups.count; ++i)
      for (int j = 0; j < groups.size; ++j)
        steps.push_back(static_cast<short>(groups.start[i] + groups.shape[j]));
    std::sort(steps.begin(), steps.end());
    EXPECT_EQ(steps, std::vector<short>(tent.step, tent.step + tent.stepCount)) << radius;
    for (int i = 0; i < groups.size; ++i)
      EXPECT_EQ(groups.shape[i] + groups.shape[groups.size - 1 - i], groups.shape[groups.size - 1]) << radius;
  }
  EXPECT_GT(gathered, 100);
}

TEST(Blur, IsThePlainForm) {
  unsigned seed = 0;
  for (const int width : {1, 2, 7, 16, 17, 33, 67, 130})
    for (const int height : {1, 3, 31, 33, 129})
      for (const double radius : {2.0, 5.3, 20.0, 100.0})
        expectPlain(test::randomPicture(width, height, ++seed, -3, 5)->record(), radius);

  // Pictures at the ends of the range, where sums are largest and quotients closest.
  const auto noise = test::randomPicture(230, 37, 99), extreme = test::randomPicture(230, 37, 99);
  for (size_t i = 0; i < extreme->pixels(); ++i) {
    const uint8_t value = noise->record()->Pixels[i].a & 1 ? 255 : 254;
    extreme->record()->Pixels[i] = {value, 255, static_cast<uint8_t>(i / 7 % 2 * 255), value};
  }
  for (const double radius : {-kInfinity, -2.0,  0.0,   0.5,   1.0,   1.0039, 1.01, 1.5,   1.99,      2.5,
                              3.0,        8.0,   10.0,  16.0,  19.2,  31.999, 50.0, 50.5,  71.0,      85.3,
                              99.01,      100.2, 100.5, 128.0, 150.0, 266.7,  1e4,  1e300, kInfinity, kNaN})
    for (pic *picture : {noise->record(), extreme->record()}) {
      expectPlain(picture, radius);
      pic upright = *picture;
      std::swap(upright.Width, upright.Height);
      expectPlain(&upright, radius);
    }
}

TEST(Blur, IsThePlainFormOfNarrowPicturesAndFewNeighbours) {
  for (const double radius : {1.0001, 1.5, 2.0, 2.5, 3.0, 3.99, 4.0, 4.01, 5.0})
    for (int width = 1; width <= 20; ++width)
      expectPlain(test::randomPicture(width, 1 + width * 7 % 11, static_cast<unsigned>(width))->record(),
                  radius);
}

TEST(Blur, IsThePlainFormWhereStepsAreGathered) {
  for (const double radius : {64.0, 71.0, 80.0, 90.0, 99.5, 100.0, 104.9, 110.0, 130.0, 150.0, 170.7, 250.0})
    for (const auto &[width, height] : {std::pair{33, 270}, {301, 70}, {5, 3}})
      expectPlain(test::randomPicture(width, height, 7)->record(), radius);
}

TEST(Blur, EmptyPicturesAreEitherMadeOrRefused) {
  for (const Form &form : kForms)
    for (const auto &[width, height] : {std::pair{0, 0}, {0, 3}, {3, 0}, {-1, 4}, {4, -1}}) {
      Session session("Halvenor");
      pic src{0, 0, static_cast<int16_t>(width), static_cast<int16_t>(height), nullptr};
      const pic *out = form.kernel(session.info(), &src, 5.0);
      EXPECT_EQ(session.messages.size(), out == nullptr ? 1U : 0U);
      EXPECT_EQ(session.faults.calls(Service::IsAborted), out == nullptr ? 0 : height);
    }
}

} // namespace
} // namespace zol
