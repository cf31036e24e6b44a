// Deinterlace and Deinterlace Basic.

#include "frame/effects.h"
#include "plain/deinterlace.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

using host::Session;
using Texts = std::vector<std::string>;
using Declare = int (*)(t_ZoHostInfo *);

constexpr int kWidth = 7;
constexpr int kHeight = 6;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

/// Both effects, in their ordinary and real-time renders.
class Deinterlacers : public testing::TestWithParam<Declare> {
protected:
  Deinterlacers() {
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

TEST_P(Deinterlacers, GiveTheSameInOrdinaryAndRealTimeRenders) {
  t_ZoHostInfo *info = session.info();
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
}

INSTANTIATE_TEST_SUITE_P(Both, Deinterlacers,
                         testing::Values(ProcessDeinterlaceDeclare, ProcessDeinterlace2Declare));

} // namespace
} // namespace zol
