// What every effect makes of real photographs and sounds, held by fixed hashes: the same on both targets and
// at every level, and what a mistake would change that a plain form shares.

#include "tests/every/golden.h"
#include "tests/every/trial.h"
#include "tests/support/levels.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace zol::test {
namespace {

constexpr int kWidth = 320, kHeight = 213;
constexpr unsigned kRate = 44100;
constexpr size_t kSamples = 2 * size_t{kRate}; // a second in stereo

/// What ffmpeg decodes a fetched file to; empty without either.
std::string decoded(const std::string &file, const std::string &words) {
  const std::string command =
      "ffmpeg -v quiet -bitexact -i '" ZOL_SOURCE_DIR "/build/media/" + file + "' " + words + " -";
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
  std::string bytes;
  char part[65536];
  while (const size_t got = pipe ? std::fread(part, 1, sizeof part, pipe.get()) : 0)
    bytes.append(part, got);
  return bytes;
}

struct Media {
  std::string pictures[2], sounds[2];

  Media() {
    const std::string scaled = "-vf scale=320:213:flags=area+accurate_rnd+bitexact,format=bgra -f rawvideo";
    pictures[0] = decoded("photo.jpg", scaled);
    pictures[1] = decoded("flower.jpg", scaled);
    sounds[0] = decoded("choir.flac", "-t 1 -f f32le -ac 2");
    sounds[1] = decoded("drone.flac", "-t 1 -f f32le -ac 2");
  }
  [[nodiscard]] bool areThere() const {
    return pictures[0].size() == kWidth * kHeight * sizeof(_color_t) &&
           pictures[1].size() == pictures[0].size() && sounds[0].size() >= kSamples * sizeof(float) &&
           sounds[1].size() >= kSamples * sizeof(float);
  }
  [[nodiscard]] std::string hash() const { return hashOf(pictures[0] + pictures[1] + sounds[0] + sounds[1]); }

  /// The photographs in turn, the green of the other one as their alpha; the sounds likewise.
  [[nodiscard]] std::unique_ptr<TrialClip> clip(size_t input) const {
    std::vector<TrialClip::Picture> turns;
    for (const size_t which : {input % 2, 1 - input % 2}) {
      turns.push_back(host::PictureBuffer::make(kWidth, kHeight));
      _color_t *pixels = turns.back()->record()->Pixels;
      std::memcpy(pixels, pictures[which].data(), pictures[which].size());
      for (size_t i = 0; i < turns.back()->pixels(); ++i)
        pixels[i].a = static_cast<uint8_t>(pictures[1 - which][4 * i + 1]);
    }
    const auto wave = [this, input](int64_t frame, unsigned channel) {
      float sample = 0;
      if (const size_t place = static_cast<size_t>(frame) * 2 + channel; place < kSamples)
        std::memcpy(&sample, sounds[input % 2].data() + place * sizeof sample, sizeof sample);
      return sample;
    };
    return std::make_unique<TrialClip>(std::move(turns), wave, kRate, uint16_t{2});
  }
};

TEST(Real, PicturesAndSoundsComeOutAsEver) {
  const Media media;
  if (!media.areThere())
    GTEST_SKIP() << "scripts/media --all fetches the photographs and sounds";
  if (!writesGolden() && readSections("hashes.txt")["inputs"] != media.hash() + '\n')
    GTEST_SKIP() << "ffmpeg decodes or scales otherwise here";
  expectSection("hashes.txt", "inputs", media.hash() + '\n');

  for (const Subject &subject : subjects())
    atEveryLevel([&] {
      SCOPED_TRACE(subject.text());
      std::string hashes;
      for (unsigned values = 0; values < 5; ++values) {
        Trial trial(subject, {.width = kWidth,
                              .height = kHeight,
                              .values = values,
                              .clip = [&](size_t input) { return media.clip(input); },
                              .rate = kRate,
                              .blockFrames = 4410});
        const Answer answer = trial.render();
        hashes += answer.given ? hashOf(answer.bytes) + '\n' : "nothing\n";
      }
      expectSection("hashes.txt", subject.text(), hashes);
    });
}

} // namespace
} // namespace zol::test
