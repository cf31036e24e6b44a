// A clip whose frames and samples are told by their numbers.
#pragma once

#include "tests/support/test_clip.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <tuple>

namespace zol::test {

/// Frames at any size, different ones for each number and size, and mono sound at 1000 samples a second.
class NumberedClip : public host::Clip {
public:
  explicit NumberedClip(const t_ZoMediaInfo &info) : told(info), rate_(info.Rate) {}

  pic *frame(double time, int width, int height) override {
    times.push_back(time);
    const int number = int(std::floor(time * rate_ + 1e-6));
    return number == oddFrame ? at(number, width + 1, height) : at(number, width, height);
  }
  t_ZoAudio *audio(double from, double to) override {
    constexpr double kRate = 1000;
    if (soundless)
      return nullptr;
    const double first = std::floor(from * kRate + 0.5), last = std::floor((to - from) * kRate + 0.5) + first;
    blocks_.push_back(host::AudioBuffer::make(last - first, unsigned(kRate), 1));
    t_ZoAudio *block = blocks_.back()->record();
    for (uint32_t i = 0; i < block->Frames; ++i)
      block->Samples[i] = sample(int(first) + int(i));
    return block;
  }
  bool describe(t_ZoMediaInfo &info) const override {
    info = told.value_or(t_ZoMediaInfo{});
    return told.has_value();
  }

  pic *at(int number, int width, int height) {
    auto &picture = pictures_[{number, width, height}];
    if (picture == nullptr)
      picture = randomPicture(width, height, unsigned(number) + 1);
    return picture->record();
  }
  /// Silent outside of two seconds.
  static float sample(int number) {
    return number >= 0 && number < 2000 ? float(std::sin(number * 0.3) * 0.5 + number * 1e-4) : 0.0F;
  }
  /// The host's part of "ZoMediaInfo( clip, info );".
  static long long answer(const char *statement) {
    uintptr_t clip = 0, info = 0;
    return std::sscanf(statement, "ZoMediaInfo( 0x%" SCNxPTR ", 0x%" SCNxPTR " );", &clip, &info) == 2 &&
           reinterpret_cast<const Clip *>(clip)->describe(*reinterpret_cast<t_ZoMediaInfo *>(info));
  }

  std::optional<t_ZoMediaInfo> told; ///< what the host knows of it
  std::vector<double> times;         ///< that were asked for
  int oddFrame = -1;                 ///< comes at another size than was asked for
  bool soundless = false;

private:
  double rate_;
  std::map<std::tuple<int, int, int>, std::unique_ptr<host::PictureBuffer>> pictures_;
  std::vector<std::unique_ptr<host::AudioBuffer>> blocks_;
};

} // namespace zol::test
