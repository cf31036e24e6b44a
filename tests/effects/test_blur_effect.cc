#include "frame/effects.h"
#include "plain/blur.h"
#include "tests/support/declared.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Texts = std::vector<std::string>;

TEST(BlurEffect, IsDeclaredUnderTheHostsPath) {
  const auto statements = [](const char *path) {
    return Texts{"ZoEffect eff;",
                 "eff.Sign = \"Blur 1.0 (Zo2)\";",
                 std::string("eff.Name = \"") + path + "\";",
                 "eff.Version = 10;",
                 "eff.DescriptionW = (word *)@;",
                 "eff.Icon = ZoPicFromXPM( @ );",
                 "eff.InitFunction = @;",
                 "eff.RenderVideoFunction = @;",
                 "DataFieldAdd( &eff.df, \"Input\", \"Input\" );",
                 "ZoDataFieldAdd( &eff.df, \"FloatA\", \"Blurriness\", (word *)@, 0.0, 1.0, ZodfMinLimit );",
                 "EffectAdd( eff );"};
  };
  EXPECT_EQ(test::declared(ProcessBlurDeclare, "Halvenor"), statements("Filters/Blur"));
  EXPECT_EQ(test::declared(ProcessBlurDeclare, "another"), statements("Filters/Blur"));
  EXPECT_EQ(test::declared(ProcessBlurDeclare, "quorbel"), statements("Filters/Standard/Blur"));

  Session session("Halvenor");
  session.tracing = true;
  ProcessBlurDeclare(session.info());
  Texts translated;
  for (const std::string &call : session.trace)
    if (call.starts_with("TranslateW"))
      translated.push_back(call);
  ASSERT_EQ(translated.size(), 2U);
  EXPECT_NE(
      translated[0].find("This effect blurs given image with specified blurriness degree. <br><br>Required "
                         "inputs: Input image."),
      std::string::npos);
  EXPECT_NE(translated[1].find("Blurriness"), std::string::npos);
}

/// A session whose instance was initialised on a random picture.
struct BlurInstance : testing::Test {
  BlurInstance() {
    session.defaultClip = &clip;
    session.info()->Width = 144;
    session.info()->Height = 40;
    session.tracing = true;
    EXPECT_EQ(callbacks.init(session.info()), 1);
  }
  void setBlurriness(double value) { session.parameters.numbers.get(1, 0)->set(0.5, {value}); }
  pic *render() { return callbacks.renderVideo(session.info()); }

  const test::Callbacks callbacks{ProcessBlurDeclare};
  std::unique_ptr<host::PictureBuffer> picture = test::randomPicture(31, 40, 7, 4, -2);
  test::PictureClip clip{picture->record()};
  Session session{"Halvenor"};
};

TEST_F(BlurInstance, StartsOnTheDefaultClipWithATenth) {
  EXPECT_EQ(session.trace, (Texts{"ParamSetFloat(1, 0, 0.5, 0.1)", "ClipGetDefault()", "InputSet(0, 0)"}));
}

TEST_F(BlurInstance, BlursByAPartOfTheFramesWidth) {
  std::vector<_color_t> expected(picture->pixels());
  for (const double blurriness :
       {0.0, 0.05, 0.1, 0.333, 1.0, 7.5, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
    setBlurriness(blurriness);
    const pic *out = render();
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->X, 4);
    EXPECT_EQ(out->Y, -2);
    plain::blurImage(picture->record()->Pixels, 31, 40, blurriness * 144 / 7.2, expected.data());
    EXPECT_EQ(std::memcmp(out->Pixels, expected.data(), expected.size() * sizeof(_color_t)), 0) << blurriness;
  }
}

TEST_F(BlurInstance, EveryFailureGivesNothingAndLeavesNothingBehind) {
  session.faults.failAt(Service::InputGetPic, 1);
  EXPECT_EQ(render(), nullptr);
  ASSERT_EQ(session.messages.size(), 1U);
  EXPECT_EQ(session.messages.back(), "Input not assigned");

  session.faults.clear();
  session.faults.failAt(Service::PicGetSized, 1);
  EXPECT_EQ(render(), nullptr);
  EXPECT_EQ(session.messages.size(), 1U);
  EXPECT_EQ(session.faults.calls(Service::ParamGetFloat), 0);

  session.faults.clear();
  session.faults.failAt(Service::PicCreate, 1);
  EXPECT_EQ(render(), nullptr);
  EXPECT_EQ(session.messages.back(), "Filler: Memory allocation error");

  for (int poll = 1; poll <= 40; ++poll) {
    session.faults.clear();
    session.faults.abortAtPoll(poll);
    EXPECT_EQ(render(), nullptr);
  }
  EXPECT_EQ(session.messages.size(), 2U);
  EXPECT_EQ(session.pictures.live(), 0U);
  EXPECT_TRUE(session.complaints.empty());
}

} // namespace
} // namespace zol
