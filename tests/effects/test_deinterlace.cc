// Deinterlace and Deinterlace Basic.

#include "frame/effects.h"
#include "plain/deinterlace.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Texts = std::vector<std::string>;
using Declare = int (*)(t_ZoHostInfo *);

constexpr int kWidth = 7;
constexpr int kHeight = 6;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

TEST(Deinterlace, IsDeclaredToEveryHost) {
  const char *const begin = "ZoEffect obj; obj.Name = \"Filters/Deinterlace\"; obj.Sign = \"Deinterlace 1.0 "
                            "(Zo2)\"; obj.Version = 0x1;";
  Texts expected{
      begin,
      "obj.DescriptionW = (word *)@;",
      "obj.Icon = ZoPicFromXPM( @ );",
      "obj.InitFunction = @;",
      "obj.RenderVideoFunction = @;",
      "obj.RenderVideoFunctionRT = @;",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Input\", \"InputA\", \"Input A\", ZodfNone );",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Long\", \"Threshold\", (word *)@, 0.000000,100.000000, "
      "ZodfHideCurve );",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Long\", \"Edgedetect\", (word *)@, 0.000000,180.000000, "
      "ZodfHideCurve );",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Bool\", \"Blending\", (word *)@, ZodfNone );",
      "EffectAdd( obj );",
  };
  int result = 0;
  EXPECT_EQ(test::declared(ProcessDeinterlaceDeclare, "Halvenor", &result), expected);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(test::declared(ProcessDeinterlaceDeclare, "another"), expected);
  expected[0].replace(expected[0].find("Filters/"), 8, "Filters/Standard/");
  EXPECT_EQ(test::declared(ProcessDeinterlaceDeclare, "QUORBEL"), expected);
}

TEST(DeinterlaceBasic, IsDeclaredToEveryHost) {
  Texts expected{
      "ZoEffect obj; obj.Name = \"Filters/Deinterlace Basic\"; obj.Sign = \"Deinterlace Basic 1.0 (Zo2)\"; "
      "obj.Version = 0x1;",
      "obj.DescriptionW = (word *)@;",
      "obj.Icon = ZoPicFromXPM( @ );",
      "obj.InitFunction = @;",
      "obj.RenderVideoFunction = @;",
      "obj.RenderVideoFunctionRT = @;",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Input\", \"InputA\", \"Input A\", ZodfNone );",
      "*((int *)@) = ZoDataFieldAdd( &obj.df, \"Selector\", \"Method\", (word *)@, ZodfNone );",
      "DataFieldSelItemAddById( &obj.df, 1, (word *)@, 0x0 );",
      "DataFieldSelItemAddById( &obj.df, 1, (word *)@, 0x1 );",
      "EffectAdd( obj );",
  };
  EXPECT_EQ(test::declared(ProcessDeinterlace2Declare, "Halvenor"), expected);
  expected[0].replace(expected[0].find("Filters/"), 8, "Filters/Standard/");
  EXPECT_EQ(test::declared(ProcessDeinterlace2Declare, "Quorbel"), expected);
}

TEST(Deinterlace, TranslatesItsTextsUnderItsShortName) {
  Session session("another");
  session.tracing = true;
  ProcessDeinterlaceDeclare(session.info());
  ProcessDeinterlace2Declare(session.info());
  std::erase_if(session.trace, [](const std::string &call) { return !call.starts_with("TranslateW"); });
  EXPECT_EQ(session.trace, (Texts{R"(TranslateW("Deinterlace", "This effect deinterlaces input image."))",
                                  R"(TranslateW("Deinterlace", "Threshold [0..50]"))",
                                  R"(TranslateW("Deinterlace", "Edge detection [0..180]"))",
                                  R"(TranslateW("Deinterlace", "Blending"))",
                                  R"(TranslateW("Deinterlace2", "This effect deinterlaces input image."))",
                                  R"(TranslateW("Deinterlace2", "Method"))",
                                  R"(TranslateW("Deinterlace2", "Use upper field, dicard lower one"))",
                                  R"(TranslateW("Deinterlace2", "Use lower field, dicard upper one"))"}));
}

