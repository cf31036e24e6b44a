// Looks at what the command makes of real photographs and clips.

#include "tests/apps/zol.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zol::test {
namespace {

constexpr size_t kWidth = 320, kHeight = 180;
constexpr size_t kFrame = kWidth * kHeight * 4;

/// Raw pixels: blue, green, red, alpha.
using Frames = std::string;

uint8_t byteAt(const Frames &frames, size_t place) { return static_cast<uint8_t>(frames[place]); }

Frames frame(const Frames &frames, size_t index) { return frames.substr(index * kFrame, kFrame); }

/// Of the colours; alpha is left out. Infinite where they are the same.
double psnr(const Frames &a, const Frames &b) {
  EXPECT_EQ(a.size(), b.size());
  double sum = 0;
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    if (i % 4 != 3)
      sum += std::pow(byteAt(a, i) - byteAt(b, i), 2);
  return 10 * std::log10(255.0 * 255 * static_cast<double>(a.size()) * 3 / 4 / sum);
}

double greenVariance(const Frames &picture) {
  double sum = 0, squares = 0;
  for (size_t i = 1; i < picture.size(); i += 4) {
    sum += byteAt(picture, i);
    squares += std::pow(byteAt(picture, i), 2);
  }
  const double count = static_cast<double>(picture.size()) / 4;
  return squares / count - std::pow(sum / count, 2);
}

/// Every byte within 1 of the exact cross-fade, which carries its rounding error on from pixel to pixel.
void expectMix(const Frames &is, const Frames &a, const Frames &b, double ratio) {
  ASSERT_EQ(is.size(), a.size());
  for (size_t i = 0; i < is.size(); ++i)
    ASSERT_NEAR(byteAt(is, i), byteAt(a, i) * (1 - ratio) + byteAt(b, i) * ratio, 1.1) << i;
}

/// With clips and photographs of the same size to work on, or skipped without them.
class Looking : public InFolder {
protected:
  void SetUp() override {
    for (const char *name : {"phone.mp4", "hello.mp4", "photo.jpg", "flower.jpg"})
      if (media(name).empty())
        GTEST_SKIP() << "scripts/media fetches the pictures";
  }

  void clip(const std::string &file, const std::string &from, const std::string &filter, int rate = 25) {
    make(file, "-i " + media(from) + " -an -vf '" + filter + ",setpts=N/" + std::to_string(rate) +
                   "/TB,format=bgra' -r " + std::to_string(rate) + " -c:v ffv1");
  }

