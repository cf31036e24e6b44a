#include "kernels/noise/spread_rows.h"

#include "kernels/noise/hash.h"
#include "plain/spread.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

TEST(Noise, IsThatOfItsDefinition) {
  EXPECT_EQ(mixBits(uint32_t{1}), 0x688990C0U);
  EXPECT_EQ(hash(7, 0xFFFFFFFF, 3, 0x80000000), 0xA775A968U);
}

TEST(Spread, GivesThePlainFormsBytes) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 500; ++round) {
      const auto picture = round % 8 == 0 ? dice.picture(700, 4) : dice.picture(60, 20);
      const pic &from = *picture->record();
      const auto got = host::PictureBuffer::make(from.Width, from.Height),
                 want = host::PictureBuffer::make(from.Width, from.Height);
      const auto radius = [&dice] {
        return dice.below(3) == 0 ? dice.between(0, 40) : dice.below(9) == 0 ? kMostSpread : dice.below(3000);
      };
      const auto cell = [&dice] { return dice.below(2) == 0 ? 1 : dice.between(1, 40); };
      const Spreading how{dice.word(), dice.word(), cell(), cell(), radius(), radius()};
      for (int y = 0; y < from.Height; ++y) {
        const ptrdiff_t row = ptrdiff_t{y} * from.Width;
        ZOL_SELECT(spreadRow)(from, y, got->record()->Pixels + row, how);
        for (int x = 0; x < from.Width; ++x)
          want->record()->Pixels[row + x] = plain::spread(from, x, y, how);
      }
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record()))
          << from.Width << " by " << from.Height << ", cells " << how.cellWidth << " by " << how.cellHeight
          << ", radii " << how.radiusX << ", " << how.radiusY;
    }
  });
}

} // namespace
} // namespace zol
