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
using Messages = std::vector<std::optional<std::string>>;

TEST(ColorKeyer, LeavesTheBareBackgroundWhereItWasStopped) {
  const test::Callbacks filter(ProcessKeyerDeclare, "Halvenor", "Color Keyer Qb5 native");
  Session session("Halvenor");
  t_ZoHostInfo *info = session.info();
  constexpr int kWidth = 13;
  constexpr int kHeight = 5;
  const auto foreground = test::randomPicture(kWidth, kHeight, 1);
  const auto background = test::randomPicture(kWidth, kHeight, 2);
  const auto out = test::randomPicture(kWidth, kHeight, 3);
  const auto want = host::PictureBuffer::make(kWidth, kHeight);
  info->Width = kWidth;
  info->Height = kHeight;
  info->OutputBuffer = out->record()->Pixels;
  info->InputBuffers[0] = foreground->record()->Pixels;
  info->InputBuffers[1] = background->record()->Pixels;
  const _color_t color = {120, 130, 90, 0};
  session.parameters.colors.get(2, 0)->set(0, host::colorValue(color));
  for (const auto &[field, value] : {std::pair{3, 0.15}, {4, 0.45}, {5, 0.8}})
    session.parameters.numbers.get(field, 0)->set(0, {value});
  EXPECT_EQ(filter.renderVideoRT(info), 1);
  const plain::ColorKey<> rule(color, 0.15, 0.45, 0, 0.8);
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
  EXPECT_TRUE(session.messages.empty());

  for (int poll = 1; poll <= kHeight; ++poll) {
    session.faults.clear();
    session.faults.abortAtPoll(poll);
    EXPECT_EQ(filter.renderVideoRT(info), 0);
    EXPECT_EQ(session.faults.calls(Service::IsAborted), poll);
    EXPECT_EQ(std::exchange(session.messages, {}), Messages{std::nullopt});
    EXPECT_EQ(std::memcmp(out->record()->Pixels, plainly(poll), kBytes), 0) << poll;
  }
}

} // namespace
} // namespace zol
