#include "host/services/session.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/simd/levels.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Plane = std::vector<uint8_t>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// The least value within `radius` along one direction of a plane, or between two whole radii's.
Plane plainErosion(const Plane &src, int width, int height, int dx, int dy, float radius) {
  if (!(radius > 0))
    return src;
  Plane out = src;
  const float clipped = std::min(radius, 40000.0F);
  const int whole = static_cast<int>(clipped);
  const int part = static_cast<int>((clipped - static_cast<float>(whole)) * 256 + 0.5F);
  const auto leastWithin = [&](int x, int y, int reach) {
    int least = 255;
    for (int d = -std::min(reach, 400); d <= std::min(reach, 400); ++d)
      if (const int u = x + d * dx, v = y + d * dy; u >= 0 && u < width && v >= 0 && v < height)
        least = std::min<int>(least, src[static_cast<size_t>(v * width + u)]);
    return least;
  };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int near = leastWithin(x, y, whole);
      const int far = leastWithin(x, y, whole + 1);
      out[static_cast<size_t>(y * width + x)] =
          static_cast<uint8_t>(near - ((near - far) * part + 128) / 256);
    }
  return out;
}

/// Sparse holes, so that erosion leaves something.
std::unique_ptr<host::PictureBuffer> sparsePicture(int width, int height, unsigned seed) {
  auto picture = test::randomPicture(width, height, seed);
  for (size_t i = 0; i < picture->pixels(); ++i)
    if (picture->record()->Pixels[i].r > 2)
      picture->record()->Pixels[i].a = 255;
  return picture;
}

Plane alphaOf(const pic *picture) {
  Plane alpha;
  for (int i = 0; i < picture->Width * picture->Height; ++i)
    alpha.push_back(picture->Pixels[i].a);
  return alpha;
}

TEST(AlphaShrink, IsTheLeastAlphaWithinTheRadii) {
  unsigned seed = 0;
  for (const auto &[width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {17, 5}, {131, 150}, {300, 29}})
    for (const float horizontal : {0.0F, 0.3F, 1.0F, 2.5F, 7.998F, 30.0F, 129.25F, 1e30F})
      for (const float vertical : {-1.0F, kNaN, 0.999F, 3.0F, 14.5F, kInfinity})
        for (const SimdLevel level : test::levels()) {
          capSimdLevel(level);
          const auto picture = sparsePicture(width, height, ++seed);
          const auto before = sparsePicture(width, height, seed);
          Plane expected = plainErosion(alphaOf(picture->record()), width, height, 1, 0, horizontal);
          expected = plainErosion(expected, width, height, 0, 1, vertical);
          Session session("Halvenor");
          ASSERT_EQ(AlphaShrink(session.info(), picture->record(), horizontal, vertical), 1);
          ASSERT_EQ(alphaOf(picture->record()), expected)
              << width << 'x' << height << " by " << horizontal << ", " << vertical;
          for (size_t i = 0; i < picture->pixels(); ++i)
            ASSERT_EQ(std::memcmp(&picture->record()->Pixels[i], &before->record()->Pixels[i], 3), 0);
        }
}

TEST(AlphaShrink, MovesAnEdgeSmoothly) {
  Session session("Halvenor");
  int last = 256 * 40;
  for (int quarter = 0; quarter <= 20; ++quarter) {
    const auto picture = host::PictureBuffer::make(40, 1);
    for (int x = 0; x < 40; ++x)
      picture->record()->Pixels[x].a = x == 0 ? 0 : 255;
    ASSERT_EQ(AlphaShrink(session.info(), picture->record(), static_cast<float>(quarter) / 4, 0), 1);
    int opaque = 0;
    for (int x = 0; x < 40; ++x)
      opaque += picture->record()->Pixels[x].a;
    EXPECT_NEAR(opaque, (39 - quarter / 4.0) * 255, 1);
    EXPECT_LT(opaque, last);
    last = opaque;
  }
}

TEST(AlphaShrink, LeavesThePictureAsItWasOnFailure) {
  const auto original = sparsePicture(20, 30, 5);
  const auto picture = sparsePicture(20, 30, 5);
  const auto unchanged = [&] {
    return std::memcmp(picture->record()->Pixels, original->record()->Pixels,
                       picture->pixels() * sizeof(_color_t)) == 0;
  };
  for (int poll = 1; poll <= 30; ++poll) {
    Session session("Halvenor");
    session.faults.abortAtPoll(poll);
    EXPECT_EQ(AlphaShrink(session.info(), picture->record(), 2, 2), 0);
    EXPECT_EQ(session.faults.calls(Service::IsAborted), poll);
    EXPECT_TRUE(unchanged());
  }
  Session session("Halvenor");
  for (int call = 1; call <= 3; ++call) {
    const test::FailingMalloc failing(call);
    EXPECT_EQ(AlphaShrink(session.info(), picture->record(), 2, 2), 0);
    EXPECT_TRUE(failing.failed() && unchanged());
  }
  EXPECT_TRUE(session.messages.empty());
  EXPECT_EQ(AlphaShrink(session.info(), picture->record(), 0, kNaN), 1);
  EXPECT_TRUE(unchanged());
  EXPECT_EQ(AlphaShrink(session.info(), picture->record(), 2, 2), 1);
  EXPECT_FALSE(unchanged());

  pic empty{0, 0, 0, 7, nullptr};
  EXPECT_EQ(AlphaShrink(session.info(), &empty, 2, 2), 1);
}

} // namespace
} // namespace zol
