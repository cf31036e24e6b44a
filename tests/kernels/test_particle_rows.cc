#include "kernels/particles/particle_rows.h"

#include "plain/particles.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace zol {
namespace {

using plain::LayerPixel;
using Row = std::vector<WidePixel>;

WidePixel packed(const LayerPixel &p) {
  return {uint16_t(p[0]), uint16_t(p[1]), uint16_t(p[2]), uint16_t(p[3])};
}
LayerPixel unpacked(const WidePixel &p) { return {p.b, p.g, p.r, p.a}; }
bool same(const WidePixel &a, const WidePixel &b) { return unpacked(a) == unpacked(b); }

/// None, all or some of a whole; colours up to the alpha.
WidePixel premultiplied(test::Dice &dice, int whole) {
  const int alphas[] = {0, whole, dice.below(whole + 1), dice.below(whole + 1)};
  const int a = alphas[dice.below(4)];
  const auto color = [&] { return dice.below(4) == 0 ? a : dice.below(a + 1); };
  return packed({color(), color(), color(), a});
}
Row rowOf(test::Dice &dice, int count, int whole) {
  Row row;
  for (int i = 0; i < count; ++i)
    row.push_back(premultiplied(dice, whole));
  return row;
}

TEST(ParticleRows, LayParticlesAsThePlainFormDoes) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 300; ++round) {
      const int width = dice.between(1, 60), height = dice.between(1, 4), stride = width + kLayerPadding;
      const Row before = rowOf(dice, stride * height, kLayerOne);
      const Ink ink{premultiplied(dice, kInkOne), dice.below(2) != 0};
      const auto expectLaid = [&](const Row &after, auto valueAt) {
        for (int i = 0; i < stride * height; ++i) {
          const LayerPixel value = i % stride < width ? valueAt(i % stride, i / stride) : LayerPixel{};
          const LayerPixel want =
              plain::layParticle(unpacked(before[i]), value, unpacked(ink.factors), ink.adds);
          ASSERT_EQ(unpacked(after[i]), want) << i << " of " << width << " by " << height;
        }
      };

      const auto place = [&] { return static_cast<float>(600 * dice.share() - 300); };
      Row layer = before;
      const Dot dot{layer.data(), stride, width, height, place(), place(), place() / 20.0F, place() / 20.0F};
      std::vector<uint16_t> squares(4 * size_t(stride));
      ZOL_SELECT(layDot)(dot, ink, squares.data());
      expectLaid(layer, [&](int x, int y) {
        const int v = plain::dotValue(dot.x + float(x) * dot.stepX, dot.y + float(y) * dot.stepY);
        return LayerPixel{v, v, v, v};
      });

      layer = before;
      std::vector<uint8_t> mask(size_t(stride) * height);
      Row values(mask.size());
      for (int i = 0; i < stride * height; ++i)
        if (i % stride < width) {
          mask[i] = uint8_t(dice.below(3) == 0 ? 255 : dice.word());
          values[i] = premultiplied(dice, kWideOne);
        }
      for (int y = 0; y < height; ++y)
        ZOL_SELECT(layMask)(layer.data() + y * stride, mask.data() + y * stride, width, ink);
      expectLaid(layer, [&](int x, int y) {
        const int v = 255 * mask[y * stride + x];
        return LayerPixel{v, v, v, v};
      });

      layer = before;
      Row turned = values;
      for (WidePixel &v : turned)
        v = packed({v.b ^ 0x8000, v.g ^ 0x8000, v.r ^ 0x8000, v.a ^ 0x8000});
      for (int y = 0; y < height; ++y)
        ZOL_SELECT(layValues)(layer.data() + y * stride, turned.data() + y * stride, width, ink);
      expectLaid(layer, [&](int x, int y) { return unpacked(values[y * stride + x]); });
    }
  });
}

TEST(ParticleRows, LayerGoesOverPixelsOfAnyAlphaOnceAndIsCleared) {
  test::atEveryLevel([] {
    test::Dice dice(2);
    for (int round = 0; round < 2000; ++round) {
      const int count = dice.between(1, 40);
      Row layer = dice.below(5) == 0 ? Row(count) : rowOf(dice, count, kLayerOne);
      layer.resize(count + kLayerPadding);
      const Row before = layer;
      std::vector<_color_t> pixels;
      for (int i = 0; i < count; ++i) {
        const uint32_t word = dice.word();
        const uint8_t alphas[] = {255, 0, uint8_t(word >> 24)};
        pixels.push_back({uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), alphas[round % 3]});
      }
      const std::vector<_color_t> below = pixels;
      ZOL_SELECT(layOver)(pixels.data(), layer.data(), count);
      for (int i = 0; i < count; ++i) {
        const _color_t want = plain::layOver(below[i], unpacked(before[i]));
        ASSERT_EQ(std::memcmp(&pixels[i], &want, sizeof want), 0) << i << " of " << count;
        ASSERT_TRUE(same(layer[i], {}));
      }
    }
  });
}

TEST(ParticleRows, HalvesAreMeansOfFour) {
  test::atEveryLevel([] {
    test::Dice dice(3);
    for (int count = 0; count < 40; ++count) {
      const Row upper = rowOf(dice, 2 * count, kWideOne), lower = rowOf(dice, 2 * count, kWideOne);
      Row half(count);
      ZOL_SELECT(halveValues)(upper.data(), lower.data(), half.data(), count);
      for (int i = 0; i < count; ++i)
        for (size_t c = 0; c < 4; ++c) {
          const auto mean = [&](int at) { return (unpacked(upper[at])[c] + unpacked(lower[at])[c] + 1) / 2; };
          ASSERT_EQ(unpacked(half[i])[c], (mean(2 * i) + mean(2 * i + 1)) / 2) << i << " of " << count;
        }
    }
  });
}

} // namespace
} // namespace zol