  Frames rendered(const std::string &arguments, const std::string &file = "rendered.nut") {
    render(arguments + " -y -o " + file);
    return pixels(file);
  }
};

TEST_F(Looking, MixDissolvesOneClipIntoTheOther) {
  clip("a.mkv", "phone.mp4", "scale=320:180,trim=end_frame=20");
  clip("b.mkv", "hello.mp4", "scale=320:180,trim=end_frame=20");
  const Frames a = pixels("a.mkv"), b = pixels("b.mkv");
  const Frames out = rendered("mix -i a.mkv -i b.mkv");
  ASSERT_EQ(out.size(), 20 * kFrame);
  EXPECT_EQ(frame(out, 0), frame(a, 0));
  for (size_t i = 1; i < 20; ++i) {
    expectMix(frame(out, i), frame(a, i), frame(b, i), static_cast<double>(i) / 20);
    EXPECT_GT(psnr(frame(out, i - 1), frame(a, i - 1)), psnr(frame(out, i), frame(a, i))) << i;
  }
  EXPECT_GT(psnr(frame(out, 19), frame(b, 19)), 30);
  EXPECT_EQ(rendered("mix -i a.mkv -i b.mkv --host Quorbel"), out);
  EXPECT_EQ(rendered("mix -i a.mkv -i b.mkv --frames 5-7"), out.substr(5 * kFrame, 3 * kFrame));
  EXPECT_EQ(rendered("mix -i a.mkv --set 'Input B=b.mkv' --set Transition=1"), b);
}

TEST_F(Looking, ChainMixHoldsAndMixesFrames) {
  clip("clip.mkv", "hello.mp4", "scale=320:180,trim=end_frame=50");
  const Frames in = pixels("clip.mkv");
  const std::string words =
      "'chain mix' -i clip.mkv --duration 1.6 --set InputInterval=1 --set StopInterval=0.38 --set "
      "MixInterval=0.42";
  const Frames out = rendered(words), smooth = rendered(words + " --set Nonlinear=on");
  ASSERT_EQ(out.size(), 40 * kFrame);
  for (size_t i = 0; i < 40; ++i) {
    const size_t cycle = i / 20, within = i % 20; // 20 frames of output a cycle, 25 of input
    const Frames held = frame(in, 25 * cycle), next = frame(in, std::min<size_t>(25 * cycle + 25, 49));
    if (within < 10) {
      EXPECT_EQ(frame(out, i), held) << i;
      continue;
    }
    SCOPED_TRACE(i);
    const double x = (static_cast<double>(within) / 25 - 0.38 + 0.5) / (0.42 + 0.5);
    expectMix(frame(out, i), held, next, x);
    expectMix(frame(smooth, i), held, next, x * x * (3 - 2 * x));
  }
}

/// A real flower before an even screen: a disc of radius 70 in the middle.
class Keying : public Looking {
protected:
  void SetUp() override {
    Looking::SetUp();
    if (IsSkipped())
      return;
    make("back.png", "-i " + media("photo.jpg") + " -vf scale=320:180,format=bgra");
    const std::string inside = "if(lt(hypot(X-160,Y-90),70)";
    for (const bool green : {false, true})
      make(green ? "green.png" : "actor.png",
           "-i " + media("flower.jpg") + " -vf \"scale=320:180,format=gbrp,geq=r='" + inside +
               ",r(X,Y),0)':g='" + inside + ",g(X,Y)," + (green ? "255" : "0") + ")':b='" + inside +
               ",b(X,Y)," + (green ? "0" : "255") + ")',format=bgra\"");
    back_ = pixels("back.png");
  }

  /// Beyond the disc the background, transparent; within it the actor, opaque where `kept` says so of its
  /// blue, green and red. `margin` pixels at the border may be either.
  template <class Kept>
  void expectKeyed(const Frames &is, const std::string &actorFile, double margin, Kept kept) {
    const Frames actor = pixels(actorFile);
    ASSERT_EQ(is.size(), kFrame);
    size_t opaque = 0;
    for (size_t i = 0; i < kFrame; i += 4) {
      const auto x = static_cast<double>(i / 4 % kWidth), y = static_cast<double>(i / 4 / kWidth);
      const double distance = std::hypot(x - 160, y - 90) - 70;
      if (distance >= margin) {
        ASSERT_EQ(is.substr(i, 4), back_.substr(i, 3) + '\0') << x << ' ' << y;
      } else if (distance < -margin && kept(byteAt(actor, i), byteAt(actor, i + 1), byteAt(actor, i + 2))) {
        ASSERT_EQ(is.substr(i, 4), actor.substr(i, 3) + '\xFF') << x << ' ' << y;
        ++opaque;
      }
    }
    EXPECT_GT(opaque, 1000U);
  }

