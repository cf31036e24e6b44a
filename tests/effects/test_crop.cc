#include "frame/effects.h"
#include "frame/picture.h"
#include "kernels/compositing/crop_mask.h"
#include "kernels/exports/shape.h"
#include "plain/blur.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "plain/soften.h"
#include "plain/warp.h"
#include "tests/support/declared.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/outline.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using host::PictureBuffer;
using Picture = std::unique_ptr<PictureBuffer>;

enum Field {
  kInput,
  kLeft,
  kRight,
  kTop,
  kBottom,
  kInset,
  kSoftness,
  kRoundness,
  kGeometry,
  kInvert,
  kOutside,
  kColor,
  kBlurriness,
  kBackground,
};

constexpr int kWidth = 60, kHeight = 30;
constexpr double kAspect = 1.25;

Picture blank(const Area &area) {
  auto picture = PictureBuffer::make(area.width(), area.height());
  placeAt(*picture->record(), area);
  return picture;
}

struct Values {
  explicit Values(test::Dice &dice)
      : look{cut(dice), cut(dice), cut(dice), cut(dice), cut(dice), cut(dice), 0, kAspect},
        softness(cut(dice)), inverts(dice.below(4) == 0), outside(dice.below(3)) {
    look.softness = softness * kWidth / 10;
  }

  template <class Set, class Choose> void give(Set set, Choose choose) const {
    for (const auto &[field, value] : {std::pair{kLeft, look.left},
                                       {kRight, look.right},
                                       {kTop, look.top},
                                       {kBottom, look.bottom},
                                       {kInset, look.inset},
                                       {kRoundness, look.roundness},
                                       {kSoftness, softness},
                                       {kBlurriness, 0.5}})
      set(field, value);
    choose(kInvert, inverts ? 1 : 0);
    choose(kOutside, outside);
  }

  /// The part of the picture that is kept, enlarged, on black and blurred.
  static Picture enlarged(const pic &picture, const CropMask &mask) {
    const CropSpan &across = mask.columns(), &down = mask.rows();
    const Area part = mask.touchedFrom(0, 0);
    const auto source = blank(part);
    auto out = blank(Area::of(picture));
    bool opaque = true;
    for (int y = part.top; y < part.bottom; ++y)
      for (int x = part.left; x < part.right; ++x) {
        const _color_t p = picture.Pixels[y * picture.Width + x];
        *pixelAt(*source->record(), x, y) = p;
        opaque &= p.a == 255;
      }
    const double scale = std::max(picture.Width / across.length(), picture.Height / down.length());
    plain::Warp warp{source->record()->Pixels,
                     part.width(),
                     part.height(),
                     opaque,
                     plain::Warp::extend,
                     plain::Warp::smooth,
                     {1 / scale, 0, across.middle() - part.left - picture.Width / 2.0 / scale},
                     {0, 1 / scale, down.middle() - part.top - picture.Height / 2.0 / scale},
                     {0, 0, 1},
                     false};
    std::vector<_color_t> sharp;
    for (int y = 0; y < picture.Height; ++y)
      for (int x = 0; x < picture.Width; ++x)
        sharp.push_back(plain::layPixel({0, 0, 0, 255}, mask.keepsNothing() ? _color_t{} : warp.at(x, y), 0,
                                        4096, false));
    plain::blurImage(sharp.data(), picture.Width, picture.Height, 0.5 * kWidth / 7.2, out->record()->Pixels);
    return out;
  }

  [[nodiscard]] Picture laid(const pic &picture, const pic *background, const pic *shape,
                             const Area &canvas) const {
    auto out = blank(canvas);
    CropMask mask(picture.Width, picture.Height, look);
    const Area area = Area::of(picture);
    std::vector<uint16_t> matte;
    if (shape != nullptr) {
      for (int i = 0; i < picture.Width * picture.Height; ++i)
        matte.push_back(static_cast<uint16_t>(255 * shape->Pixels[i].a));
      plain::soften(matte.data(), picture.Width, picture.Height, look.softness / 2,
                    look.softness / 2 * kAspect);
    }
    const Picture beneath = outside == 2 && !area.isEmpty() ? enlarged(picture, mask) : nullptr;
    for (int y = canvas.top; y < canvas.bottom; ++y)
      for (int x = canvas.left; x < canvas.right; ++x) {
        _color_t &pixel = *pixelAt(*out->record(), x, y);
        pixel = background != nullptr ? plain::pixelOf(*background, x, y) : _color_t{};
        if (!area.hasColumn(x) || !area.hasRow(y))
          continue;
        int cover = mask.row(y - area.top)[x - area.left];
        if (shape != nullptr)
          cover = (cover * ((matte[size_t(area.index(x, y))] + 127) / 255) + 127) / 255;
        if (inverts)
          cover = 256 - cover;
        _color_t kept = *pixelAt(picture, x, y);
        kept.a = static_cast<uint8_t>((kept.a * cover + 128) >> 8);
        if (outside != 0)
          pixel = outside == 1 ? _color_t{30, 60, 90, 255} : *pixelAt(*beneath->record(), x, y);
        pixel = plain::layPixel(pixel, kept, 0, 4096, false);
      }
    return out;
  }

