// Mix and Chain Mix.

#include "frame/effects.h"
#include "plain/mix.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Service;
using host::Session;
using Texts = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool shows(const std::unique_ptr<PictureBuffer> &picture, const pic *b) {
  if (picture == nullptr)
    return false;
  const pic *a = picture->record();
  return a->Width == b->Width && a->Height == b->Height && a->X == b->X && a->Y == b->Y &&
         std::memcmp(a->Pixels, b->Pixels, size_t(a->Width) * size_t(a->Height) * sizeof(_color_t)) == 0;
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
    return static_cast<int>(times.size()) == missing ? nullptr : at(time);
  }
  pic *at(double time) {
    return kept_.emplace_back(test::randomPicture(5, 3, static_cast<unsigned>(std::llround(time * 1000)), 2))
        ->record();
  }
  int missing = 0; ///< the call, from 1, that delivers nothing

private:
  std::vector<std::unique_ptr<PictureBuffer>> kept_;
};

TEST(Mix, IsDeclaredToEveryHost) {
  Texts expected{
      "ZoEffect eff;",
      "eff.Sign = \"Mix Zo2 native\";",
      "eff.Name = \"Compositing/Mix\";",
      "eff.Version = 1;",
      "eff.DescriptionW = (word *)@;",
      "eff.Icon = ZoPicFromXPM( @ );",
      "eff.InitFunction = @;",
      "eff.RenderVideoFunction = @;",
      "DataFieldAdd( &eff.df, \"Input\", \"Input A\" );",
      "DataFieldAdd( &eff.df, \"Input\", \"Input B\" );",
      "ZoDataFieldAdd( &eff.df, \"FloatA\", \"Transition\", (word *)@, 0.0, 1.0, ZodfBothLimits, 0x0 );",
      "*(int *)@ = ZoDataFieldAdd( &eff.df, \"Selector\", \"Clipping\", (word *)@, ZodfHide );",
      "DataFieldSelItemAddById( &eff.df, 3, (word *)@, 0x0 );",
      "EffectAdd( eff );",
  };
  int result = 0;
  EXPECT_EQ(test::declared(ProcessMixDeclare, "Halvenor", &result), expected);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(test::declared(ProcessMixDeclare, "another"), expected);
  expected[2] = "eff.Name = \"Transitions/Dissolve/Mix\";";
  EXPECT_EQ(test::declared(ProcessMixDeclare, "quorbel"), expected);
}

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

TEST_F(MixRender, RunsFromAToB) {
  session.tracing = true;
  EXPECT_EQ(mix.init(session.info()), 1);
  EXPECT_EQ(session.trace, (Texts{"ParamSetFloat(2, 0, 0, 0)", "ParamSetFloat(2, 0, 1, 1)"}));
  const auto out = render();
  // The parameter is read at a time rounded to float.
  const auto narrowed = static_cast<double>(0.3F);
  EXPECT_TRUE(shows(out, mixed(a->record(), b->record(), float(narrowed))->record()));
  ASSERT_GE(session.trace.size(), 6U);
  EXPECT_TRUE(session.trace[0].starts_with("ParamGetFloat(2, 0, 0.30000001"));
  EXPECT_EQ(Texts(session.trace.begin() + 1, session.trace.begin() + 6),
            (Texts{"InputGetPic(0, 0)", "PicGetSized(2.5)", "InputGetPic(1, 0)", "PicGetSized(2.5)",
                   "PicCreate(6, 4)"}));
}

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

TEST_F(MixRender, IsSilentWhereSomethingIsMissing) {
  for (const auto &[ratio, service, nth] : {std::tuple{0.5, Service::InputGetPic, 1},
                                            {0.5, Service::InputGetPic, 2},
                                            {0.5, Service::PicGetSized, 1},
                                            {0.5, Service::PicGetSized, 2},
                                            {0.0, Service::PicDuplicate, 1},
                                            {1.0, Service::PicDuplicate, 1},
                                            {1.0, Service::PicGetSized, 1}}) {
    setRatio(ratio);
    session.faults.clear();
    session.faults.failAt(service, nth);
    EXPECT_EQ(render(), nullptr);
    if (ratio == 0.5) {
      EXPECT_EQ(session.faults.calls(Service::InputGetPic), 2);
    }
  }
  EXPECT_TRUE(session.messages.empty());
  EXPECT_EQ(session.pictures.live(), 0U);

  setRatio(0.5);
  session.faults.clear();
  session.faults.failAt(Service::PicCreate, 1);
  COMMON_STR[3] = "Memory allocation error";
  EXPECT_EQ(render(), nullptr);
  EXPECT_EQ(session.messages.at(0), "Memory allocation error");
}

