#include "frame/effects.h"
#include "kernels/color/luma.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <vector>

namespace zol {
namespace {

enum Field { kInput, kHue, kSaturation, kLightness, kColor, kTint, kFrom, kRange, kSoftness, kKeep };

struct Setting {
  int field;
  double value;
};

/// What becomes of a colour, 0xAARRGGBB.
uint32_t recolored(uint32_t color, const std::vector<Setting> &settings) {
  static const test::Callbacks effect(ProcessRecolorDeclare);
  host::Session session("Halvenor");
  const auto picture = test::randomPicture(1, 1, 1);
  picture->record()->Pixels[0] = std::bit_cast<_color_t>(color);
  test::PictureClip clip(picture->record());
  session.defaultClip = &clip;
  EXPECT_EQ(effect.init(session.info()), 1);
  for (const auto &[field, value] : settings)
    if (field == kKeep)
      *session.parameters.integers.get(field, 0) = static_cast<int>(value);
    else if (field == kColor || field == kFrom)
      session.parameters.colors.get(field, 0)->set(
          0.5, host::colorValue(std::bit_cast<_color_t>(static_cast<uint32_t>(value))));
    else
      session.parameters.numbers.get(field, 0)->set(0.5, {value});
  const auto out = session.pictures.take(effect.renderVideo(session.info()));
  return out != nullptr ? std::bit_cast<uint32_t>(out->record()->Pixels[0]) : 0;
}

TEST(RecolorRender, DoesWhatItsFieldsSay) {
  const double kGreen = 0xFF00FF00, kOrange = 0xFFC08040;
  const Rgb tint = withLuma({0xC0, 0x80, 0x40}, 0x60);
  const struct {
    uint32_t before, after;
    std::vector<Setting> settings;
  } cases[] = {
      {0x40FF0000, 0x40FF0000, {}},
      {0x40FF0000, 0x4000FF00, {{kHue, 120}}},
      {0x40FF0000, 0x400000FF, {{kHue, -120}}},
      {0x40FF0000, 0x40FFFF00, {{kHue, 36000000060}}},
      {0x40FF0000, 0x40FF0000, {{kHue, NAN}}},
      {0x40FF0000, 0x40FF0000, {{kHue, HUGE_VAL}}},
      {0xFFFF0000, 0xFF004A00, {{kHue, 120}, {kKeep, 1}}},  // the luma of red is 53
      {0xFFC86432, 0xFF757575, {{kSaturation, -1}}},        // its luma
      {0xFFC86432, 0xFF757575, {{kSaturation, -HUGE_VAL}}}, // the limit
      {0xFF78756E, 0xFF817559, {{kSaturation, 1}}},         // four times as far from it
      {0xFFFA6400, 0xFFFA6400, {{kSaturation, 1}}},         // blue has nowhere to go
      {0xFF64C800, 0xFFB1E37F, {{kLightness, 0.5}}},
      {0xFF64C800, 0xFF326400, {{kLightness, -0.5}}},
      {0xFF64C800, 0xFFFFFFFF, {{kLightness, 7}}},
      {0xFF606060, 0xFF905D2F, {{kTint, 1}}}, // hue and saturation of the color
      {0xFF606060, 0xFF785E47, {{kTint, 0.5}}},
      {0xFF606060, 0xFF408040, {{kTint, 1}, {kColor, 0xFF80C080}}},
      {0xFF606060,
       0xFF000000U | uint32_t(tint.red << 16 | tint.green << 8 | tint.blue),
       {{kTint, 1}, {kColor, kOrange}, {kKeep, 1}}},
      {0xFFFF0000, 0xFF00FF00, {{kHue, 120}, {kRange, 0}, {kSoftness, 0}}},
      {0xFF00FF00, 0xFF00FF00, {{kHue, 120}, {kRange, 0}, {kSoftness, 0}}},
      {0xFF00FF00, 0xFF0000FF, {{kHue, 120}, {kRange, 0}, {kSoftness, 0}, {kFrom, kGreen}}},
      {0xFFFFFF00, 0xFF00FFFF, {{kHue, 120}, {kRange, 0.5}, {kSoftness, 0}}}, // 42 steps of 127
      {0xFF606060, 0xFF606060, {{kLightness, 1}, {kRange, 0}}},               // grey has no hue
  };
  for (const auto &c : cases)
    EXPECT_EQ(recolored(c.before, c.settings), c.after)
        << std::hex << c.before << ", not " << c.after << ", field "
        << (c.settings.empty() ? 0 : c.settings[0].field);
}

} // namespace
} // namespace zol
