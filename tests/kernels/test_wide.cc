#include "kernels/color/wide.h"

#include "kernels/sampling/sample.h"
#include "plain/wide.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol {
namespace {

constexpr int kPairs = 65536; // every byte in every alpha

TEST(Wide, BytesComeBackAsTheyWereWhateverIsAdded) {
  const auto picture = test::randomPicture(256, 256, 1), back = test::randomPicture(256, 256, 2);
  for (int i = 0; i < kPairs; ++i)
    picture->record()->Pixels[i] = {uint8_t(i), uint8_t(~i), uint8_t(i * 7), uint8_t(i >> 8)};
  test::atEveryLevel([&] {
    std::vector<WidePixel> wide(kPairs);
    ZOL_SELECT(toWide)(picture->record()->Pixels, wide.data(), kPairs);
    for (const Rounding &rounding : {Rounding::nearest(), Rounding::dithered(3, 5)}) {
      ZOL_SELECT(toBytes)(wide.data(), rounding, picture->record()->Pixels, back->record()->Pixels, kPairs);
      EXPECT_TRUE(test::samePixels(*back->record(), *picture->record()));
    }
  });
}

TEST(Wide, GivesThePlainFormsBytes) {
  test::Dice dice(3);
  std::vector<WidePixel> wide(4099);
  std::vector<uint16_t> alphas;
  for (size_t i = 0; i < wide.size(); ++i) { // opaque stretches, faint pixels, colours beyond their alpha
    const int a = i % 64 < 16 ? kWideOne : dice.below(i % 3 != 0 ? kWideOne + 1 : 300);
    const auto color = [&] { return static_cast<uint16_t>(dice.below(i % 7 != 0 ? a + 1 : 65536)); };
    wide[i] = {color(), color(), color(), static_cast<uint16_t>(a)};
    alphas.push_back(color());
  }
  const auto hidden = test::randomPicture(4099, 1, 4);
  test::atEveryLevel([&] {
    for (const bool dithers : {false, true})
      for (const int count : {0, 1, 2, 3, 5, 8, 13, 21, 4099}) {
        const int x = dice.between(-20, 20), y = dice.between(-20, 20);
        const Rounding rounding = dithers ? Rounding::dithered(x, y) : Rounding::nearest();
        const _color_t *under = count % 2 != 0 ? hidden->record()->Pixels : nullptr;
        std::vector<_color_t> out(static_cast<size_t>(count));
        std::vector<uint8_t> bytes(out.size());
        ZOL_SELECT(toBytes)(wide.data(), rounding, under, out.data(), count);
        ZOL_SELECT(wideToAlpha)(alphas.data(), rounding, bytes.data(), count);
        for (size_t i = 0; i < out.size(); ++i) {
          const plain::Wide pixel = {wide[i].b, wide[i].g, wide[i].r, wide[i].a};
          const int term = plain::roundingTerm(dithers, x + static_cast<int>(i), y);
          const _color_t want = plain::toBytes(pixel, term, under != nullptr ? under[i] : _color_t{});
          ASSERT_EQ(std::memcmp(&out[i], &want, sizeof want), 0) << i;
          ASSERT_EQ(bytes[i], plain::wideToByte(alphas[i], term)) << i;
        }
      }
  });
}

// Over an 8 by 8 square every value between two bytes becomes the upper one as often as its place says.
TEST(Wide, DitheringKeepsTheMean) {
  for (int value = 0; value < 3 * 255; ++value) {
    int sum = 0;
    for (int y = 0; y < 8; ++y)
      for (const uint16_t term : Rounding::dithered(-8, y).terms)
        sum += (value + term) / 255;
    EXPECT_NEAR(sum / 128.0, value / 255.0, 0.5 / 64 + 1e-9) << value;
  }
}

TEST(Wide, AlphasAndSamplesOfRowsGiveThePlainFormsBytes) {
  test::Dice dice(5);
  const auto picture = test::randomPicture(300, 1, 6);
  std::vector<uint16_t> top(301), bottom(301), out(300);
  for (size_t i = 0; i < top.size(); ++i) {
    top[i] = static_cast<uint16_t>(i % 50 < 9 ? 65535 : dice.below(65536));
    bottom[i] = static_cast<uint16_t>(i % 40 < 9 ? 65535 : dice.below(65536));
  }
  test::atEveryLevel([&] {
    for (int count = 0; count <= 300; count += count < 40 ? 1 : 13) {
      ZOL_SELECT(alphaToWide)(picture->record()->Pixels, out.data(), count);
      for (int i = 0; i < count; ++i)
        ASSERT_EQ(out[size_t(i)], 255 * picture->record()->Pixels[i].a);
      const int fx = dice.below(16), fy = dice.below(16);
      ZOL_SELECT(sampleRow)(top.data(), bottom.data(), SampleWeights(fx, fy), out.data(), count);
      for (size_t i = 0; i < size_t(count); ++i)
        ASSERT_EQ(out[i], ((16 - fx) * (16 - fy) * top[i] + fx * (16 - fy) * top[i + 1] +
                           (16 - fx) * fy * bottom[i] + fx * fy * bottom[i + 1] + 128) >>
                              8);
    }
  });
}

} // namespace
} // namespace zol
