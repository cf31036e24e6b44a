#include "kernels/sampling/path_average.h"

#include "plain/path_average.h"
#include "plain/wide.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

plain::Path anyPath(test::Dice &dice, int width, int height) {
  const double size = dice.below(4) == 0 ? 16 : dice.share(), angle = 7 * dice.share();
  plain::Path path{dice.below(3), 0, 0, 0, 0, 0, 0, 0, 0};
  path.aspect = dice.below(2) == 0 ? 1 : 0.5 + dice.share();
  path.length = size * width / 4;
  path.right = dice.below(3) == 0 ? 1 : std::cos(angle);
  path.down = dice.below(3) == 0 ? 0 : std::sin(angle) * path.aspect;
  path.scale = 1 + size / 10;
  path.degrees = 36 * size;
  path.centreX = width * (dice.below(2) == 0 ? 0.5 : dice.scaled(-6, 4));
  path.centreY = height * (dice.below(2) == 0 ? 0.5 : dice.scaled(-6, 4));
  return path;
}

Path pathOf(const plain::Path &p) {
  return {static_cast<Path::Kind>(p.kind),          p.length, p.right,   p.down,   p.scale,
          p.degrees * 3.14159265358979323846 / 180, p.aspect, p.centreX, p.centreY};
}

/// All passes over a picture, row by row.
std::vector<WidePixel> blurred(const pic &picture, const Path &path) {
  const int width = picture.Width, height = picture.Height;
  const size_t step = size_t(width) + 1;
  std::vector<WidePixel> from(step * (size_t(height) + 1)), to = from;
  for (int y = 0; y < height; ++y)
    startPathRow(picture.Pixels + y * width, from.data() + size_t(y) * step, width);
  const PathAverage average(path, width, height);
  for (int pass = 0; pass < PathAverage::kPasses; ++pass) {
    for (int y = 0; y < height; ++y)
      average.makeRow(pass, {from.data(), width, height}, y, to.data() + size_t(y) * step);
    std::swap(from, to);
  }
  for (WidePixel &p : from)
    p = {uint16_t(p.b ^ 0x8000), uint16_t(p.g ^ 0x8000), uint16_t(p.r ^ 0x8000), uint16_t(p.a ^ 0x8000)};
  return from;
}

TEST(PathAverage, GivesThePlainFormsValues) {
  test::Dice dice(1);
  for (int round = 0; round < 120; ++round) {
    const int width = dice.between(1, 90), height = dice.between(1, 20);
    const auto picture = test::randomPicture(width, height, dice.word());
    const plain::Path path = anyPath(dice, width, height);
    std::vector<uint16_t> want(4 * picture->pixels());
    for (size_t i = 0; i < picture->pixels(); ++i)
      plain::toWide(picture->record()->Pixels[i], &want[4 * i]);
    want = plain::pathAverage(want, width, height, path);
    test::atEveryLevel([&] {
      const std::vector<WidePixel> got = blurred(*picture->record(), pathOf(path));
      for (int i = 0; i < width * height; ++i) {
        const WidePixel p = got[size_t(i / width * (width + 1) + i % width)];
        ASSERT_EQ(std::memcmp(&p, &want[size_t(4 * i)], sizeof p), 0)
            << "round " << round << ", kind " << path.kind << ", " << i % width << ", " << i / width << " of "
            << width << " by " << height;
      }
    });
  }
}

/// A bright dot in the middle of the dark, blurred: how much of it there is, and whether all of it lies where
/// it may.
constexpr int kDot = 3; // its reach
struct Trace {
  double sum = 0;
  bool strays = false;

  template <class On> Trace(const Path &path, int dotX, int dotY, On on) {
    constexpr int kSide = 201;
    const auto picture = host::PictureBuffer::make(kSide, kSide);
    for (size_t i = 0; i < picture->pixels(); ++i)
      picture->record()->Pixels[i] = {0, 0, 0, 255};
    for (int y = dotY - kDot; y <= dotY + kDot; ++y)
      for (int x = dotX - kDot; x <= dotX + kDot; ++x)
        picture->record()->Pixels[y * kSide + x] = {255, 255, 255, 255};
    const std::vector<WidePixel> out = blurred(*picture->record(), path);
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const int value = out[size_t(y * (kSide + 1) + x)].g;
        sum += value / double(kWideOne) / ((2 * kDot + 1) * (2 * kDot + 1));
        strays |= value > 0 && !on(x - 100.0, y - 100.0);
      }
  }
};

TEST(PathAverage, LeavesADotsTraceOnItsPath) {
  constexpr double kReach = 1.5 * kDot + 3.5; // its corners, and a pass spreads by a pixel at most
  const Path path{Path::Kind::direction, 80, 0.6, 0.8, 1.2, 0.4, 1, 100.5, 100.5};
  const auto of = [&](Path::Kind kind) {
    Path changed = path;
    changed.kind = kind;
    return changed;
  };
  const Trace straight(of(Path::Kind::direction), 100, 100, [](double x, double y) {
    return std::abs(0.8 * x - 0.6 * y) < kReach && std::hypot(x, y) < 40 + kReach;
  });
  EXPECT_FALSE(straight.strays);
  EXPECT_NEAR(straight.sum, 1, 0.01);
  const Trace ray(of(Path::Kind::zoom), 160, 130, [](double x, double y) {
    return std::abs(0.4472 * x - 0.8944 * y) < kReach && std::abs(std::hypot(x, y) - 67.1) < 6.2 + kReach;
  });
  EXPECT_FALSE(ray.strays);
  EXPECT_NEAR(ray.sum, 1, 0.01);
  const Trace arc(of(Path::Kind::spin), 160, 130, [](double x, double y) {
    return std::abs(std::hypot(x, y) - 67.1) < kReach &&
           std::abs(std::atan2(y, x) - 0.4636) < 0.2 + kReach / 67;
  });
  EXPECT_FALSE(arc.strays);
  EXPECT_NEAR(arc.sum, 1, 0.01);
}

} // namespace
} // namespace zol
