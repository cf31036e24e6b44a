#include "kernels/exports/bluescreen.h"

#include "host/services/session.h"
#include "plain/bluescreen.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <limits>

namespace zol {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

struct Settings {
  float delta1 = 0.25F, delta2 = 0.1F, opacity = 1, shrink = 0, blur = 0, aspect = 1;
};

/// The kernels' bytes and host calls against the plain form's.
void expectPlain(pic *ground, pic *key, const Settings &s) {
  host::Session session("Halvenor");
  session.tracing = true;
  for (const int channel : {0, 1}) {
    pic *want = session.pictures.duplicate(ground);
    const int plainResult = plain::screen(channel, session.info(), want, key, s.delta1, s.delta2, s.opacity,
                                          s.shrink, s.blur, s.aspect);
    const std::vector<std::string> plainTrace = std::exchange(session.trace, {});
    test::atEveryLevel([&] {
      pic *got = session.pictures.duplicate(ground);
      EXPECT_EQ((channel == 0 ? Bluescreen : Greenscreen)(session.info(), got, key, s.delta1, s.delta2,
                                                          s.opacity, s.shrink, s.blur, s.aspect),
                plainResult);
      EXPECT_EQ(std::exchange(session.trace, {}), plainTrace);
      EXPECT_TRUE(test::samePixels(*got, *want))
          << "channel " << channel << " deltas " << s.delta1 << ", " << s.delta2 << " opacity " << s.opacity
          << " shrink " << s.shrink << " blur " << s.blur;
    });
  }
}

TEST(Screens, EveryPairOfChannelsGetsTheFormulasBytes) {
  const auto key = test::randomPicture(256, 256, 1), ground = test::randomPicture(256, 256, 2);
  // The key channel by column, the larger of the others by row: of the blue screen above, of the green below.
  const auto expectAll = [&](const Settings &settings) {
    for (const bool green : {false, true}) {
      for (int i = 0; i < 65536; ++i) {
        _color_t &pixel = key->record()->Pixels[i];
        const auto value = static_cast<uint8_t>(i), larger = static_cast<uint8_t>(i >> 8);
        (green ? pixel.g : pixel.b) = value;
        uint8_t &other = green ? pixel.b : pixel.g;
        pixel.r = larger;
        other = static_cast<uint8_t>(i * 7 % (larger + 1));
        if (i % 3 == 0)
          std::swap(pixel.r, other);
      }
      expectPlain(ground->record(), key->record(), settings);
    }
  };
  constexpr float kTiny = 1e-17F; // lost beside most channels, not beside 0
  for (const auto &[delta1, delta2] :
       {std::pair{0.25F, 0.0F}, {0.0F, 0.0F},           {0.0F, 0.3F},   {1.0F, 1.0F},     {0.4F, 0.2F},
        {0.003F, 0.001F},       {-0.1F, 0.3F},          {0.2F, -0.5F},  {-0.2F, 0.2F},    {kTiny, 0.2F},
        {0.2F, kTiny},          {kTiny, kTiny},         {1e-8F, 1e-8F}, {5.5e-17F, 0.0F}, {1e-40F, 0.5F},
        {1e30F, 1.0F},          {1.0F, -1e30F},         {kNan, 0.2F},   {0.2F, kNan},     {kInfinite, 0.2F},
        {0.2F, kInfinite},      {-kInfinite, kInfinite}})
    expectAll({.delta1 = delta1, .delta2 = delta2});
  for (const float opacity :
       {0.0F, 0.5F, 0.51F, 0.999F, 1.5F, -1.0F, 6.9F, 7.5F, -9.0F, 1e9F, kNan, -kInfinite})
    for (const float shrink : {0.0F, 1.0F})
      expectAll({.opacity = opacity, .shrink = shrink});
}

TEST(Screens, PicturesOfAnyPlaceAndSizeAreLaidAsPlainly) {
  test::Dice dice(7);
  for (int round = 0; round < 150; ++round) {
    const int widest = round % 10 == 0 ? 1100 : 40; // beyond the width that is worked on at a time
    const auto ground = dice.picture(widest, 9), key = dice.picture(widest, 9);
    expectPlain(ground->record(), key->record(),
                {.opacity = 0.8F,
                 .shrink = round % 3 == 0 ? 1.5F : 0.0F,
                 .blur = round % 2 == 0 ? 2.5F : 0.0F,
                 .aspect = round % 4 == 0 ? 1.1F : -1.0F});
  }
  const auto corner = test::randomPicture(3, 2, 1, -32768, 32767);
  const auto opposite = test::randomPicture(3, 2, 2, 32767, -32768);
  expectPlain(corner->record(), opposite->record(), {});
  for (const float odd : {kNan, -3.0F, kInfinite})
    expectPlain(corner->record(), corner->record(), {.shrink = odd, .blur = odd});
}

} // namespace
} // namespace zol
