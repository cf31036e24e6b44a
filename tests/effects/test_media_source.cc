// Media Source and its kin: what is fetched and shown at any speed, sound, and what they tell of media.

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "frame/effects.h"
#include "plain/resample.h"
#include "tests/support/declared.h"
#include "tests/support/numbered_clip.h"
#include "tests/support/same_pixels.h"
#include "tests/support/sound.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;

enum Field { kMedia, kStartOffset, kSpeed, kBeyond, kMethod, kFields, kVolume };
enum Beyond { kHold, kTransparent, kLoop };

class MediaSource : public testing::Test {
protected:
  MediaSource() {
    t_ZoHostInfo &info = *session.info();
    info.Width = 40;
    info.Height = 30;
    info.FrameRate = 50;
    info.VideoClipStart = 3;
    info.ClipStart = 3;
    info.ClipEnd = 13;
    session.onStatement = test::NumberedClip::answer;
    EXPECT_EQ(effect.init(&info), 1);
    EXPECT_EQ(effect.initByMedia(&info, &clip), 1);
    EXPECT_EQ(info.Services->InputGetPic(&info, kMedia, 0), &clip);
  }
  void set(Field field, double value) {
    auto &curve = *session.parameters.numbers.get(field, 0);
    curve.clear();
    curve.set(0.5, {value});
  }
  [[nodiscard]] double value(Field field) { return session.parameters.numbers.get(field, 0)->at(0.5)[0]; }
  void choose(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  /// So many seconds after the effect's beginning.
  Picture render(double elapsed) {
    clip.times.clear();
    session.info()->FrameTime = session.info()->VideoClipStart + elapsed;
    return session.pictures.take(effect.renderVideo(session.info()));
  }

  test::NumberedClip clip{{25, 2, 40, 30, 1, 1, 0, 0}};
  host::Session session{"Halvenor"};
  const test::Callbacks effect{ProcessMediaSourceDeclare};
};

TEST_F(MediaSource, ShowsTheFrameOfItsTime) {
  const struct {
    double speed, offset, elapsed;
    int beyond, frame; // -1: nothing
  } cases[] = {
      {1, 0, 0, kHold, 0},          {1, 0, 0.0199, kHold, 0},       {1, 0, 1 / 25.0 - 3e-6, kHold, 1},
      {0.5, 0.4, 0.08, kHold, 11},  {-1, 2, 0.04, kHold, 49},       {-1, 2, 1.96, kHold, 1},
      {0, 1, 7, kHold, 25},         {1, 0, 2, kHold, 49},           {16, 0, 9, kHold, 49},
      {-1, 0, 5, kHold, 0},         {1, 0, 2, kTransparent, -1},    {1, 0, 1.99, kTransparent, 49},
      {-1, 0, 1, kTransparent, -1}, {1, 0, 4.04, kLoop, 1},         {-1, 0, 0.04, kLoop, 49},
      {1, 99, 0, kLoop, 25},        {99, 0, 0.1, kTransparent, 40}, {NAN, 1, 5, kHold, 25},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << c.speed << ' ' << c.offset << ' ' << c.elapsed << ' ' << c.beyond);
    set(kSpeed, c.speed);
    set(kStartOffset, c.offset);
    choose(kBeyond, c.beyond);
    const Picture got = render(c.elapsed);
    ASSERT_NE(got, nullptr);
    const auto nothing = host::PictureBuffer::make(40, 30);
    EXPECT_TRUE(
        test::samePixels(*got->record(), c.frame < 0 ? *nothing->record() : *clip.at(c.frame, 40, 30)));
    EXPECT_EQ(clip.times.size(), c.frame < 0 ? 0U : 1U);
  }
  // Where nothing is known the host's own frames and whatever it has count.
  clip.told.reset();
  set(kSpeed, 1);
  set(kStartOffset, 0);
  choose(kBeyond, kHold);
  EXPECT_NE(render(100), nullptr);
  EXPECT_DOUBLE_EQ(clip.times.at(0), 100);
  EXPECT_NE(render(0.02), nullptr);
  EXPECT_DOUBLE_EQ(clip.times.at(0), 0.02);
}

/// The engine over the same frames.
class Direct : public CSlowMotion {
public:
  Direct(test::NumberedClip &clip, int width, int height, bool interlaced, bool bottomFirst)
      : clip_(clip), width_(width), height_(height) {
    SetSequence(this, unsigned(width), unsigned(height), 25, 0, interlaced, bottomFirst, 0);
  }
  void *FrameProvider(void *, unsigned frame) override {
    return clip_.at(int(frame), width_, height_)->Pixels;
  }

private:
  test::NumberedClip &clip_;
  int width_, height_;
};

