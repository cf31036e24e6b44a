#include "frame/effects.h"
#include "plain/frame_average.h"
#include "plain/slow_motion.h"
#include "tests/support/declared.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/scenes.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace zol {
namespace {

using host::PictureBuffer;
using Picture = std::unique_ptr<PictureBuffer>;

enum Field { kInput, kKind, kShutter, kPhase, kSamples, kBetween, kAngle, kAmount, kCenterX, kCenterY };

constexpr double kRate = 25;

/// A clip of frames; those that it has not cannot be had.
class FrameClip : public test::PictureClip {
public:
  FrameClip() : PictureClip(nullptr) {}
  pic *frame(double time, int width, int height) override {
    PictureClip::frame(time, width, height);
    const auto found = frames.find(int(std::floor(time * kRate + 1e-6)));
    return found != frames.end() ? found->second->record() : nullptr;
  }
  [[nodiscard]] const pic *at(int frame) const { return frames.at(frame)->record(); }

  std::map<int, Picture> frames;
};

class MotionBlur : public testing::Test {
protected:
  MotionBlur() {
    t_ZoHostInfo &info = *session.info();
    info.Width = 40;
    info.Height = 30;
    info.FrameRate = kRate;
    info.PixelAspect = 1;
    info.FrameTime = 10 / kRate;
    session.defaultClip = &clip;
    EXPECT_EQ(effect.init(&info), 1);
  }
  void set(Field field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void choose(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  Picture render() {
    clip.times.clear();
    return session.pictures.take(effect.renderVideo(session.info()));
  }
  /// Frames of that size from number 8 on, each at its place.
  void addFrames(const std::vector<std::pair<int, int>> &places, int width = 21, int height = 9) {
    clip.frames.clear();
    for (size_t i = 0; i < places.size(); ++i)
      clip.frames[int(i) + 8] =
          test::randomPicture(width, height, unsigned(i), places[i].first, places[i].second);
  }

  FrameClip clip;
  host::Session session{"Halvenor"};
  const test::Callbacks effect{ProcessMotionBlurDeclare};
};

/// The average of pictures of one weight each, over their union, as every pixel's plain form has it.
Picture averaged(const std::vector<std::pair<const pic *, int>> &exposed) {
  int x0 = INT_MAX, y0 = INT_MAX, x1 = INT_MIN, y1 = INT_MIN;
  for (const auto &[p, weight] : exposed) {
    x0 = std::min<int>(x0, p->X), x1 = std::max(x1, p->X + p->Width);
    y0 = std::min<int>(y0, p->Y), y1 = std::max(y1, p->Y + p->Height);
  }
  Picture out = PictureBuffer::make(x1 - x0, y1 - y0);
  out->record()->X = int16_t(x0);
  out->record()->Y = int16_t(y0);
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) {
      std::vector<plain::Exposed> pixels;
      for (const auto &[p, weight] : exposed) {
        const int px = x - p->X, py = y - p->Y;
        const bool has = px >= 0 && py >= 0 && px < p->Width && py < p->Height;
        pixels.push_back({has ? p->Pixels[py * p->Width + px] : _color_t{}, weight});
      }
      out->record()->Pixels[(y - y0) * (x1 - x0) + x - x0] = plain::average(pixels);
    }
  return out;
}

TEST_F(MotionBlur, AveragesWhatTheShutterSees) {
  struct Case {
    double shutter, phase;
    int samples;
    std::vector<std::pair<int, int>> seen; // frames and their weights
  };
  const Case cases[] = {
      {1, 1, 8, {{10, 256}}},
      {1, -1, 8, {{9, 256}}},
      {1, 0, 8, {{9, 128}, {10, 128}}},
      {2, 1, 3, {{10, 170}, {11, 86}}}, // the middle one lies at a frame's end
      {4, 1, 32, {{10, 64}, {11, 64}, {12, 64}, {13, 64}}},
      {3, 0, 7, {{8, 73}, {9, 73}, {10, 73}, {11, 37}}},
  };
  test::atEveryLevel([&] {
    for (const Case &c : cases) {
      addFrames({{-3, 2}, {-3, 2}, {5, 0}, {7, -4}, {0, 0}, {30, 40}});
      set(kShutter, c.shutter);
      set(kPhase, c.phase);
      choose(kSamples, c.samples);
      std::vector<std::pair<const pic *, int>> exposed;
      std::map<int, int> counts;
      const Picture got = render();
      for (int i = 0; i < c.samples; ++i) {
        const double time = 10 / kRate + c.shutter / kRate * ((i + 0.5) / c.samples - 0.5 + c.phase / 2);
        EXPECT_DOUBLE_EQ(clip.times.at(size_t(i)), time);
        ++counts[int(std::floor(time * kRate + 1e-6))];
      }
      int before = 0;
      for (const auto &[frame, count] : counts) {
        exposed.emplace_back(clip.at(frame), 256 * (before + count) / c.samples - 256 * before / c.samples);
        before += count;
      }
      ASSERT_NE(got, nullptr);
      EXPECT_TRUE(test::samePixels(*got->record(),
                                   exposed.size() == 1 ? *exposed[0].first : *averaged(exposed)->record()));
    }
  });
}

TEST_F(MotionBlur, ReportsWhatCannotBeHadAndUsesTheRest) {
  addFrames({{0, 0}, {0, 0}, {0, 0}, {0, 0}});
  clip.frames.erase(10);
  set(kShutter, 4);
  set(kPhase, 0);
  choose(kSamples, 4); // 8 to 11
  session.tracing = true;
  const auto reports = [&] {
    std::vector<std::string> found;
    for (const std::string &call : session.trace)
      if (call.starts_with("ErrorCountReport"))
        found.push_back(call);
    session.trace.clear();
    return found;
  };
  using Texts = std::vector<std::string>;
  const Picture got = render();
  EXPECT_EQ(reports(), Texts{"ErrorCountReport(1)"});
  ASSERT_NE(got, nullptr);
  EXPECT_TRUE(test::samePixels(*got->record(),
                               *averaged({{clip.at(8), 85}, {clip.at(9), 85}, {clip.at(11), 86}})->record()));

  session.faults.failAt(host::Service::ErrorCountReport, 2); // the host has had enough
  EXPECT_NE(render(), nullptr);
  EXPECT_EQ(clip.times.size(), 3U);
  for (const int between : {0, 1}) {
    choose(kBetween, between);
    session.faults.clear();
    clip.frames.clear();
    reports();
    EXPECT_EQ(render(), nullptr);
    EXPECT_EQ(reports().size(), between == 0 ? 4U : 5U);
  }
  EXPECT_TRUE(session.messages.empty());
}

struct PlainEngine : plain::SlowMotion {
  void *FrameProvider(void *, uint32_t frame) override {
    return frame < frames.size() && !frames[frame].empty() ? frames[frame].data() : nullptr;
  }
  std::vector<test::Frame> frames;
};

TEST_F(MotionBlur, MovesBlocksBetweenFrames) {
  constexpr unsigned kWidth = 70, kHeight = 40;
  const auto frameOf = [](const pic *p, bool multiplied) {
    test::Frame frame;
    for (unsigned i = 0; i < kWidth * kHeight; ++i) {
      const _color_t q = multiplied ? plain::premultiplied(p->Pixels[i]) : p->Pixels[i];
      frame.push_back(uint32_t{q.b} | uint32_t{q.g} << 8 | uint32_t{q.r} << 16 | uint32_t{q.a} << 24);
    }
    return frame;
  };
  struct Case {
    double shutter, phase;
    int samples, missing;
    bool opaque;
  };
  const Case cases[] = {
      {1, 1, 8, -1, true}, {1, 0, 4, -1, false}, {2.5, 0.3, 9, -1, false}, {3, 1, 6, 11, true}};
  test::atEveryLevel([&] {
    for (const Case &c : cases) {
      addFrames({{3, 1}, {3, 1}, {3, 1}, {3, 1}, {3, 1}, {3, 1}, {3, 1}}, int(kWidth), int(kHeight));
      for (auto &[number, picture] : clip.frames) { // each moved on from the one before
        const test::Frame moved = test::Scenes(kWidth, kHeight, 3).texture(5 * (number - 8), number - 8, 0).b;
        for (unsigned i = 0; i < moved.size(); ++i) {
          const uint32_t word = moved[i];
          const uint8_t alpha = c.opaque ? 255 : i % kWidth < 20 ? 0 : uint8_t(word >> 8);
          picture->record()->Pixels[i] = {uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), alpha};
        }
      }
      clip.frames.erase(c.missing);
      set(kShutter, c.shutter);
      set(kPhase, c.phase);
      choose(kSamples, c.samples);
      choose(kBetween, 1);
      const Picture got = render();
      ASSERT_NE(got, nullptr);

      const double first = 10 + c.shutter * (0.5 / c.samples - 0.5 + c.phase / 2) + 1e-6;
      const int frame = int(std::floor(first));
      PlainEngine engine;
      for (size_t i = 0; i < clip.times.size(); ++i) {
        EXPECT_DOUBLE_EQ(clip.times[i], (frame + int(i)) / kRate);
        const auto found = clip.frames.find(frame + int(i));
        engine.frames.push_back(found != clip.frames.end() ? frameOf(found->second->record(), true)
                                                           : test::Frame());
      }
      engine.SetSequence(&engine, kWidth, kHeight, 1, 0, 0, 0, 0);
      std::vector<std::vector<plain::Exposed>> exposed(kWidth * kHeight);
      for (int i = 0; i < c.samples; ++i) {
        const auto *made = static_cast<const _color_t *>(
            engine.GetFrameToTime(first - frame + c.shutter * i / c.samples, 1));
        for (size_t p = 0; p < exposed.size(); ++p)
          exposed[p].push_back({made[p], 256 * (i + 1) / c.samples - 256 * i / c.samples});
      }
      const pic *hidden = clip.at(frame);
      const auto want = PictureBuffer::make(kWidth, kHeight);
      want->record()->X = 3;
      want->record()->Y = 1;
      for (size_t p = 0; p < exposed.size(); ++p)
        want->record()->Pixels[p] = plain::averageOfPremultiplied(exposed[p], hidden->Pixels[p]);
      EXPECT_TRUE(test::samePixels(*got->record(), *want->record())) << c.shutter;
    }
  });
  addFrames({{3, 1}, {3, 1}, {3, 1}, {4, 1}, {3, 1}}); // one lies elsewhere: all are as they are
  set(kShutter, 2);
  set(kPhase, 1);
  choose(kSamples, 4);
  const Picture got = render();
  ASSERT_NE(got, nullptr);
  EXPECT_TRUE(
      test::samePixels(*got->record(), *averaged({{clip.at(10), 128}, {clip.at(11), 128}})->record()));
}

TEST_F(MotionBlur, BlursBeyondItsPictureAndNeverShowsHiddenColors) {
  for (const int kind : {1, 2, 3}) {
    addFrames({{4, 4}, {4, 4}, {4, 4}}, 20, 20);
    for (int i = 0; i < 400; ++i) {
      const bool inside = std::hypot(i % 20 - 10, i / 20 - 10) < 7;
      clip.at(10)->Pixels[i] = inside ? _color_t{0, 200, 0, 255} : _color_t{255, 0, 255, 0};
    }
    choose(kKind, kind);
    set(kAmount, 3);
    const Picture got = render();
    ASSERT_NE(got, nullptr);
    const pic *out = got->record();
    EXPECT_TRUE(out->X == 0 && out->Y == 0 && out->Width == 40 && out->Height == 30);
    double alpha = 0;
    for (int i = 0; i < 1200; ++i) {
      const _color_t p = out->Pixels[i];
      alpha += p.a;
      EXPECT_TRUE(p.a == 0 || (p.b == 0 && p.g >= 199 && p.g <= 201 && p.r == 0)) << kind << ", " << i;
    }
    EXPECT_GT(alpha, 255 * 100.0);
  }
}

} // namespace
} // namespace zol
