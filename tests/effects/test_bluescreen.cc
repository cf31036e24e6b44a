#include "frame/effects.h"
#include "kernels/exports/bluescreen.h"
#include "tests/support/declared.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace zol {
namespace {

using host::Session;

/// The effect over a background of 40 x 7 at (3, -2) and an input of 31 x 9.
class BluescreenRender : public testing::Test {
protected:
  BluescreenRender() {
    *session_.parameters.inputs.get(0, 0) = {&backgroundClip_};
    *session_.parameters.inputs.get(1, 0) = {&keyClip_};
    info_->Width = 25;
    info_->Height = 6;
    info_->FrameTime = 2.5;
    info_->Time = 0.3;
    info_->PixelAspect = 1.1;
    set(2, 0.3);
    set(3, 0.1);
    set(4, 0.7);
    set(5, 0.6);
    set(6, 0.9);
  }

  void set(int field, double value) { session_.parameters.numbers.get(field, 0)->set(0, {value}); }

  /// The kernel's picture over `ground` with the radii that belong to a width.
  void expectLaid(const pic *out, const pic *ground, decltype(Bluescreen) kernel, int width) {
    ASSERT_NE(out, nullptr);
    pic *want = session_.pictures.duplicate(ground);
    ASSERT_EQ(kernel(info_, want, key_->record(), 0.3F, 0.1F, 0.9F, static_cast<float>(width * 0.7) / 10,
                     static_cast<float>(static_cast<double>(0.6F) * width / 10), 1.1F),
              1);
    EXPECT_TRUE(test::samePixels(*out, *want));
    session_.pictures.free(want);
  }

  std::unique_ptr<host::PictureBuffer> background_ = test::randomPicture(40, 7, 1, 3, -2);
  std::unique_ptr<host::PictureBuffer> key_ = test::randomPicture(31, 9, 2, 1, 1);
  test::PictureClip backgroundClip_{background_->record()};
  test::PictureClip keyClip_{key_->record()};
  Session session_{"Halvenor"};
  t_ZoHostInfo *info_ = session_.info();
  test::Callbacks effect_{ProcessBluescreenDeclare};
};

TEST_F(BluescreenRender, LaysTheInputOnTheBackgroundOrOnABlankFrame) {
  expectLaid(effect_.renderVideo(info_), background_->record(), Bluescreen, 40);
  *session_.parameters.integers.get(7, 0) = 1;
  expectLaid(effect_.renderVideo(info_), background_->record(), Greenscreen, 40);
  *session_.parameters.integers.get(7, 0) = 2;
  expectLaid(effect_.renderVideo(info_), background_->record(), Bluescreen, 40);

  session_.parameters.inputs.get(0, 0)->clear();
  expectLaid(effect_.renderVideo(info_), host::PictureBuffer::make(25, 6)->record(), Bluescreen, 25);
}

TEST_F(BluescreenRender, RealTimeBuffersComeInTheHostsOrder) {
  // A library of its own, to which no host has declared itself yet.
  void *library = dlopen(ZOL_BUILD_DIR "/libzol.zoeffects.so.1", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr);
  const auto declare = reinterpret_cast<int (*)(t_ZoHostInfo *)>(dlsym(library, "ProcessBluescreenDeclare"));
  background_ = test::randomPicture(25, 6, 3);
  key_ = test::randomPicture(25, 6, 4);
  const auto out = host::PictureBuffer::make(25, 6);
  info_->OutputBuffer = out->record()->Pixels;
  const auto render = [&](const char *identity, const pic *first, const pic *second) {
    const test::Callbacks effect(declare, identity);
    info_->InputBuffers[0] = first->Pixels;
    info_->InputBuffers[1] = second->Pixels;
    return effect.renderVideoRT(info_);
  };
  info_->BitsPerPixel = 32;
  EXPECT_EQ(render("Quorbel", key_->record(), background_->record()), 1);
  expectLaid(out->record(), background_->record(), Bluescreen, 25);
  EXPECT_EQ(render("hALVENOR", background_->record(), key_->record()), 1);
  expectLaid(out->record(), background_->record(), Bluescreen, 25);
  EXPECT_EQ(render("Quorbel", background_->record(), key_->record()), 1); // once known, Halvenor stays
  expectLaid(out->record(), background_->record(), Bluescreen, 25);

  for (const int width : {-1, 32768}) {
    info_->Width = width;
    EXPECT_EQ(render("Halvenor", background_->record(), key_->record()), 0);
  }
  dlclose(library);
}

} // namespace
} // namespace zol