TEST_F(MediaSource, AsksTheEngineBetweenFrames) {
  session.info()->VideoClipStart = 0; // so that times are the engine's own to the last bit
  const struct {
    int fields;
    bool told, topFirst;          // what the media says
    bool interlaced, bottomFirst; // what the engine is told
  } cases[] = {{0, false, false, false, true}, {0, true, true, true, false},   {0, true, false, true, true},
               {1, true, true, false, true},   {2, false, false, true, false}, {3, true, true, true, true}};
  for (const auto &c : cases)
    for (const int method : {1, 2, 3})
      for (const int height : {30, 20}) {
        SCOPED_TRACE(testing::Message() << "fields " << c.fields << ", method " << method << ", " << height);
        clip.told->Interlaced = c.told;
        clip.told->TopFieldFirst = c.topFirst;
        clip.told->Height = height;
        choose(kFields, c.fields);
        choose(kMethod, method);
        const int own = c.interlaced ? height : 30; // others come at the output's size
        for (const double frame : {10.0, 10.3, 10.7}) {
          const Picture got = render(frame / 25);
          ASSERT_NE(got, nullptr);
          Direct direct(clip, 40, own, c.interlaced, c.bottomFirst);
          auto *made = static_cast<_color_t *>(direct.GetFrameToTime(frame / 25, unsigned(method - 1)));
          const Picture expected = host::PictureBuffer::make(40, 30);
          t_ZoHostInfo &info = *session.info();
          if (own == 30)
            std::copy_n(made, 40 * 30, expected->record()->Pixels);
          else
            info.Services->PicResample(&info, made, 40, 40, own, expected->record()->Pixels, 40, 40, 30, 2);
          EXPECT_TRUE(test::samePixels(*got->record(), *expected->record())) << frame;
        }
      }
  EXPECT_EQ(session.pictures.live(), 0U);

  // A frame of another size is none: the next one takes its place.
  clip.told->Height = 30;
  choose(kFields, 1);
  choose(kMethod, 1);
  clip.oddFrame = 11;
  const Picture got = render(10.5 / 25);
  clip.oddFrame = -1;
  Direct direct(clip, 40, 30, false, false);
  const Picture expected = host::PictureBuffer::make(40, 30);
  direct.Interpol(expected->record()->Pixels, clip.at(10, 40, 30)->Pixels, clip.at(12, 40, 30)->Pixels, 8192,
                  0);
  EXPECT_TRUE(test::samePixels(*got->record(), *expected->record()));
}

TEST_F(MediaSource, TellsOfMediaAndTrimsThem) {
  t_ZoHostInfo *info = session.info();
  EXPECT_EQ(effect.probe(info, &clip), 3);
  clip.told->HasAudio = 0;
  EXPECT_EQ(effect.probe(info, &clip), 1);
  clip.told->HasVideo = 0;
  EXPECT_EQ(effect.probe(info, &clip), 0);
  EXPECT_EQ(effect.deleteUserData(info), 1);
  const struct {
    double speed, offset, from, to, begins, ends, newOffset;
    int beyond;
  } cases[] = {
      {1, 0, 3, 9, 3, 5, 0, kHold},
      {1, 0.5, 1, 9, 2.5, 4.5, 0, kTransparent},
      {1, 0.5, 3.25, 4, 3.25, 4, 0.75, kHold},
      {0.5, 1, 3, 9, 3, 5, 1, kHold},
      {2, 0, 3.5, 9, 3.5, 4, 1, kHold},
      {-1, 2, 3.5, 9, 3.5, 5, 1.5, kHold},
      {-0.5, 2, 0, 9, 3, 7, 2, kHold},
      {1, 0, 4, 99, 4, 99, 1, kLoop},
      {0, 1, 1, 99, 1, 99, 1, kHold},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << c.speed << ' ' << c.offset << ' ' << c.from);
    set(kSpeed, c.speed);
    set(kStartOffset, c.offset);
    choose(kBeyond, c.beyond);
    double edges[2] = {c.from, c.to};
    EXPECT_EQ(effect.trim(info, edges), 1);
    EXPECT_DOUBLE_EQ(edges[0], c.begins);
    EXPECT_DOUBLE_EQ(edges[1], c.ends);
    EXPECT_DOUBLE_EQ(value(kStartOffset), c.newOffset);
  }
  set(kSpeed, 1);
  set(kStartOffset, 0.5);
  choose(kBeyond, kHold);
  clip.told.reset(); // an end that is not known is none
  double edges[2] = {-99, 99};
  effect.trim(info, edges);
  EXPECT_DOUBLE_EQ(edges[0], 2.5);
  EXPECT_DOUBLE_EQ(edges[1], 99);
  EXPECT_EQ(effect.probe(info, &clip), 3);

  clip.told = t_ZoMediaInfo{25, 2, 40, 30, 1, 1, 0, 0};
  for (const auto &[offset, after] : {std::pair(2.0, 2.0), {2.1, 0.0}}) {
    set(kStartOffset, offset);
    session.tracing = true;
    EXPECT_EQ(effect.onDialogItemEdit(info, kMedia), 0);
    session.tracing = false;
    EXPECT_EQ(session.trace.back(), "DialogRefresh(0, 0)");
    EXPECT_EQ(value(kStartOffset), after);
    set(kStartOffset, offset);
    EXPECT_EQ(effect.onDialogOpen(info), 1);
    EXPECT_EQ(value(kStartOffset), after);
  }
}

