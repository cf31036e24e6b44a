#include "kernels/exports/alpha_shrink.h"

#include "host/services/session.h"
#include "plain/erosion.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace zol {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Sparse holes, so that erosion leaves something.
std::unique_ptr<host::PictureBuffer> sparsePicture(int width, int height, unsigned seed) {
  auto picture = test::randomPicture(width, height, seed);
  for (size_t i = 0; i < picture->pixels(); ++i)
    if (picture->record()->Pixels[i].r > 2)
      picture->record()->Pixels[i].a = 255;
  return picture;
}

TEST(AlphaShrink, IsTheLeastAlphaWithinTheRadii) {
  unsigned seed = 0;
  host::Session session("Halvenor");
  for (const auto &[width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {17, 5}, {131, 150}, {300, 29}})
    for (const float horizontal : {0.0F, 0.3F, 1.0F, 2.5F, 7.998F, 30.0F, 129.25F, 1e30F})
      for (const float vertical : {-1.0F, kNaN, 0.999F, 3.0F, 14.5F, kInfinity}) {
        const auto expected = sparsePicture(width, height, ++seed);
        plain::erode(*expected->record(), 1, 0, horizontal);
        plain::erode(*expected->record(), 0, 1, vertical);
        test::atEveryLevel([&, width = width, height = height] {
          const auto picture = sparsePicture(width, height, seed);
          ASSERT_EQ(AlphaShrink(session.info(), picture->record(), horizontal, vertical), 1);
          ASSERT_TRUE(test::samePixels(*picture->record(), *expected->record()))
              << width << 'x' << height << " by " << horizontal << ", " << vertical;
        });
      }
  pic empty{0, 0, 0, 7, nullptr};
  EXPECT_EQ(AlphaShrink(session.info(), &empty, 2, 2), 1);
}

} // namespace
} // namespace zol
