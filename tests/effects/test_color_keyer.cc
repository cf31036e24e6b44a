#include "frame/effects.h"
#include "plain/color_keyer.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Texts = std::vector<std::string>;
using Messages = std::vector<std::optional<std::string>>;

constexpr char kFilter[] = "Color Keyer Qb5 native";
constexpr char kCompositing[] = "Color Keyer Zo1 native";

class ColorKeyerRender : public testing::Test {
protected:
  ColorKeyerRender() {
    info_->FrameTime = 2.5;
    info_->Time = 0.25;
  }
  void set(int field, double value) { session_.parameters.numbers.get(field, 0)->set(0, {value}); }
  void setColor(int field, _color_t color) {
    session_.parameters.colors.get(field, 0)->set(0, host::colorValue(color));
  }

  Session session_{"Halvenor"};
  t_ZoHostInfo *info_ = session_.info();
  const _color_t color_ = {120, 130, 90, 0};
};

TEST_F(ColorKeyerRender, TheFilterKeysRealTimeBuffers) {
  const test::Callbacks filter(ProcessKeyerDeclare, "Halvenor", kFilter);
  constexpr int kWidth = 13;
  constexpr int kHeight = 5;
  const auto foreground = test::randomPicture(kWidth, kHeight, 1);
  const auto background = test::randomPicture(kWidth, kHeight, 2);
  const auto out = test::randomPicture(kWidth, kHeight, 3);
  const auto want = host::PictureBuffer::make(kWidth, kHeight);
  info_->Width = kWidth;
  info_->Height = kHeight;
  info_->OutputBuffer = out->record()->Pixels;
  info_->InputBuffers[0] = foreground->record()->Pixels;
  info_->InputBuffers[1] = background->record()->Pixels;
  setColor(2, color_);
  set(3, 0.15);
  set(4, 0.45);
  set(5, 0.8);
  session_.tracing = true;
  EXPECT_EQ(filter.renderVideoRT(info_), 1);
  Texts calls{"ParamGetColor(2, 0, 0.25)", "ParamGetFloat(3, 0, 0.25)", "ParamGetFloat(5, 0, 0.25)",
              "ParamGetFloat(4, 0, 0.25)"};
  calls.insert(calls.end(), kHeight, "IsAborted()");
  EXPECT_EQ(session_.trace, calls);
  const plain::ColorKey<> rule(color_, 0.15, 0.45, 0, 0.8);
  const auto plainly = [&](int rows) { // the bare background below them
    pic *picture = want->record();
    plain::colorKeyFilter(rule, foreground->record()->Pixels, background->record()->Pixels, picture->Pixels,
                          kWidth * rows);
    for (int i = kWidth * rows; i < kWidth * kHeight; ++i) {
      picture->Pixels[i] = background->record()->Pixels[i];
      picture->Pixels[i].a = 0;
    }
    return picture->Pixels;
  };
  constexpr size_t kBytes = sizeof(_color_t) * kWidth * kHeight;
  EXPECT_EQ(std::memcmp(out->record()->Pixels, plainly(kHeight), kBytes), 0);
  EXPECT_TRUE(session_.messages.empty());

  for (int poll = 1; poll <= kHeight; ++poll) {
    session_.faults.clear();
    session_.faults.abortAtPoll(poll);
    EXPECT_EQ(filter.renderVideoRT(info_), 0);
    EXPECT_EQ(session_.faults.calls(Service::IsAborted), poll);
    EXPECT_EQ(std::exchange(session_.messages, {}), Messages{std::nullopt});
    EXPECT_EQ(std::memcmp(out->record()->Pixels, plainly(poll), kBytes), 0) << poll;
  }
}

TEST_F(ColorKeyerRender, TheCompositingEffectKeysPictures) {
  const test::Callbacks compositing(ProcessKeyerDeclare, "Halvenor", kCompositing);
  const auto foreground = test::randomPicture(13, 9, 1, -2, 1);
  const auto background = test::randomPicture(17, 6, 2, 3, -1);
  test::PictureClip foregroundClip(foreground->record());
  test::PictureClip backgroundClip(background->record());
  *session_.parameters.inputs.get(1, 0) = {&foregroundClip};
  setColor(2, color_);
  set(3, 0.15);
  set(4, 0.9);
  set(5, 0.45);
  set(6, 0.2);
  const plain::ColorKey<> rule(color_, 0.15, 0.45, 0.9, 0.2);
  const auto expectKeyed = [&](const pic *ground) {
    const pic &extent = ground != nullptr ? *ground : *foreground->record();
    pic *out = compositing.renderVideo(info_);
    ASSERT_NE(out, nullptr);
    const auto want = host::PictureBuffer::make(extent.Width, extent.Height);
    want->record()->X = extent.X;
    want->record()->Y = extent.Y;
    plain::colorKey(rule, *foreground->record(), ground, *want->record());
    EXPECT_EQ(out->X, extent.X);
    EXPECT_EQ(out->Y, extent.Y);
    EXPECT_EQ(std::memcmp(out->Pixels, want->record()->Pixels, want->pixels() * sizeof(_color_t)), 0);
    session_.pictures.free(out);
  };
  expectKeyed(nullptr);
  *session_.parameters.inputs.get(0, 0) = {&backgroundClip};
  session_.tracing = true;
  expectKeyed(background->record());
  Texts calls{"InputGetPic(1, 0)",         "InputGetPic(0, 0)",         "PicGetSized(2.5)",
              "PicGetSized(2.5)",          "ParamGetColor(2, 0, 0.25)", "ParamGetFloat(3, 0, 0.25)",
              "ParamGetFloat(4, 0, 0.25)", "ParamGetFloat(5, 0, 0.25)", "ParamGetFloat(6, 0, 0.25)",
              "PicCreate(17, 6)"};
  calls.insert(calls.end(), 4, "IsAborted()"); // the rows where the two meet
  EXPECT_EQ(session_.trace, calls);
}

} // namespace
} // namespace zol