TEST(ChainMix, IsDeclaredToHalvenorAlone) {
  int result = -1;
  EXPECT_EQ(
      test::declared(ProcessChamixDeclare, "Halvenor", &result),
      (Texts{
          "ZoEffect eff;",
          "eff.Sign = \"ChainedMix Zo1 native\";",
          "eff.Name = \"Compositing/Chain Mix\";",
          "eff.Version = 1;",
          "eff.Description = (char *)@;",
          "eff.InitFunction = @;",
          "eff.RenderVideoFunction = @;",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"Input\", \"Background\" );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"Selector\", \"InputStartOffsetFrom\", \"Start from\" );",
          "DataFieldSelItemAdd( &eff.df, \"InputStartOffsetFrom\", \"Absolute time\", 0x0 );",
          "DataFieldSelItemAdd( &eff.df, \"InputStartOffsetFrom\", \"Clip beginning\", 0x1 );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"time\", \"InputStartOffset\", \"Start processing from\", "
          "0.0, "
          "14400.0 );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"time\", \"InputInterval\", \"Input Interval\", 0.01, "
          "3600.0 );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"time\", \"StopInterval\", \"Output Stop Interval\", 0.0, "
          "3600.0 );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"time\", \"MixInterval\", \"Output Mix Interval\", 0.0, "
          "3600.0 );",
          "*(int *)@ = ZoDataFieldAdd( &eff.df, \"Bool\", \"Nonlinear\", \"&Nonlinear mixer\" );",
          "EffectAdd( eff );",
      }));
  EXPECT_EQ(result, 1);
  EXPECT_EQ(test::declared(ProcessChamixDeclare, "Quorbel", &result), Texts{});
  EXPECT_EQ(result, 0);
}

class ChainMixRender : public testing::Test {
protected:
  enum { kStartFrom = 1, kOffset, kInterval, kStop, kMix, kNonlinear };

  ChainMixRender() {
    test::declared(ProcessChamixDeclare, "Halvenor");
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

TEST_F(ChainMixRender, SetsItsDefaults) {
  session.tracing = true;
  chain.init(session.info());
  EXPECT_EQ(session.trace,
            (Texts{"ParamSetInt(1, 0, 1)", "ParamSetFloat(3, 0, 0, 2)", "ParamSetFloat(4, 0, 0, 0.5)",
                   "ParamSetFloat(5, 0, 0, 1.5)", "ClipGetDefault()", "InputSet(0, 0)"}));
}

TEST_F(ChainMixRender, HoldsThenMixesTowardTheNextTakenFrame) {
  session.tracing = true;
  EXPECT_TRUE(shows(render(0.25), clip.at(10)));
  EXPECT_EQ(session.trace,
            (Texts{"InputGetPic(0, 0)", "ParamGetFloat(3, 0, 0.25)", "ParamGetFloat(4, 0, 0.25)",
                   "ParamGetFloat(5, 0, 0.25)", "ParamGetFloat(2, 0, 0.25)", "ParamGetInt(1, 0)",
                   "PicGetSized(10)", "PicDuplicate()"}));

  // From the second cycle on 0.75 s are a phase of 0.25 s into the mix.
  EXPECT_TRUE(shows(render(2.75), mixed(clip.at(12), clip.at(14), 0.75F / 2)->record()));
  EXPECT_EQ(clip.times, (std::vector<double>{12, 14}));
  EXPECT_EQ(Texts(session.trace.begin() + 6, session.trace.begin() + 10),
            (Texts{"PicGetSized(12)", "PicGetSized(14)", "ParamGetInt(6, 0)", "PicCreate(5, 3)"}));
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

TEST_F(ChainMixRender, AnswersWhateverTheParametersAre) {
  constexpr double kValues[] = {0, -1, 1e-300, 1e300, kInfinity, -kInfinity, kNaN};
  for (const int field : {+kOffset, +kInterval, +kStop, +kMix})
    for (const double value : kValues) {
      set(field, value);
      for (const double elapsed : {0.0, 1.0, 1e18, -1e300, kNaN})
        EXPECT_NE(render(elapsed), nullptr);
      set(field, 1);
    }
  session.info()->FrameRate = 0;
  EXPECT_NE(render(1), nullptr);
}

TEST_F(ChainMixRender, ReportsAMissingInputAndAFailedCopyAlone) {
  for (const int missing : {1, 2}) {
    clip.missing = missing;
    EXPECT_EQ(render(1), nullptr);
    EXPECT_EQ(clip.times.size(), 2U);
  }
  clip.missing = 1;
  EXPECT_EQ(render(0), nullptr);
  EXPECT_TRUE(session.messages.empty());
  clip.missing = 0;
  session.faults.clear();
  session.faults.failAt(Service::PicDuplicate, 1);
  COMMON_STR[3] = "Memory allocation error";
  EXPECT_EQ(render(0), nullptr);
  EXPECT_EQ(session.messages.at(0), "Memory allocation error");
  session.parameters.inputs.get(0, 0)->clear();
  EXPECT_EQ(render(0), nullptr);
  EXPECT_EQ(session.messages.at(1), "Input is not assigned");
  EXPECT_EQ(session.pictures.live(), 0U);
}

} // namespace
} // namespace zol