/// Both effects, in their ordinary and real-time renders.
class Deinterlacers : public testing::TestWithParam<Declare> {
protected:
  Deinterlacers() {
    test::declared(GetParam(), "Halvenor");
    session.defaultClip = &clip;
    session.info()->FrameTime = 1.5;
    session.info()->Width = kWidth;
    session.info()->Height = kHeight;
    session.info()->BitsPerPixel = 32;
    session.info()->InputBuffers[0] = picture->record()->Pixels;
    session.info()->OutputBuffer = buffer;
    session.tracing = true;
  }
  const test::Callbacks effect{GetParam()};
  Session session{"Halvenor"};
  std::unique_ptr<host::PictureBuffer> picture = test::randomPicture(kWidth, kHeight, 5, 3, 4);
  test::PictureClip clip{picture->record()};
  _color_t buffer[kPixels] = {};
};

TEST_P(Deinterlacers, RenderAndFailAsStated) {
  t_ZoHostInfo *info = session.info();
  EXPECT_EQ(effect.renderVideo(info), nullptr);
  EXPECT_EQ(session.messages.at(0), "No input");
  EXPECT_EQ(effect.init(info), 1);
  const bool basic = GetParam() == ProcessDeinterlace2Declare;
  if (!basic)
    *session.parameters.integers.get(1, 0) = 3;
  const Texts reading = basic ? Texts{"ParamGetInt(1, 0)", "PicResample(14, 7, 3, 7, 7, 6, 2)"}
                              : Texts{"ParamGetInt(1, 0)", "ParamGetInt(2, 0)", "ParamGetInt(3, 0)"};

  session.trace.clear();
  const auto out = session.pictures.take(effect.renderVideo(info));
  ASSERT_NE(out, nullptr);
  Texts expected{"InputGetPic(0, 0)", "PicGetSized(1.5)", "PicCreate(7, 6)"};
  expected.insert(expected.end(), reading.begin(), reading.end());
  EXPECT_EQ(session.trace, expected);
  EXPECT_EQ(out->record()->X, 0);
  EXPECT_EQ(out->record()->Y, 0);

  session.trace.clear();
  EXPECT_EQ(effect.renderVideoRT(info), 1);
  EXPECT_EQ(session.trace, reading);
  EXPECT_EQ(std::memcmp(out->record()->Pixels, buffer, sizeof buffer), 0);
  if (!basic) {
    uint32_t plain[kPixels];
    plain::deinterlace(plain, reinterpret_cast<uint32_t *>(picture->record()->Pixels), kWidth, kHeight, 3, 20,
                       false);
    EXPECT_EQ(std::memcmp(plain, buffer, sizeof buffer), 0);
  }

  session.faults.clear();
  session.faults.failAt(Service::PicGetSized, 1);
  EXPECT_EQ(effect.renderVideo(info), nullptr);
  EXPECT_EQ(session.messages.size(), 1U);
  session.faults.failAt(Service::PicCreate, 1);
  EXPECT_EQ(effect.renderVideo(info), nullptr);
  EXPECT_EQ(session.messages.at(1), "No memory");
  info->BitsPerPixel = 64;
  EXPECT_EQ(effect.renderVideoRT(info), 0);
  EXPECT_EQ(session.messages.at(2), "Unsupported pixel size");
  EXPECT_EQ(session.pictures.live(), 0U);
}

TEST_P(Deinterlacers, SetTheirDefaults) {
  EXPECT_EQ(effect.init(session.info()), 1);
  Texts expected{"ClipGetDefault()", "InputSet(0, 0)"};
  if (GetParam() == ProcessDeinterlace2Declare)
    expected.insert(expected.end(), {"ParamSetInt(1, 0, 0)"});
  else
    expected.insert(expected.end(),
                    {"ParamSetInt(1, 0, 10)", "ParamSetInt(2, 0, 20)", "ParamSetInt(3, 0, 0)"});
  EXPECT_EQ(session.trace, expected);
}

INSTANTIATE_TEST_SUITE_P(Both, Deinterlacers,
                         testing::Values(ProcessDeinterlaceDeclare, ProcessDeinterlace2Declare));

} // namespace
} // namespace zol