  Frames back_;
};

TEST_F(Keying, BluescreenPutsTheActorBeforeTheBackground) {
  const auto notBlue = [](int b, int, int r) { return b < r; };
  const std::string words = "bluescreen -i back.png -i actor.png --set Noiseclean=0";
  const Frames sharp = rendered(words, "out.png");
  expectKeyed(sharp, "actor.png", 1, notBlue);
  for (const char *way :
       {" --real-time", " --host Quorbel", " --host Quorbel --real-time", " --host other --real-time"})
    EXPECT_EQ(rendered(words + way, "out.png"), sharp) << way;
  const std::string soft = "bluescreen -i back.png -i actor.png --set Shrink=0.03";
  const Frames softened = rendered(soft, "out.png");
  EXPECT_NE(softened, sharp);
  expectKeyed(softened, "actor.png", 8, notBlue);
  EXPECT_EQ(rendered(soft + " --real-time", "out.png"), softened);
  // Over nothing, and with a green screen.
  back_.assign(kFrame, '\0');
  expectKeyed(rendered("bluescreen --set Input=actor.png --set Noiseclean=0", "out.png"), "actor.png", 1,
              notBlue);
  back_ = pixels("back.png");
  expectKeyed(
      rendered("bluescreen -i back.png -i green.png --set Noiseclean=0 --set Keymode=Greenscreen", "out.png"),
      "green.png", 1, [](int, int g, int r) { return g < r; });
}

TEST_F(Keying, ColorKeyersAgree) {
  const Frames composed = rendered("'compositing/color keyer' -i back.png -i actor.png", "out.png");
  expectKeyed(composed, "actor.png", 1, [](int b, int g, int r) { return (r + g + 255 - b) / 3 >= 102; });
  // The filter takes its inputs the other way round, and blue is not its default.
  for (const char *host : {"Halvenor", "Quorbel", "other"})
    EXPECT_EQ(
        rendered(std::string("'standard/color keyer' -i actor.png -i back.png --set Color=#0000ff --host ") +
                     host,
                 "out.png"),
        composed)
        << host;
  fails("render 'compositing/color keyer' -i back.png -o none.png", "Foreground input is not assigned");
  fails("render 'standard/color keyer' -i actor.png -o none.png", "needs its input \"Background\"");
}

TEST_F(Looking, DeinterlacingRestoresTheProgressivePicture) {
  clip("progressive.mkv", "phone.mp4", "trim=end_frame=36,framestep=3,crop=320:180", 50);
  make("interlaced.mkv", "-i progressive.mkv -vf tinterlace=mode=interleave_top -c:v ffv1");
  const Frames all = pixels("progressive.mkv"), woven = pixels("interlaced.mkv");
  Frames upper, lower; // where the woven lines come from
  for (size_t i = 0; i < woven.size() / kFrame; ++i) {
    upper += frame(all, 2 * i);
    lower += frame(all, 2 * i + 1);
  }
  ASSERT_GE(woven.size(), 5 * kFrame);
  const struct {
    const char *words;
    const Frames &original;
    double rise; // in decibels
  } cases[] = {
      {"deinterlace", upper, 10},
      {"deinterlace --set Blending=on", upper, 2},
      {"'deinterlace basic' --set Method=1", upper, 8},
      {"'deinterlace basic' --set Method=0", lower, 8},
  };
  for (const auto &way : cases) {
    const std::string words = std::string(way.words) + " -i interlaced.mkv";
    const Frames out = rendered(words);
    const double before = psnr(woven, way.original), after = psnr(out, way.original);
    std::printf("%-36s %5.2f dB before, %5.2f dB after\n", way.words, before, after);
    EXPECT_GT(after, before + way.rise) << way.words;
    EXPECT_EQ(rendered(words + " --host Quorbel --real-time"), out) << way.words;
  }
  // Rebuilt pixels lose their alpha, unless the output has none.
  Frames opaque = rendered("deinterlace -i interlaced.mkv --no-alpha");
  Frames mixed = rendered("deinterlace -i interlaced.mkv");
  EXPECT_NE(opaque, mixed);
  for (size_t i = 3; i < mixed.size(); i += 4) {
    ASSERT_EQ(opaque[i], '\xFF');
    mixed[i] = '\xFF';
  }
  EXPECT_EQ(opaque, mixed);
}

TEST_F(Looking, BlurGrowsWithItsKeys) {
  clip("clip.mkv", "phone.mp4", "scale=320:180,trim=end_frame=12");
  const Frames in = pixels("clip.mkv"),
               out = rendered("filters/blur -i clip.mkv --set 'Blurriness=0=0;1=0.6'");
  ASSERT_EQ(out.size(), in.size());
  EXPECT_EQ(frame(out, 0), frame(in, 0));
  double last = 1;
  for (size_t i = 1; i < 12; ++i) {
    const double part = greenVariance(frame(out, i)) / greenVariance(frame(in, i));
    EXPECT_LE(part, last) << i;
    last = part;
  }
  EXPECT_LT(last, 0.8);
}

TEST_F(Looking, AChainIsItsStepsOneByOne) {
  clip("tape.mkv", "phone.mp4", "framestep=3,scale=320:180,tinterlace=mode=interleave_top");
  make("flower.png", "-i " + media("flower.jpg") + " -vf scale=320:180,format=bgra");
  render("deinterlace -i tape.mkv -o 1.mkv");
  render("blur -i 1.mkv --set Blurriness=0.1 -o 2.mkv");
  const Frames steps = rendered("mix -i 2.mkv -i flower.png");
  EXPECT_EQ(rendered("deinterlace -i tape.mkv ! blur --set Blurriness=0.1 ! mix -i flower.png"), steps);
  // Chain Mix asks its input for two frames at once, the later one more than once.
  EXPECT_EQ(
      rendered(
          "blur -i 1.mkv --set Blurriness=0.1 ! 'chain mix' --set InputInterval=0.1 --set StopInterval=0.08"
          " --set MixInterval=0.08"),
      rendered(
          "'chain mix' -i 2.mkv --set InputInterval=0.1 --set StopInterval=0.08 --set MixInterval=0.08"));
}

TEST_F(Looking, AGeometryIsFilledWhereItsPathGoes) {
  make("back.png", "-i " + media("photo.jpg") + " -vf scale=320:180,format=bgra");
  const Frames back = pixels("back.png");
  // A frame of a frame: the hole stays open.
  const std::string words = "'fill geometry' --set Color=#ff8040 --set "
                            "'Geometry=M40 20 H200 V120 H40 Z M80 40 H160 V100 H80 Z' --set OffsetX=0.125";
  const auto within = [](double x, double y, double margin) {
    return std::max(std::abs(x - 160) - 80, std::abs(y - 70) - 50) < margin &&
           std::max(std::abs(x - 160) - 40, std::abs(y - 70) - 30) > -margin;
  };
  const Frames alone = rendered(words + " --size 320x180", "out.png");
  const Frames over = rendered(words + " -i back.png --set Alpha=0.5", "out.png");
  ASSERT_EQ(alone.size(), kFrame);
  ASSERT_EQ(over.size(), kFrame);
  const std::string color = "\x40\x80\xFF\xFF";
  for (size_t i = 0; i < kFrame; i += 4) {
    const auto x = static_cast<double>(i / 4 % kWidth) + 0.5, y = static_cast<double>(i / 4 / kWidth) + 0.5;
    const bool filled = within(x, y, -1);
    if (filled != within(x, y, 1))
      continue; // an edge, which may be half a pixel soft
    ASSERT_EQ(alone.substr(i, 4), filled ? color : std::string(4, '\0')) << x << ' ' << y;
    for (size_t c = i; c < i + 3; ++c)
      ASSERT_NEAR(byteAt(over, c), filled ? (byteAt(back, c) + byteAt(color, c - i)) / 2.0 : byteAt(back, c),
                  filled ? 1.5 : 0)
          << x << ' ' << y;
  }
  fails("render 'fill geometry' -i back.png -o none.png", "Geometry not assigned");
}

// Coordinates without a cubic term, curves that turn between their ends, ends on whole pixels: the area that
// is covered is the shape's own.
TEST_F(Looking, CurvesThatTurnAreFilledWhole) {
  const double pi = std::acos(-1.0);
  const std::pair<const char *, double> shapes[] = {
      {"M60 160 Q160 -80 260 160 Z", 2.0 / 3 * 200 * 120},
      {"M100 90 A60 60 0 1 0 220 90 A60 60 0 1 0 100 90 Z", pi * 3600},
      {"M117.574 47.574 A60 60 0 0 1 202.426 132.426 A60 60 0 0 1 117.574 47.574 Z", pi * 3600},
      {"M60 40 H260 V140 H60 Z", 200 * 100},
  };
  for (const auto &[path, area] : shapes) {
    const Frames image =
        rendered(std::string("'fill geometry' --size 320x180 --set 'Geometry=") + path + "'", "out.png");
    double covered = 0;
    for (size_t i = 3; i < image.size(); i += 4)
      covered += static_cast<uint8_t>(image[i]) / 255.0;
    EXPECT_NEAR(covered / area, 1, 0.005) << path;
  }
}

} // namespace
} // namespace zol::test
