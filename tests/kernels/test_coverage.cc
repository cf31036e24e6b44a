#include "kernels/shape/coverage.h"

#include "plain/coverage.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>
#include <numeric>

namespace zol {
namespace {

using plain::PolygonPoint;
using Polygon = std::vector<PolygonPoint>;
using Bytes = std::vector<uint8_t>;

void draw(Coverage &coverage, const Polygon &polygon) {
  for (const auto &[x, y] : polygon)
    coverage.lineTo(x, y);
  coverage.close();
}

Bytes bytesOf(const Coverage &coverage, int width, int height) {
  Bytes bytes;
  for (int y = 0; y < height; ++y)
    bytes.insert(bytes.end(), coverage.row(y), coverage.row(y) + width);
  return bytes;
}

Bytes covered(int width, int height, const std::vector<Polygon> &polygons, double squeeze = 1) {
  Coverage coverage(width, height, squeeze);
  for (const Polygon &polygon : polygons)
    draw(coverage, polygon);
  coverage.merge();
  EXPECT_TRUE(coverage);
  return bytesOf(coverage, width, height);
}

Polygon star(double x, double y, double radius, int corners, double turn) {
  Polygon polygon;
  for (int i = 0; i < 2 * corners; ++i) {
    const double angle = turn + i * std::numbers::pi / corners, r = i % 2 == 0 ? radius : radius * 0.4;
    polygon.push_back({x + r * std::cos(angle), y + r * std::sin(angle)});
  }
  return polygon;
}

TEST(Coverage, IsThePlainForm) {
  constexpr double kHostile[] = {std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(),
                                 1e300,
                                 -1e9,
                                 5e5,
                                 -70000,
                                 0};
  test::Dice dice(5);
  for (int round = 0; round < 120; ++round) {
    const int width = dice.between(0, 70), height = dice.between(0, 40);
    std::vector<Polygon> polygons(static_cast<size_t>(dice.between(1, 12)));
    for (Polygon &polygon : polygons)
      for (int corner = dice.between(1, 6); corner > 0; --corner) {
        const double reach = round % 3 == 0 ? 900 : 90;
        polygon.push_back({(dice.share() - 0.3) * reach, (dice.share() - 0.3) * reach});
        for (double &coordinate : polygon.back())
          coordinate = round % 4 == 0   ? std::floor(coordinate)
                       : round % 7 == 0 ? kHostile[dice.below(8)]
                                        : coordinate;
      }
    const int brightness = round % 2 == 0 ? 256 : dice.between(0, 256);
    plain::Coverage expected(width, height);
    for (const Polygon &polygon : polygons)
      expected.add(polygon);
    expected.merge(brightness);
    test::atEveryLevel([&] {
      Coverage coverage(width, height);
      for (const Polygon &polygon : polygons)
        draw(coverage, polygon);
      coverage.merge(brightness);
      ASSERT_TRUE(coverage);
      ASSERT_EQ(bytesOf(coverage, width, height), expected.bytes) << "round " << round;
    });
  }
}

TEST(Coverage, MergesMorePolygonsThanFit) {
  plain::Coverage expected(40, 12);
  std::vector<Polygon> polygons;
  test::Dice dice(9);
  for (int i = 0; i < 2 * Coverage::kTogether + 100; ++i) {
    const double x = dice.share() * 45 - 2, y = dice.share() * 14 - 1;
    polygons.push_back({{x, y}, {x + 0.1, y}, {x + 0.1, y + 0.1}});
    expected.add(polygons.back());
  }
  expected.merge(256);
  test::atEveryLevel([&] { EXPECT_EQ(covered(40, 12, polygons), expected.bytes); });
}

TEST(Coverage, SumsUpToTheArea) {
  for (int i = 0; i < 40; ++i) {
    const double x = 10 + 0.217 * i, y = 9 + 0.129 * i, width = 0.3 + i * 0.37, height = 20 - i * 0.4;
    const Bytes bytes = covered(40, 40, {{{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}}});
    const double sum = std::accumulate(bytes.begin(), bytes.end(), 0.0) / 255;
    EXPECT_NEAR(sum, width * height, (width + height) / 128 + 0.1) << i;
  }
}

TEST(Coverage, TurnsAndMirrorsWithItsShape) {
  constexpr int kSize = 64;
  const auto at = [](const Bytes &bytes, int x, int y) { return int{bytes[size_t(y * kSize + x)]}; };
  for (int i = 0; i < 10; ++i) {
    const Polygon shape = star(30.3 + i * 0.11, 31.7, 20 + i, 5, i * 0.3);
    Polygon mirrored, turned;
    for (const auto &[x, y] : shape) {
      mirrored.push_back({kSize - x, y});
      turned.push_back({kSize - y, x});
    }
    const Bytes straight = covered(kSize, kSize, {shape});
    const Bytes mirror = covered(kSize, kSize, {mirrored}), turn = covered(kSize, kSize, {turned});
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) {
        ASSERT_NEAR(at(mirror, kSize - 1 - x, y), at(straight, x, y), 1) << x << ',' << y;
        ASSERT_NEAR(at(turn, kSize - 1 - y, x), at(straight, x, y), 2) << x << ',' << y;
      }
  }
}

TEST(Coverage, LooksLikeManySamples) {
  constexpr int kSize = 80, kSamples = 16;
  for (int i = 0; i < 6; ++i) {
    const Polygon shape = star(40.3, 39.1, 36, 3 + i, i * 0.7);
    const Bytes bytes = covered(kSize, kSize, {shape});
    double off = 0;
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) {
        int inside = 0;
        for (int s = 0; s < kSamples * kSamples; ++s) {
          const double px = x + (s % kSamples + 0.5) / kSamples, py = y + (s / kSamples + 0.5) / kSamples;
          bool in = false;
          for (size_t k = 0; k < shape.size(); ++k) {
            const auto &[ax, ay] = shape[k];
            const auto &[bx, by] = shape[(k + 1) % shape.size()];
            in ^= (ay > py) != (by > py) && px < ax + (py - ay) / (by - ay) * (bx - ax);
          }
          inside += in ? 1 : 0;
        }
        const double difference = bytes[size_t(y * kSize + x)] - inside * 255.0 / (kSamples * kSamples);
        off += difference * difference;
      }
    EXPECT_GT(10 * std::log10(255.0 * 255 * kSize * kSize / off), 45) << i;
  }
}

TEST(Coverage, LeavesNoSeamBetweenPolygons) {
  std::vector<Polygon> wedges;
  const auto rim = [](int i) {
    return PolygonPoint{30.37 + 40 * std::cos(i * 0.37), 30.11 + 40 * std::sin(i * 0.37)};
  };
  for (int i = 0; i < 17; ++i) // some one way round and some the other
    wedges.push_back(i % 2 == 0 ? Polygon{{30.37, 30.11}, rim(i), rim(i + 1)}
                                : Polygon{{30.37, 30.11}, rim(i + 1), rim(i)});
  const Bytes bytes = covered(60, 60, wedges);
  for (int y = 8; y < 52; ++y)
    for (int x = 8; x < 52; ++x)
      ASSERT_EQ(bytes[size_t(y * 60 + x)], 255) << x << ',' << y;
}

TEST(Coverage, SqueezesColumns) {
  const Polygon wide{{4, 1}, {20, 1}, {20, 5}, {4, 5}}, narrow{{2, 1}, {10, 1}, {10, 5}, {2, 5}};
  EXPECT_EQ(covered(12, 8, {wide}, 2), covered(12, 8, {narrow}));
}

} // namespace
} // namespace zol
