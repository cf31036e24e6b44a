// Effects in benchmarks, 1920 x 1080.
#pragma once

#include "host/services/session.h"
#include "kernels/simd/levels.h"
#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <benchmark/benchmark.h>

namespace zol::bench {

inline constexpr int kWidth = 1920, kHeight = 1080;

inline std::unique_ptr<host::PictureBuffer> opaque(unsigned seed) {
  auto picture = test::randomPicture(kWidth, kHeight, seed);
  for (size_t i = 0; i < picture->pixels(); ++i)
    picture->record()->Pixels[i].a = 255;
  return picture;
}

/// One effect in a host that recycles its frames: their memory is not cleared.
struct Scene {
  Scene(int (*declare)(t_ZoHostInfo *), SimdLevel cap) : effect(declare) {
    capSimdLevel(cap);
    services.PicCreate = [](int width, int height) {
      static const auto picture = host::PictureBuffer::make(width, height);
      return picture->record();
    };
    services.PicFree = [](pic *) {};
    t_ZoHostInfo *info = session.info();
    info->Services = &services;
    info->Width = kWidth;
    info->Height = kHeight;
    info->PixelAspect = 1;
    effect.init(info);
  }
  void set(int field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void assign(int field, host::Clip &clip) { *session.parameters.inputs.get(field, 0) = {&clip}; }
  void run(benchmark::State &state) {
    for (auto _ : state)
      benchmark::DoNotOptimize(effect.renderVideo(session.info()));
  }

  test::Callbacks effect;
  host::Session session{"Halvenor"};
  t_ZoServices services = host::services();
};

} // namespace zol::bench
