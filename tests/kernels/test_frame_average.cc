#include "kernels/motion/frame_average.h"

#include "plain/frame_average.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

using Row = std::vector<_color_t>;

/// Opaque, transparent and other stretches.
Row anyRow(test::Dice &dice, int width) {
  Row row;
  for (int i = 0; i < width; ++i) {
    const uint32_t word = dice.word(), kind = uint32_t(i / 24 % 3);
    const uint32_t alpha = kind == 0 ? 255 : kind == 1 ? word >> 24 : dice.below(8) / 6;
    row.push_back({uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), uint8_t(alpha)});
  }
  return row;
}

/// That many weights of at least 1, 256 in all.
std::vector<uint16_t> anyWeights(test::Dice &dice, int count) {
  std::vector<uint16_t> weights(size_t(count), 1);
  for (int left = 256 - count; left > 0; --left)
    ++weights[size_t(dice.below(count))];
  return weights;
}

bool same(const Row &got, const Row &want) {
  return std::memcmp(got.data(), want.data(), got.size() * sizeof(_color_t)) == 0;
}

TEST(FrameAverage, GivesThePlainFormsBytes) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 400; ++round) {
      const int width = dice.between(1, 150), count = dice.between(1, 32);
      const std::vector<uint16_t> weights = anyWeights(dice, count);
      const Row hidden = anyRow(dice, width);
      std::vector<Row> rows;
      std::vector<const _color_t *> places;
      for (int i = 0; i < count; ++i)
        rows.push_back(round % 9 == 0 ? Row(size_t(width), {255, 255, 255, 255}) : anyRow(dice, width));
      for (const Row &row : rows)
        places.push_back(row.data());
      Row out(static_cast<size_t>(width)), want = out;
      const auto expect = [&](auto of) {
        for (size_t x = 0; x < out.size(); ++x) {
          std::vector<plain::Exposed> exposed;
          for (size_t i = 0; i < rows.size(); ++i)
            exposed.push_back({rows[i][x], weights[i]});
          want[x] = of(exposed, hidden[x]);
        }
        ASSERT_TRUE(same(out, want)) << round;
      };
      ZOL_SELECT(averageRows)(places.data(), weights.data(), count, out.data(), width);
      expect([](const auto &exposed, _color_t) { return plain::average(exposed); });

      std::vector<WidePixel> sums(out.size());
      for (size_t i = 0; i < rows.size(); ++i) {
        Row multiplied(out.size()), wanted;
        for (const _color_t p : rows[i])
          wanted.push_back(plain::premultiplied(p));
        ZOL_SELECT(premultiply)(rows[i].data(), multiplied.data(), width);
        ASSERT_TRUE(same(multiplied, wanted)) << round;
        ZOL_SELECT(addWeighted)(multiplied.data(), weights[i], sums.data(), width);
        rows[i] = multiplied;
      }
      ZOL_SELECT(averageOfSums)(sums.data(), hidden.data(), out.data(), width);
      expect(
          [](const auto &exposed, _color_t under) { return plain::averageOfPremultiplied(exposed, under); });
    }
  });
}

} // namespace
} // namespace zol
