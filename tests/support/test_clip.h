// Inputs for tests: a fixed picture, a fixed block of sound, or nothing at all.
#pragma once

#include "host/model/parameters.h"
#include "host/services/pools.h"

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace zol::test {

/// A picture of random pixels.
inline std::unique_ptr<host::PictureBuffer>
randomPicture(int width, int height, std::mt19937::result_type seed, int x = 0, int y = 0) {
  auto picture = host::PictureBuffer::make(width, height);
  std::mt19937 random(seed);
  for (size_t i = 0; i < picture->pixels(); ++i) {
    const auto word = static_cast<uint32_t>(random());
    picture->record()->Pixels[i] = {uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16),
                                    uint8_t(word >> 24)};
  }
  picture->record()->X = static_cast<int16_t>(x);
  picture->record()->Y = static_cast<int16_t>(y);
  return picture;
}

/// Delivers one picture at every time and remembers the times; null where it has none.
class PictureClip : public host::Clip {
public:
  explicit PictureClip(pic *picture) : picture_(picture) {}
  pic *frame(double time, int, int) override {
    times.push_back(time);
    return picture_;
  }
  t_ZoAudio *audio(double, double) override { return nullptr; }

  std::vector<double> times;

private:
  pic *picture_;
};

/// Delivers one block of sound for every stretch and remembers where they began; null where it has none.
class SoundClip : public host::Clip {
public:
  explicit SoundClip(t_ZoAudio *block) : block_(block) {}
  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double from, double) override {
    times.push_back(from);
    return block_;
  }

  std::vector<double> times;

private:
  t_ZoAudio *block_;
};

} // namespace zol::test
