#include "kernels/blur/soften.h"

#include "plain/soften.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <limits>

namespace zol {
namespace {

using Plane = std::vector<uint16_t>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Values of any size; now and then runs of the least and the greatest, between which sums are largest.
Plane randomPlane(int width, int height, unsigned seed) {
  test::Dice dice(seed);
  Plane plane(static_cast<size_t>(width) * static_cast<size_t>(height));
  for (size_t i = 0; i < plane.size(); ++i)
    plane[i] = dice.below(4) == 0 || i == 0 ? static_cast<uint16_t>(dice.word())
               : dice.below(40) == 0        ? (dice.below(2) != 0 ? UINT16_MAX : 0)
                                            : plane[i - 1];
  return plane;
}

bool soften(Plane &plane, int width, int height, double along, double down) {
  const Softening softening(along, down, width, height);
  return softening && softening(plane.data(), [] { return true; });
}

TEST(Soften, IsThreeBoxesInEachDirection) {
  unsigned seed = 0;
  for (const auto &[width, height] : {std::pair{1, 1}, {1, 70}, {70, 1}, {33, 31}, {140, 40}})
    for (const double along : {0.0, 0.3, 1.7, 2.4495, 20.0, 157.5, 1800.0, 40000.0})
      for (const double down : {-1.0, kNaN, 0.265, 5.0, 96.0, 315.4, 1e30, kInfinity}) {
        if (along + std::min(down, 1e5) > 1000 && width * height > 100) // plainly it takes long
          continue;
        const Plane before = randomPlane(width, height, ++seed);
        Plane expected = before;
        plain::soften(expected.data(), width, height, along, down);
        test::atEveryLevel([&, width = width, height = height] {
          Plane plane = before;
          ASSERT_TRUE(soften(plane, width, height, along, down));
          ASSERT_EQ(plane, expected) << width << 'x' << height << " by " << along << ", " << down;
        });
      }
}

TEST(Soften, DividesExactlyByEverySumOfWeights) {
  // A line of two values: within reach of the edge every weighted sum of the two occurs.
  for (double radius = 0.2; radius < 60000; radius *= 1.0637) {
    Plane expected(64, 0);
    for (size_t i = 32; i < 64; ++i)
      expected[i] = static_cast<uint16_t>(65535 - 7 * i * (i % 3));
    Plane plane = expected;
    plain::softenLine(expected.data(), 64, 1, radius);
    ASSERT_TRUE(soften(plane, 64, 1, radius, 0));
    ASSERT_EQ(plane, expected) << radius;
  }
}

TEST(Soften, LeavesEvenPlanesAndMirrorsLikePlanes) {
  for (const double radius : {0.7, 9.0, 77.7, 500.0}) {
    for (const uint16_t value : std::initializer_list<uint16_t>{0, 1, 255 * 255, 65535}) {
      Plane even(40 * 30, value);
      ASSERT_TRUE(soften(even, 40, 30, radius, radius / 2));
      EXPECT_EQ(even, Plane(40 * 30, value));
    }
    Plane plane = randomPlane(40, 30, 7), mirrored(plane.rbegin(), plane.rend());
    ASSERT_TRUE(soften(plane, 40, 30, radius, 3) && soften(mirrored, 40, 30, radius, 3));
    EXPECT_EQ(plane, Plane(mirrored.rbegin(), mirrored.rend()));
  }
}

TEST(Soften, IsAsSoftAsABellOfATentsVariance) {
  for (const double radius : {4.0, 20.0, 61.3}) {
    constexpr int kCount = 801, kMiddle = 400;
    Plane line(kCount, 0);
    for (int i = kMiddle; i < kCount; ++i) // an edge: its derivative is the bell
      line[static_cast<size_t>(i)] = 65025;
    ASSERT_TRUE(soften(line, kCount, 1, radius, 0));
    double error = 0;
    for (int i = 0; i < kCount; ++i) {
      const double bell =
          65025 * 0.5 * std::erfc((kMiddle - 0.5 - i) / (radius / std::sqrt(6) * std::sqrt(2)));
      error += (line[static_cast<size_t>(i)] - bell) * (line[static_cast<size_t>(i)] - bell) / kCount;
    }
    EXPECT_GT(10 * std::log10(65025.0 * 65025.0 / error), 45) << radius;
  }
}

TEST(Soften, StopsAfterTheRowThatItIsToldTo) {
  constexpr int kWidth = 100, kHeight = 37;
  const Softening softening(3, 4, kWidth, kHeight);
  for (int rows = 1; rows <= 2 * kHeight; ++rows) {
    Plane plane = randomPlane(kWidth, kHeight, 1);
    int asked = 0;
    EXPECT_FALSE(softening(plane.data(), [&] { return ++asked < rows; }));
    EXPECT_EQ(asked, rows);
  }
}

} // namespace
} // namespace zol
