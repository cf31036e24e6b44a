// What the resampler makes of pictures.

#include "kernels/warp/warp_row.h"

#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"
#include "tests/support/scenes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <numbers>

namespace zol {
namespace {

using Buffer = std::unique_ptr<host::PictureBuffer>;
using host::PictureBuffer;

constexpr WarpFilter kFilters[] = {WarpFilter::sharp, WarpFilter::smooth, WarpFilter::pixels};

Buffer painted(int width, int height, const std::function<_color_t(int x, int y)> &color) {
  auto picture = PictureBuffer::make(width, height);
  for (int i = 0; i < width * height; ++i)
    picture->record()->Pixels[i] = color(i % width, i / width);
  return picture;
}
Buffer painted(int width, int height, const std::function<double(double x, double y)> &gray) {
  return painted(width, height, [&](int x, int y) -> _color_t {
    const auto level = static_cast<uint8_t>(std::lround(gray(x + 0.5, y + 0.5)));
    return {level, level, level, 255};
  });
}
Buffer photograph(unsigned width, unsigned height) {
  const auto words = test::Scenes(width, height, 1).texture(0, 0, 0).a;
  auto picture = PictureBuffer::make(static_cast<int>(width), static_cast<int>(height));
  std::memcpy(picture->record()->Pixels, words.data(), words.size() * sizeof words[0]);
  return picture;
}

Buffer warped(const pic &picture, const Projection &toSource, int width, int height, WarpFilter filter) {
  const WarpSource source = WarpSource::of(picture);
  const WarpMap map(toSource, picture.Width, picture.Height);
  auto out = PictureBuffer::make(width, height);
  for (int y = 0; y < height; ++y)
    warpRow(source, map, y, 0, width, filter, 4096, out->record()->Pixels + y * width);
  return out;
}

/// Turned about the middle and enlarged so many times.
Projection turned(double degrees, double scale, double x, double y) {
  const double c = std::cos(degrees * std::numbers::pi / 180) / scale,
               s = std::sin(degrees * std::numbers::pi / 180) / scale;
  return Projection::moved(x, y) * Projection{{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}} * Projection::moved(-x, -y);
}

/// But for what lies near the edges.
double likeness(const PictureBuffer &a, const PictureBuffer &b, int margin) {
  const auto inner = [margin](const pic &picture) {
    return painted(picture.Width - 2 * margin, picture.Height - 2 * margin,
                   [&](int x, int y) { return picture.Pixels[(y + margin) * picture.Width + x + margin]; });
  };
  return test::psnr(*inner(*a.record())->record(), *inner(*b.record())->record());
}

// ---- What stays as it is ----

TEST(Resampling, LeavesFlatPicturesFlat) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 60; ++round) {
      const _color_t color{uint8_t(dice.below(256)), uint8_t(dice.below(256)), uint8_t(dice.below(256)),
                           uint8_t(round % 3 == 0 ? 255 : dice.between(16, 255))};
      const auto flat = painted(20, 15, [&](int, int) { return color; });
      WarpSource source = WarpSource::of(*flat->record());
      source.beyond = static_cast<WarpBeyond>(dice.below(3));
      const auto entry = [&] { return dice.scaled(-3, 3); };
      const WarpMap map({{{entry(), entry(), entry()},
                          {entry(), entry(), entry()},
                          {0.02 * dice.share(), 0.02 * dice.share(), 1}}},
                        20, 15);
      _color_t row[70];
      for (const WarpFilter filter : kFilters) {
        warpPixels(source, map, dice.below(20), 0, 70, filter, row);
        for (const _color_t &p : row)
          ASSERT_EQ(std::memcmp(&p, &color, sizeof p), 0) << round;
      }
    }
  });
}

