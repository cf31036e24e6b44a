// The reference host's services: values over time, ownership, faults.

#include "host/services/session.h"

#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace zol::host {
namespace {

TEST(Curve, InterpolatesBetweenKeysAndHoldsOutside) {
  NumberCurve curve;
  EXPECT_EQ(curve.at(0.5)[0], 0.0);
  curve.set(0.75, {3.0});
  curve.set(0.25, {1.0});
  EXPECT_EQ(curve.at(-1)[0], 1.0);
  EXPECT_EQ(curve.at(0.25)[0], 1.0);
  EXPECT_EQ(curve.at(0.5)[0], 2.0);
  EXPECT_EQ(curve.at(9)[0], 3.0);
  curve.set(0.75, {5.0});
  EXPECT_EQ(curve.keys().size(), 2U);
  EXPECT_EQ(curve.at(0.5)[0], 3.0);
}

TEST(Session, CountsPicturesAndReportsWrongFrees) {
  Session session("Halvenor");
  const t_ZoServices &s = *session.info()->Services;
  pic *first = s.PicCreate(3, 2);
  first->X = -4;
  first->Pixels[5].a = 9;
  pic *copy = s.PicDuplicate(first);
  EXPECT_EQ(session.pictures.live(), 2U);
  EXPECT_EQ(copy->X, -4);
  EXPECT_EQ(copy->Pixels[5].a, 9);
  EXPECT_EQ(copy->Pixels[0].a, 0);
  s.PicFree(first);
  s.PicFree(copy);
  EXPECT_TRUE(session.complaints.empty());
  pic foreign{};
  s.PicFree(&foreign);
  s.PicFree(nullptr);
  EXPECT_EQ(session.complaints.size(), 2U);
  EXPECT_EQ(session.pictures.live(), 0U);
  EXPECT_EQ(s.PicCreate(-1, 4), nullptr);
  EXPECT_EQ(s.PicCreate(32768, 1), nullptr);
  EXPECT_NE(s.PicCreate(0, 4), nullptr);
}

TEST(Session, ScalesPicturesWithoutAliasingAndWithoutWhatTheyHide) {
  Session session("Halvenor");
  const auto scaled = [&](const std::vector<_color_t> &from, int step, int width, int height, int dstWidth,
                          int dstHeight) {
    std::vector<_color_t> to(static_cast<size_t>(dstWidth) * static_cast<size_t>(dstHeight));
    EXPECT_EQ(session.info()->Services->PicResample(session.info(), from.data(), step, width, height,
                                                    to.data(), dstWidth, dstWidth, dstHeight, 2),
              1);
    return to;
  };
  std::vector<_color_t> board(64 * 48);
  for (size_t i = 0; i < board.size(); ++i)
    board[i] = (i + i / 64) % 2 == 0 ? _color_t{0, 200, 100, 255} : _color_t{200, 0, 100, 255};
  for (const _color_t &p : scaled(board, 64, 61, 48, 10, 9)) {
    EXPECT_NEAR(p.g, 100, 6);
    EXPECT_EQ(p.r, 100);
  }
  for (size_t i = 0; i < board.size(); i += 2)
    board[i] = {0, 0, 255, 0};
  for (const _color_t &p : scaled(board, 64, 64, 48, 150, 20))
    EXPECT_TRUE(p.a == 0 || p.r < 105);
  const std::vector<_color_t> steps = {{0, 0, 0, 255}, {9, 9, 9, 0}, {64, 64, 64, 255}};
  const auto risen = scaled(steps, 2, 1, 2, 1, 4); // beside the pixels that are skipped
  for (size_t i = 0; i < 4; ++i)
    EXPECT_EQ(risen[i].b, (std::array{0, 16, 48, 64}[i]));
}

TEST(Session, FailsTheChosenCallAndAbortsFromTheChosenPoll) {
  Session session("Halvenor");
  const t_ZoServices &s = *session.info()->Services;
  session.faults.failAt(Service::PicCreate, 2);
  session.faults.abortAtPoll(2);
  EXPECT_NE(s.PicCreate(1, 1), nullptr);
  EXPECT_EQ(s.PicCreate(1, 1), nullptr);
  EXPECT_NE(s.PicCreate(1, 1), nullptr);
  EXPECT_EQ(s.IsAborted(session.info()), 0);
  EXPECT_EQ(s.IsAborted(session.info()), 1);
  EXPECT_EQ(s.IsAborted(session.info()), 1);
  EXPECT_EQ(session.faults.calls(Service::PicCreate), 3);
}

TEST(Session, TheYoungestAliveIsCurrentUnlessAnotherIsUsed) {
  auto first = std::make_unique<Session>("Halvenor");
  auto second = std::make_unique<Session>("Halvenor");
  EXPECT_EQ(&Session::current(), second.get());
  std::unique_ptr<Session> third;
  {
    const Session::Use use(*first);
    EXPECT_EQ(&Session::current(), first.get());
    third = std::make_unique<Session>("Quorbel");
    EXPECT_EQ(&Session::current(), third.get());
  }
  EXPECT_EQ(&Session::current(), third.get());
  first.reset(); // in the order of their making, too
  third.reset();
  EXPECT_EQ(&Session::current(), second.get());
  std::thread([&] {
    const Session other("Quorbel");
    EXPECT_EQ(&Session::current(), &other);
  }).join();
  EXPECT_EQ(&Session::current(), second.get());
}

TEST(Session, ServicesStandInTheirSlots) {
  EXPECT_EQ(static_cast<int>(Service::Message), 2);
  EXPECT_EQ(static_cast<int>(Service::IsAborted), 70);
  EXPECT_EQ(static_cast<int>(Service::TranslateW), 81);
  EXPECT_EQ(serviceNamed("PicResample"), Service::PicResample);
  EXPECT_EQ(serviceName(Service::PicResample), "PicResample");
  EXPECT_EQ(serviceNamed("picresample"), std::nullopt);
  EXPECT_EQ(services().Slot5, nullptr);
}

TEST(Session, KeepsInputSlotsAndDataSets) {
  Session session("Halvenor");
  t_ZoHostInfo *info = session.info();
  const t_ZoServices &s = *info->Services;
  EXPECT_EQ(s.DataFieldItemCount(info, 0), 0);
  s.InputsAdd(info, 0, 1, 1);
  s.InputsAdd(info, 0, 1, 1);
  s.InputsAdd(info, 0, 1, 1);
  session.selectedInputs = {0, 2, 2, 7};
  s.InputsRemoveSelected(info, 0);
  EXPECT_EQ(s.DataFieldItemCount(info, 0), 1);
  const t_ZoDatasetDisplay display = {{128, 192, 255, 0}, 1.0F};
  s.DatasetItemAdd(info, 4, "FloatA", "Level 0", &display);
  s.ParamSetFloat(info, 4, 0, 0.0, 0.5);
  EXPECT_EQ(s.DataFieldItemCount(info, 4), 1);
  s.DatasetClear(info, 4, 1);
  EXPECT_EQ(s.DataFieldItemCount(info, 4), 0);
  EXPECT_EQ(s.ParamGetFloat(info, 4, 0, 0.0), 0.0L);
}

TEST(Session, AudioBlocksHaveTheFramesOfTheirStretch) {
  Session session("Halvenor");
  const t_ZoServices &s = *session.info()->Services;
  t_ZoAudio *block = s.AudioCreate(1.0, 1.04, 48000, 2);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->Frames, 1920U);
  EXPECT_EQ(block->Rate, 48000U);
  EXPECT_EQ(block->Channels, 2U);
  EXPECT_EQ(block->Samples[3839], 0.0F);
  EXPECT_EQ(s.AudioCreate(1.0, 0.0, 48000, 2), nullptr);
}

} // namespace
} // namespace zol::host
