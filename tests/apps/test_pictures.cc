// What hashes cannot say of rendered pictures: that shapes are where they belong, and that lines are mended.

#include "tests/apps/zol.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zol::test {
namespace {

using Pictures = InFolder;

uint8_t byteAt(const std::string &bytes, size_t place) { return static_cast<uint8_t>(bytes[place]); }

/// Of the colours; alpha is left out.
double psnr(const std::string &a, const std::string &b) {
  EXPECT_EQ(a.size(), b.size());
  double sum = 0;
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    if (i % 4 != 3)
      sum += std::pow(byteAt(a, i) - byteAt(b, i), 2);
  return 10 * std::log10(255.0 * 255 * static_cast<double>(a.size()) * 3 / 4 / sum);
}

TEST_F(Pictures, DeinterlacingRestoresTheProgressivePicture) {
  if (media("phone.mp4").empty())
    GTEST_SKIP() << "scripts/media fetches the clip";
  constexpr size_t kFrame = size_t{320} * 180 * 4;
  make("progressive.mkv",
       "-i " + media("phone.mp4") +
           " -an -vf trim=end_frame=24,framestep=3,crop=320:180,setpts=N/50/TB,format=bgra "
           "-r 50 -c:v ffv1");
  make("woven.mkv", "-i progressive.mkv -vf tinterlace=mode=interleave_top -c:v ffv1");
  const std::string all = pixels("progressive.mkv"), woven = pixels("woven.mkv");
  ASSERT_GE(woven.size(), 3 * kFrame);
  std::string upper, lower; // where the woven lines come from
  for (size_t i = 0; i < woven.size() / kFrame; ++i) {
    upper += all.substr(2 * i * kFrame, kFrame);
    lower += all.substr((2 * i + 1) * kFrame, kFrame);
  }
  const struct {
    const char *words;
    const std::string &original;
    double rise; // in decibels
  } ways[] = {
      {"deinterlace", upper, 10},
      {"deinterlace --set Blending=on", upper, 2},
      {"'deinterlace basic' --set Method=1", upper, 8},
      {"'deinterlace basic' --set Method=0", lower, 8},
  };
  for (const auto &way : ways)
    EXPECT_GT(psnr(rendered(std::string(way.words) + " -i woven.mkv"), way.original),
              psnr(woven, way.original) + way.rise)
        << way.words;
  // Rebuilt pixels lose their alpha, unless the output has none.
  render("deinterlace -i woven.mkv --no-alpha -o opaque.nut");
  const std::string opaque = pixels("opaque.nut");
  std::string mixed = rendered("deinterlace -i woven.mkv");
  EXPECT_NE(opaque, mixed);
  for (size_t i = 3; i < mixed.size(); i += 4)
    mixed[i] = '\xFF';
  EXPECT_EQ(opaque, mixed);
}

// Coordinates without a cubic term, curves that turn between their ends, ends on whole pixels: the area that
// is covered is the shape's own, and it lies where the path goes.
TEST_F(Pictures, ShapesAreFilledWholeWhereTheirPathsGo) {
  using std::numbers::pi;
  const struct {
    const char *path;
    double area, x, y; // the centre of mass
  } shapes[] = {
      {"M60 160 Q160 -80 260 160 Z", 2.0 / 3 * 200 * 120, 160, 160 - 0.4 * 120},
      {"M100 90 A60 60 0 1 0 220 90 A60 60 0 1 0 100 90 Z", pi * 3600, 160, 90},
      {"M117.574 47.574 A60 60 0 0 1 202.426 132.426 A60 60 0 0 1 117.574 47.574 Z", pi * 3600, 160, 90},
      {"M60 40 H260 V140 H60 Z", 200 * 100, 160, 90},
      {"M0 20 H160 V120 H0 Z M40 40 H120 V100 H40 Z", 160 * 100 - 80 * 60, 80, 70}, // the hole stays open
  };
  for (const auto &[path, area, x, y] : shapes) {
    const std::string image =
        rendered(std::string("'fill geometry' --size 320x180 --frames 0-0 --set 'Geometry=") + path + "'");
    double covered = 0, sumX = 0, sumY = 0;
    for (size_t i = 3; i < image.size(); i += 4) {
      const double share = byteAt(image, i) / 255.0;
      covered += share;
      sumX += share * (static_cast<double>(i / 4 % 320) + 0.5);
      sumY += share * (static_cast<double>(i / 4 / 320) + 0.5);
    }
    EXPECT_NEAR(covered / area, 1, 0.005) << path;
    EXPECT_NEAR(sumX / covered, x, 0.3) << path;
    EXPECT_NEAR(sumY / covered, y, 0.3) << path;
  }
  fails("render 'fill geometry' --size 320x180 -o none.png", "Geometry not assigned");
}

} // namespace
} // namespace zol::test