TEST(Resampling, CopiesWhatIsMovedTurnedAndMirroredByWholePixels) {
  const auto picture = test::randomPicture(23, 17, 1);
  for (size_t i = 0; i < picture->pixels(); i += 2) // others are seen through, some are not seen
    picture->record()->Pixels[i].a = i % 4 == 0 ? 255 : 0;
  test::Dice dice(2);
  test::atEveryLevel([&] {
    for (int turn = 0; turn < 8; ++turn)
      for (const WarpFilter filter : kFilters) {
        const int across = turn & 1 ? -1 : 1, down = turn & 2 ? -1 : 1;
        const bool swapped = (turn & 4) != 0;
        const double x = across < 0 ? 23 + 3 : -3, y = down < 0 ? 17 + 2 : -2; // all of it, moved by (3, 2)
        const double a = across, d = down;
        const double slack = dice.share() * 1e-4; // of what comes of sums and products
        const Projection map = swapped ? Projection{{{0, a, x + slack}, {d, 0, y - slack}, {0, 0, 1}}}
                                       : Projection{{{a, 0, x + slack}, {0, d, y - slack}, {0, 0, 1}}};
        const auto want = painted(30, 30, [&](int column, int row) -> _color_t {
          const Point at = map.of({column + 0.5, row + 0.5});
          const int sx = static_cast<int>(std::floor(at.x)), sy = static_cast<int>(std::floor(at.y));
          const bool has = sx >= 0 && sx < 23 && sy >= 0 && sy < 17;
          const _color_t p = has ? picture->record()->Pixels[sy * 23 + sx] : _color_t{};
          return p.a != 0 ? p : _color_t{};
        });
        ASSERT_TRUE(
            test::samePixels(*warped(*picture->record(), map, 30, 30, filter)->record(), *want->record()))
            << turn;
      }
  });
}

TEST(Resampling, NeverShowsWhatTransparentPixelsHide) {
  const auto picture = painted(64, 48, [](int x, int y) {
    return (x / 5 + y / 7) % 2 == 0 ? _color_t{0, 180, 90, uint8_t(255 - x)} : _color_t{255, 0, 255, 0};
  });
  for (const WarpFilter filter : kFilters)
    for (const double scale : {0.1, 0.4, 0.97, 3.3}) {
      const auto out = warped(*picture->record(), turned(13, scale, 32, 24), 64, 48, filter);
      for (size_t i = 0; i < out->pixels(); ++i)
        EXPECT_LT(out->record()->Pixels[i].b, 60) << scale; // what overshoots alone
    }
}

TEST(Resampling, CoversAsMuchAsTheOutlineHolds) {
  const auto picture = painted(240, 160, [](int, int) { return _color_t{1, 2, 3, 255}; });
  for (const double scale : {0.11, 0.2, 0.45})
    for (double degrees = 0; degrees < 360; degrees += 12.5) {
      const Projection place =
          Projection::moved(120, 80) * turned(degrees, scale, 0, 0) * Projection::moved(-75.3, -70.8);
      const auto out = warped(*picture->record(), place, 150, 150, WarpFilter::smooth);
      double sum = 0;
      for (size_t i = 0; i < out->pixels(); ++i)
        sum += out->record()->Pixels[i].a / 255.0;
      EXPECT_NEAR(sum, 240 * 160 * scale * scale, 0.005 * 240 * 160 * scale * scale)
          << scale << ' ' << degrees;
    }
}

// ---- Shrinking ----

double lanczos(double x) {
  if (x == 0)
    return 1;
  const double t = std::numbers::pi * x;
  return std::abs(x) < 3 ? 3 * std::sin(t) * std::sin(t / 3) / (t * t) : 0;
}
/// Shrunk with three lobes, without rounding in between.
Buffer lanczosOf(const pic &picture, double shrink, int width, int height) {
  struct Line {
    int first;
    std::vector<double> weights;
  };
  const auto lines = [shrink](int count) {
    std::vector<Line> all;
    for (int i = 0; i < count; ++i) {
      const double centre = (i + 0.5) * shrink - 0.5;
      Line line{static_cast<int>(std::ceil(centre - 3 * shrink)), {}};
      double sum = 0;
      for (int k = line.first; k <= centre + 3 * shrink; ++k) {
        line.weights.push_back(lanczos((k - centre) / shrink));
        sum += line.weights.back();
      }
      for (double &w : line.weights)
        w /= sum;
      all.push_back(line);
    }
    return all;
  };
  const auto across = lines(width), down = lines(height);
  return painted(width, height, [&](int x, int y) {
    double sum[3] = {};
    const Line &h = across[size_t(x)], &v = down[size_t(y)];
    for (size_t j = 0; j < v.weights.size(); ++j)
      for (size_t i = 0; i < h.weights.size(); ++i) {
        const int sx = std::clamp(h.first + int(i), 0, picture.Width - 1),
                  sy = std::clamp(v.first + int(j), 0, picture.Height - 1);
        const _color_t p = picture.Pixels[sy * picture.Width + sx];
        const double w = h.weights[i] * v.weights[j];
        sum[0] += w * p.b, sum[1] += w * p.g, sum[2] += w * p.r;
      }
    const auto byte = [&](int c) { return uint8_t(std::clamp(std::lround(sum[c]), 0L, 255L)); };
    return _color_t{byte(0), byte(1), byte(2), 255};
  });
}