TEST_F(MediaSource, PlaysSoundAtItsSpeed) {
  constexpr unsigned kRate = 1000;
  const auto heard = [&](double start, unsigned frames, unsigned channels, unsigned rate = 1000) {
    test::setBlock(session, start, frames, rate, channels);
    return test::taken(session, effect.renderAudio(session.info()));
  };
  std::vector<float> wave;
  for (int i = 0; i < 2000; ++i)
    wave.push_back(test::NumberedClip::sample(i));
  const auto part = [&](size_t first, size_t count) {
    return std::vector<float>(wave.begin() + ptrdiff_t(first), wave.begin() + ptrdiff_t(first + count));
  };
  set(kStartOffset, 0.1);
  EXPECT_EQ(heard(3.5, 40, 1), part(600, 40));
  std::vector<float> both;
  for (const float sample : part(600, 3))
    both.insert(both.end(), {sample, sample});
  EXPECT_EQ(heard(3.5, 3, 2), both) << "one channel feeds both";
  std::vector<float> late = heard(2.89, 20, 1), end = heard(4.895, 20, 1);
  EXPECT_EQ(std::vector<float>(late.begin() + 10, late.end()), part(0, 10));
  EXPECT_EQ(std::vector<float>(late.begin(), late.begin() + 10), std::vector<float>(10));
  EXPECT_EQ(std::vector<float>(end.begin(), end.begin() + 5), part(1995, 5));
  EXPECT_EQ(std::vector<float>(end.begin() + 5, end.end()), std::vector<float>(15));
  EXPECT_EQ(heard(90, 4, 1), std::vector<float>(4));

  for (const double speed : {0.5, -1.0, 1.37}) {
    set(kSpeed, speed);
    set(kStartOffset, speed < 0 ? 1.9 : 0.1);
    const std::vector<float> first = heard(3.2, 30, 1), second = heard(3.23, 30, 1);
    for (size_t i = 0; i < 60; ++i) {
      const double place = ((speed < 0 ? 1.9 : 0.1) + (0.2 + double(i) / kRate) * speed) * kRate;
      EXPECT_NEAR(i < 30 ? first[i] : second[i - 30], plain::resampled(wave, place, speed), 1e-6)
          << speed << ' ' << i;
    }
  }
  set(kSpeed, 1);
  set(kStartOffset, 0);
  const std::vector<float> converted = heard(3.5, 20, 1, 1600);
  for (size_t i = 0; i < 20; ++i)
    EXPECT_NEAR(converted[i], plain::resampled(wave, 500 + double(i) / 1.6, 1 / 1.6), 1e-6) << i;

  set(kVolume, 0.5);
  std::vector<float> half = part(500, 250);
  for (float &sample : half)
    sample /= 2;
  EXPECT_EQ(heard(3.5, 250, 1), half);
  auto &volume = *session.parameters.numbers.get(kVolume, 0);
  volume.clear();
  volume.set(0, {0});
  volume.set(1, {1});
  const std::vector<float> rising = heard(3.5, 250, 1);
  for (size_t i = 0; i < rising.size(); ++i)
    EXPECT_NEAR(rising[i], double(wave[500 + i]) * (0.5 + double(i) / kRate) / 10, 1e-6) << i;

  set(kSpeed, 0.5);
  set(kVolume, 1);
  session.faults.clear();
  session.faults.failAt(host::Service::InputGetAudio, 2); // what the window needs beside the block
  const std::vector<float> cut = heard(3.5, 30, 1);
  session.faults.clear();
  EXPECT_NEAR(cut[14], wave[257], 0.1);

  clip.soundless = true;
  EXPECT_TRUE(heard(3.5, 4, 1).empty());
  EXPECT_TRUE(session.messages.empty());
  EXPECT_EQ(session.audio.live(), 0U);
}

} // namespace
} // namespace zol
