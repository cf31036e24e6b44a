#include "host/services/session.h"
#include "kernels/exports/bluescreen.h"
#include "kernels/simd/levels.h"
#include "plain/bluescreen.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Service;
using host::Session;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

struct Settings {
  float delta1 = 0.25F, delta2 = 0.1F, opacity = 1, shrink = 0, blur = 0, aspect = 1;
};

class Screens : public testing::TestWithParam<std::tuple<SimdLevel, int>> {
protected:
  Screens() { capSimdLevel(std::get<0>(GetParam())); }
  ~Screens() override { capSimdLevel(kWidestLevel); }

  int kernel(pic *out, pic *key, const Settings &s) {
    return (channel_ == 0 ? Bluescreen : Greenscreen)(session_.info(), out, key, s.delta1, s.delta2,
                                                      s.opacity, s.shrink, s.blur, s.aspect);
  }

  /// The kernel's bytes and host calls against the plain form's.
  void compare(pic *ground, pic *key, const Settings &s) {
    pic *got = session_.pictures.duplicate(ground);
    pic *want = session_.pictures.duplicate(ground);
    session_.tracing = true;
    const int plainResult = plain::screen(channel_, session_.info(), want, key, s.delta1, s.delta2, s.opacity,
                                          s.shrink, s.blur, s.aspect);
    const std::vector<std::string> plainTrace = std::exchange(session_.trace, {});
    EXPECT_EQ(kernel(got, key, s), plainResult);
    EXPECT_EQ(std::exchange(session_.trace, {}), plainTrace);
    session_.tracing = false;
    EXPECT_TRUE(test::samePixels(*got, *want)) << "deltas " << s.delta1 << ", " << s.delta2 << " opacity "
                                               << s.opacity << " shrink " << s.shrink << " blur " << s.blur;
    session_.pictures.free(got);
    session_.pictures.free(want);
  }

  Session session_{"Halvenor"};
  int channel_ = std::get<1>(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Levels, Screens,
                         testing::Combine(testing::ValuesIn(test::levels()), testing::Values(0, 1)));

TEST_P(Screens, EveryPairOfChannelsGetsTheFormulasBytes) {
  const auto key = test::randomPicture(256, 256, 1);
  const auto ground = test::randomPicture(256, 256, 2);
  for (int i = 0; i < 65536; ++i) { // key channel by column, the larger of the others by row
    _color_t &pixel = key->record()->Pixels[i];
    const auto value = static_cast<uint8_t>(i);
    const auto larger = static_cast<uint8_t>(i >> 8);
    (channel_ == 0 ? pixel.b : pixel.g) = value;
    pixel.r = larger;
    uint8_t &other = channel_ == 0 ? pixel.g : pixel.b;
    other = static_cast<uint8_t>(other % (larger + 1));
    if (i % 3 == 0)
      std::swap(pixel.r, other);
  }
  constexpr float kTiny = 1e-17F; // lost beside most channels, not beside 0
  for (const auto &[delta1, delta2] :
       {std::pair{0.25F, 0.0F}, {0.0F, 0.0F},           {0.0F, 0.3F},   {1.0F, 1.0F},     {0.4F, 0.2F},
        {0.003F, 0.001F},       {-0.1F, 0.3F},          {0.2F, -0.5F},  {-0.2F, 0.2F},    {kTiny, 0.2F},
        {0.2F, kTiny},          {kTiny, kTiny},         {1e-8F, 1e-8F}, {5.5e-17F, 0.0F}, {1e-40F, 0.5F},
        {1e30F, 1.0F},          {1.0F, -1e30F},         {kNan, 0.2F},   {0.2F, kNan},     {kInfinite, 0.2F},
        {0.2F, kInfinite},      {-kInfinite, kInfinite}})
    compare(ground->record(), key->record(), {.delta1 = delta1, .delta2 = delta2});
  for (const float opacity :
       {0.0F, 0.5F, 0.51F, 0.999F, 1.5F, -1.0F, 6.9F, 7.5F, -9.0F, 1e9F, kNan, -kInfinite})
    for (const float shrink : {0.0F, 1.0F})
      compare(ground->record(), key->record(), {.opacity = opacity, .shrink = shrink});
}

TEST_P(Screens, PicturesOfAnyPlaceAndSizeAreLaidAsPlainly) {
  std::mt19937 random(7);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (int round = 0; round < 150; ++round) {
    const bool wide = round % 10 == 0; // beyond the width that is worked on at a time
    const auto ground = test::randomPicture(between(0, wide ? 1100 : 40), between(0, 9), random(),
                                            between(-9, 9), between(-5, 5));
    const auto key = test::randomPicture(between(0, wide ? 1100 : 40), between(0, 9), random(),
                                         between(-20, 20), between(-5, 5));
    compare(ground->record(), key->record(),
            {.opacity = 0.8F,
             .shrink = round % 3 == 0 ? 1.5F : 0.0F,
             .blur = round % 2 == 0 ? 2.5F : 0.0F,
             .aspect = round % 4 == 0 ? 1.1F : -1.0F});
  }
  const auto corner = test::randomPicture(3, 2, 1, -32768, 32767);
  const auto opposite = test::randomPicture(3, 2, 2, 32767, -32768);
  compare(corner->record(), opposite->record(), {});
  for (const float odd : {kNan, -3.0F, kInfinite})
    compare(corner->record(), corner->record(), {.shrink = odd, .blur = odd});
}

TEST_P(Screens, EveryFailureIsAnsweredAndLeaksNothing) {
  const auto key = test::randomPicture(8, 5, 1);
  const auto ground = test::randomPicture(8, 5, 2);
  const Settings all{.shrink = 1.5F, .blur = 2.5F};
  int polls = 0;
  for (; polls < 100; ++polls) {
    session_.faults.clear();
    session_.faults.abortAtPoll(polls + 1);
    if (kernel(ground->record(), key->record(), all) == 1)
      break;
    EXPECT_EQ(session_.pictures.live(), 0U);
  }
  EXPECT_GE(polls, 5); // a row of the blur each, and those of the erosion
  EXPECT_LT(polls, 100);

  session_.faults.clear();
  session_.faults.failAt(Service::PicCreate, 1);
  EXPECT_EQ(kernel(ground->record(), key->record(), all), 0);
  session_.faults.clear();
  int allocations = 0;
  for (; allocations < 20; ++allocations) {
    const test::FailingMalloc failing(allocations + 1);
    const int result = kernel(ground->record(), key->record(), all);
    EXPECT_EQ(result, failing.failed() ? 0 : 1);
    EXPECT_EQ(session_.pictures.live(), 0U);
    if (!failing.failed())
      break;
  }
  EXPECT_GT(allocations, 0);

  session_.faults.clear();
  session_.faults.abortAtPoll(1);
  EXPECT_EQ(kernel(ground->record(), key->record(), {}), 1); // neither blur nor erosion: no poll
  EXPECT_EQ(session_.faults.calls(Service::IsAborted), 0);
  EXPECT_TRUE(session_.complaints.empty());
}

} // namespace
} // namespace zol
