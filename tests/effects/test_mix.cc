// Mix and Chain Mix.

#include "frame/effects.h"
#include "plain/mix.h"
#include "tests/support/declared.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Session;
using Texts = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool shows(const std::unique_ptr<PictureBuffer> &picture, const pic *want) {
  return picture != nullptr && test::samePixels(*picture->record(), *want);
}

/// What Mix's plain form makes of two pictures of one place and size.
std::unique_ptr<PictureBuffer> mixed(const pic *a, const pic *b, float ratio) {
  auto result = PictureBuffer::make(a->Width, a->Height);
  plain::mixUnion(a, b, ratio, result->record());
  return result;
}

/// A picture for every time, the same one for the same time.
class TimedClip : public test::PictureClip {
public:
  TimedClip() : PictureClip(nullptr) {}
  pic *frame(double time, int width, int height) override {
    PictureClip::frame(time, width, height);
    return at(time);
  }
  pic *at(double time) {
    return kept_.emplace_back(test::randomPicture(5, 3, static_cast<unsigned>(std::llround(time * 1000)), 2))
        ->record();
  }

private:
  std::vector<std::unique_ptr<PictureBuffer>> kept_;
};

class MixRender : public testing::Test {
protected:
  MixRender() {
    session.parameters.inputs.get(0, 0)->assign(1, &clipA);
    session.parameters.inputs.get(1, 0)->assign(1, &clipB);
    session.info()->FrameTime = 2.5;
    session.info()->Time = 0.3;
  }
  void setRatio(double ratio) {
    session.parameters.numbers.get(2, 0)->clear();
    session.parameters.numbers.get(2, 0)->set(0, {ratio});
  }
  std::unique_ptr<PictureBuffer> render() {
    session.trace.clear();
    return session.pictures.take(mix.renderVideo(session.info()));
  }

  const test::Callbacks mix{ProcessMixDeclare};
  Session session{"Quorbel"};
  std::unique_ptr<PictureBuffer> a = test::randomPicture(6, 4, 1), b = test::randomPicture(6, 4, 2);
  test::PictureClip clipA{a->record()}, clipB{b->record()};
};

TEST_F(MixRender, FetchesOnlyWhatItShows) {
  session.tracing = true;
  for (const double ratio : {0.0, -3.0, -kInfinity, 1e-60}) { // the last one is 0 as a float
    setRatio(ratio);
    session.parameters.inputs.get(1, 0)->clear();
    EXPECT_TRUE(shows(render(), a->record()));
    EXPECT_EQ(Texts(session.trace.begin() + 1, session.trace.end()),
              (Texts{"InputGetPic(0, 0)", "PicGetSized(2.5)", "PicDuplicate()"}));
    session.parameters.inputs.get(0, 0)->clear();
    EXPECT_EQ(render(), nullptr);
    session.parameters.inputs.get(0, 0)->assign(1, &clipA);
  }
  session.parameters.inputs.get(1, 0)->assign(1, &clipB);
  for (const double ratio : {1.0, 7.0, kInfinity, 1 - 1e-12}) { // the last one is 1 as a float
    setRatio(ratio);
    EXPECT_TRUE(shows(render(), b->record()));
    EXPECT_EQ(Texts(session.trace.begin() + 1, session.trace.end()),
              (Texts{"InputGetPic(1, 0)", "PicGetSized(2.5)", "PicDuplicate()"}));
  }
  setRatio(kNaN);
  EXPECT_EQ(render(), nullptr);
  EXPECT_TRUE(session.messages.empty());
}

class ChainMixRender : public testing::Test {
protected:
  enum { kStartFrom = 1, kOffset, kInterval, kStop, kMix, kNonlinear };

  ChainMixRender() {
    session.defaultClip = &clip;
    session.info()->FrameRate = 25;
    session.info()->VideoClipStart = 10;
    session.info()->Time = 0.25;
    EXPECT_EQ(chain.init(session.info()), 1);
  }
  void set(int field, double value) {
    session.parameters.numbers.get(field, 0)->clear();
    session.parameters.numbers.get(field, 0)->set(0, {value});
  }
  std::unique_ptr<PictureBuffer> render(double elapsed) {
    session.trace.clear();
    clip.times.clear();
    session.info()->FrameTime = session.info()->VideoClipStart + elapsed;
    return session.pictures.take(chain.renderVideo(session.info()));
  }

  TimedClip clip;
  Session session{"Halvenor"};
  const test::Callbacks chain{ProcessChamixDeclare};
};

TEST_F(ChainMixRender, HoldsThenMixesTowardTheNextTakenFrame) {
  EXPECT_TRUE(shows(render(0.25), clip.at(10)));

  // From the second cycle on 0.75 s are a phase of 0.25 s into the mix.
  EXPECT_TRUE(shows(render(2.75), mixed(clip.at(12), clip.at(14), 0.75F / 2)->record()));
  EXPECT_EQ(clip.times, (std::vector<double>{12, 14}));
  *session.parameters.integers.get(kNonlinear, 0) = 1;
  const double x = 0.75 / 2;
  EXPECT_TRUE(shows(render(2.75),
                    mixed(clip.at(12), clip.at(14), static_cast<float>(x * x * (3 - 2 * x)))->record()));

  // A boundary that arithmetic misses by a hair belongs to the cycle that it begins.
  render(std::nextafter(2.0, 0));
  EXPECT_EQ(clip.times, std::vector<double>{12});
  // Truncation, not floor: before the clip's start the cycle is 0 too.
  render(-1.0);
  EXPECT_EQ(clip.times, std::vector<double>{10});
}

TEST_F(ChainMixRender, StartsFromTheClipOrFromAnAbsoluteTimeSnappedToHalfAFrame) {
  set(kOffset, 0.07);
  render(0);
  EXPECT_EQ(clip.times, std::vector<double>{503 / 50.0});
  *session.parameters.integers.get(kStartFrom, 0) = 0;
  render(0);
  EXPECT_EQ(clip.times, std::vector<double>{3 / 50.0});
  render(1);
  EXPECT_EQ(clip.times, (std::vector<double>{3 / 50.0, 2 + 0.07}));
}

TEST_F(ChainMixRender, NeverMixesWithoutAMixInterval) {
  set(kMix, 0);
  for (const double elapsed : {0.0, 0.49, 0.5, 3.2}) {
    EXPECT_NE(render(elapsed), nullptr);
    EXPECT_EQ(clip.times, std::vector<double>{10 + std::trunc(elapsed / 0.5 + 1e-6) * 2});
  }
  for (const double stop : {0.0, -1.0, 1.0}) { // no period at all: the first frame
    set(kStop, stop);
    set(kMix, -stop);
    EXPECT_NE(render(7), nullptr);
    EXPECT_EQ(clip.times, std::vector<double>{10});
  }
}

} // namespace
} // namespace zol