TEST(Resampling, ShrinksLikeLanczos) {
  const auto photo = photograph(400, 300);
  for (const double shrink : {2.0, 3.3, 10.0}) {
    const int width = int(400 / shrink), height = int(300 / shrink);
    const auto want = lanczosOf(*photo->record(), shrink, width, height);
    for (const WarpFilter filter : {WarpFilter::sharp, WarpFilter::smooth}) {
      const auto out = warped(*photo->record(), Projection::scaled(shrink, shrink), width, height, filter);
      const double alike = likeness(*out, *want, 1);
      EXPECT_GT(alike, 31) << shrink;
    }
  }
}

TEST(Resampling, LeavesNothingOfWavesThatAreTooFine) {
  // Waves of 1 to 4 pixels of the output: rings whose length falls from 8 to 2 pixels.
  const double rise = 0.375 / std::hypot(480, 400);
  const auto rings = painted(480, 400, [&](double x, double y) {
    const double r = std::hypot(x, y);
    return 127.5 + 127 * std::cos(2 * std::numbers::pi * (0.125 * r + 0.5 * rise * r * r));
  });
  for (const double degrees : {0.0, 30.0}) {
    const auto out =
        warped(*rings->record(),
               Projection::moved(240, 200) * turned(degrees, 0.125, 0, 0) * Projection::moved(-16, -16), 32,
               32, WarpFilter::smooth);
    double sum = 0;
    for (size_t i = 0; i < out->pixels(); ++i)
      sum += std::pow(out->record()->Pixels[i].g - 127.5, 2);
    const double rms = std::sqrt(sum / double(out->pixels()));
    EXPECT_LT(rms, 0.02 * 255);
  }
}

TEST(Resampling, KeepsTheContrastOfWavesWhateverTheScale) {
  for (double shrink = 1.01; shrink < 60; shrink *= 1.07) {
    const auto waves = painted(static_cast<int>(66 * shrink), 1, [&](double x, double) {
      return 127.5 + 127 * std::cos(std::numbers::pi / 2 * (x / shrink));
    });
    double sum = 0;
    for (int shift = 0; shift < 8; ++shift) {
      const Projection map = Projection::scaled(shrink, 1) * Projection::moved(shift / 8.0, 0);
      const auto out = warped(*waves->record(), map, 60, 1, WarpFilter::smooth);
      for (int x = 4; x < 56; ++x)
        sum += std::pow(out->record()->Pixels[x].g - 127.5, 2);
    }
    EXPECT_NEAR(std::sqrt(sum / (8 * 52) * 2) / 127, 0.81, 0.02 * 0.81) << shrink;
  }
}

// ---- Sharpness ----

TEST(Resampling, KeepsSharpPicturesSharper) {
  const auto photo =
      warped(*photograph(200, 160)->record(), Projection::scaled(0.66, 0.66), 200, 160, WarpFilter::sharp);
  const auto there = [&](const pic &picture, double degrees, WarpFilter filter) {
    return warped(picture, turned(degrees, 1, 100, 80), 200, 160, filter);
  };
  double alike[2];
  for (const WarpFilter filter : {WarpFilter::sharp, WarpFilter::smooth}) {
    const auto back = there(*there(*photo->record(), 10, filter)->record(), -10, filter);
    alike[static_cast<int>(filter)] = likeness(*back, *photo, 40);
  }
  EXPECT_GT(alike[0], alike[1] + 3);
}

TEST(Resampling, ZoomsWithoutJitter) {
  const auto dot = painted(80, 60, [](double x, double y) {
    const double r = std::hypot(x - 61.5, y - 13.5) / 3;
    return r < 1 ? 127 + 127 * std::cos(std::numbers::pi * r) : 0;
  });
  for (int frame = 0; frame < 100; ++frame) {
    const Projection map = turned(0, std::pow(1.001, frame), 40, 30);
    const auto out = warped(*dot->record(), map, 80, 60, WarpFilter::sharp);
    double sum = 0, x = 0, y = 0;
    for (size_t i = 0; i < out->pixels(); ++i) {
      const double w = out->record()->Pixels[i].g;
      sum += w, x += w * (static_cast<double>(i % 80) + 0.5), y += w * (static_cast<double>(i / 80) + 0.5);
    }
    const Point want = map.inverse().of({61.5, 13.5});
    EXPECT_NEAR(x / sum, want.x, 1 / 64.0) << frame;
    EXPECT_NEAR(y / sum, want.y, 1 / 64.0) << frame;
  }
}

} // namespace
} // namespace zol
