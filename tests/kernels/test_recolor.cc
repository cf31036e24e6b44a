#include "kernels/color/recolor_rows.h"

#include "plain/recolor.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

/// Every step at a random strength, or left out, or at its ends.
Recoloring randomRecoloring(test::Dice &dice) {
  const auto upTo = [&dice](int most) {
    const int kind = dice.below(4);
    return kind == 0 ? 0 : kind == 1 ? most : dice.between(1, most);
  };
  const auto either = [&](int most) { return dice.below(2) != 0 ? upTo(most) : -upTo(most); };
  Recoloring how;
  how.turn = upTo(1529);
  how.keepsLuma = dice.below(2) != 0;
  how.saturation = either(4096);
  how.lightness = either(4096);
  how.tintAmount = upTo(4096);
  for (uint32_t &color : how.tint)
    color = dice.word() & 0xFFFFFF;
  how.isLimited = dice.below(2) != 0;
  how.hue = dice.below(256);
  how.range = upTo(2047);
  how.fading = std::max(1, upTo(2048));
  how.fullChroma = upTo(64);
  return how;
}

void expectPlain(const pic &picture, const Recoloring &how) {
  const auto got = host::PictureBuffer::make(picture.Width, picture.Height),
             want = host::PictureBuffer::make(picture.Width, picture.Height);
  const auto row = ZOL_SELECT(recolorRow);
  for (int y = 0; y < picture.Height; ++y)
    row(picture.Pixels + ptrdiff_t{y} * picture.Width, got->record()->Pixels + ptrdiff_t{y} * picture.Width,
        picture.Width, how);
  for (ptrdiff_t i = 0; i < ptrdiff_t{picture.Width} * picture.Height; ++i)
    want->record()->Pixels[i] = plain::recolor(picture.Pixels[i], how);
  ASSERT_TRUE(test::samePixels(*got->record(), *want->record()))
      << "turn " << how.turn << ", saturation " << how.saturation << ", lightness " << how.lightness
      << ", tint " << how.tintAmount << ", range " << how.range << ", fading " << how.fading << ", chroma "
      << how.fullChroma;
}

TEST(Recolor, GivesThePlainFormsBytes) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 400 && !testing::Test::HasFatalFailure(); ++round) {
      const auto picture = dice.picture(200, 12, 0, 0);
      picture->record()->X = picture->record()->Y = 0;
      for (ptrdiff_t i = 0; i < ptrdiff_t{picture->record()->Width} * picture->record()->Height;
           i += 3) { // ends and greys
        _color_t &p = picture->record()->Pixels[i];
        p = i % 2 == 0 ? _color_t{p.b, p.b, p.b, p.a} : _color_t{p.b, uint8_t(p.r < 128 ? 0 : 255), p.r, p.a};
      }
      expectPlain(*picture->record(), randomRecoloring(dice));
    }
  });
}

TEST(Recolor, AFullTurnOfTheHueLeavesEveryColorAsItIs) {
  Recoloring how;
  how.turn = 1530;
  test::atEveryLevel([&how] {
    const auto row = ZOL_SELECT(recolorRow);
    std::vector<_color_t> in(65536), out(65536);
    for (unsigned r = 0; r < 256; ++r) {
      for (unsigned i = 0; i < 65536; ++i)
        in[i] = {uint8_t(i), uint8_t(i >> 8), uint8_t(r), uint8_t(i * 7)};
      row(in.data(), out.data(), 65536, how);
      ASSERT_EQ(std::memcmp(in.data(), out.data(), 65536 * sizeof(_color_t)), 0) << "red " << r;
    }
  });
}

} // namespace
} // namespace zol