  CropLook look;
  double softness;
  bool inverts;
  int outside;

private:
  static double cut(test::Dice &dice) { return dice.below(3) == 0 ? 0.45 * dice.share() : 0; }
};

TEST(Crop, ShowsWhatIsKeptAndSomethingElseOutside) {
  test::Dice dice(1);
  const test::OutlineShape shape(test::ellipse(30, 14, 20, 9, 0.2));
  int sizes[2] = {};
  for (int round = 0; round < 300; ++round) {
    const auto ground = dice.picture(60, 30), input = dice.picture(60, 30);
    const pic &picture = *input->record();
    for (int i = 0; round % 4 == 0 && i < picture.Width * picture.Height; ++i)
      picture.Pixels[i].a = 255;
    test::PictureClip grounds(ground->record()), inputs(input->record());
    test::Filter filter(ProcessCropDeclare, kWidth, kHeight);
    filter.session.info()->PixelAspect = kAspect;
    filter.assign(kInput, &inputs);
    const bool stands = round % 2 == 0, isShaped = round % 5 == 0;
    filter.assign(kBackground, stands ? nullptr : &grounds);
    const Values values(dice);
    values.give([&](Field field, double value) { filter.set(field, value); },
                [&](Field field, int value) { filter.choose(field, value); });
    filter.setColor(kColor, {30, 60, 90, 1});
    Picture mask;
    if (isShaped) {
      *filter.session.parameters.geometries.get(kGeometry, 0) = &shape;
      mask = blank(Area::of(picture));
      char error[256];
      ASSERT_EQ(FillShape(filter.session.info(), error, mask->record(),
                          const_cast<test::OutlineShape *>(&shape), 0, ~0U),
                1);
    }
    const auto out = filter.render();
    ASSERT_NE(out, nullptr) << round;
    const CropMask kept(picture.Width, picture.Height, values.look);
    if (stands && (Area::of(picture).isEmpty() || (kept.keepsAll() && !isShaped && !values.inverts))) {
      EXPECT_TRUE(test::samePixels(*out->record(), picture)) << round;
      continue;
    }
    const Area canvas = !stands              ? Area::of(*ground->record())
                        : values.outside > 0 ? Area::ofSize(kWidth, kHeight)
                        : values.inverts     ? Area::of(picture)
                                             : kept.touchedFrom(picture.X, picture.Y);
    ++sizes[canvas == Area::of(picture) ? 0 : 1];
    auto want =
        values.laid(picture, stands ? nullptr : ground->record(), mask ? mask->record() : nullptr, canvas);
    EXPECT_TRUE(test::samePixels(*out->record(), *want->record())) << "round " << round;
  }
  EXPECT_TRUE(sizes[0] > 5 && sizes[1] > 100);
}

TEST(Crop, RendersFromBufferToBuffer) {
  test::Dice dice(2);
  test::Callbacks effect(ProcessCropDeclare, "Quorbel");
  for (int round = 0; round < 60; ++round) {
    host::Session session("Quorbel");
    t_ZoHostInfo *info = session.info();
    info->Width = kWidth;
    info->Height = kHeight;
    info->PixelAspect = kAspect;
    info->BitsPerPixel = 32;
    EXPECT_EQ(effect.init(info), 1);
    const auto input = test::randomPicture(kWidth, kHeight, dice.word()),
               out = blank({0, 0, kWidth, kHeight});
    info->InputBuffers[0] = input->record()->Pixels;
    info->OutputBuffer = out->record()->Pixels;
    const Values values(dice);
    values.give(
        [&](Field field, double value) {
          session.parameters.numbers.get(field, 0)->clear();
          session.parameters.numbers.get(field, 0)->set(0.5, {value});
        },
        [&](Field field, int value) { *session.parameters.integers.get(field, 0) = value; });
    session.parameters.colors.get(kColor, 0)->set(0.5, host::colorValue({30, 60, 90, 1}));
    EXPECT_EQ(effect.renderVideoRT(info), 1);
    const bool isCopy = CropMask(kWidth, kHeight, values.look).keepsAll() && !values.inverts;
    EXPECT_TRUE(test::samePixels(
        *out->record(),
        isCopy ? *input->record()
               : *values.laid(*input->record(), nullptr, nullptr, Area::ofSize(kWidth, kHeight))->record()))
        << round;
  }
}

TEST(Crop, GlidesInEvenSteps) {
  const auto input = PictureBuffer::make(96, 54);
  std::fill_n(input->record()->Pixels, 96 * 54, _color_t{20, 160, 220, 255});
  test::PictureClip inputs(input->record());
  for (const Field field : {kLeft, kInset, kSoftness, kRoundness}) {
    SCOPED_TRACE(field);
    test::Filter filter(ProcessCropDeclare, 96, 54);
    filter.assign(kInput, &inputs);
    filter.choose(kOutside, 1);
    filter.set(kTop, 0.2);
    filter.set(kSoftness, 0.3);
    filter.set(kRoundness, 0.3);
    test::expectEvenSteps(100, [&](int step) {
      filter.set(field, 0.2 + step / 250.0);
      return filter.render();
    });
  }
}

} // namespace
} // namespace zol
