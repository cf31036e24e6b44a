// Commands of every kind over inputs that are the same everywhere: what they render is held by hashes in
// pictures.txt and sounds.txt, a line each; ZOL_WRITE_GOLDEN in the environment writes them anew. Equal
// hashes say what is equal.

#include "tests/apps/zol.h"
#include "tests/support/golden.h"

#include <cmath>

namespace zol::test {
namespace {

constexpr int kWidth = 96, kHeight = 54;

/// Straight from arithmetic, so that no decoder's version matters.
uint32_t scrambled(uint32_t word) {
  word = (word ^ word >> 15) * 2246822519U;
  return word ^ word >> 13;
}

/// Blue, green, red, alpha of a point of a scene that pans: soft shapes with fine grain.
uint32_t scene(int x, int y, int frame, unsigned seed) {
  const int u = x + 3 * frame, v = y + frame;
  const unsigned grain = scrambled(unsigned(u) * 2654435761U + unsigned(v) * 40503U + seed);
  const auto soft = [](int at, int period) {
    return unsigned(std::abs(at % (2 * period) - period) * 255 / period);
  };
  const unsigned blue = soft(u + int(seed), 31), green = soft(v + u / 2, 23), red = soft(u - v + 500, 47);
  const unsigned alpha = seed % 2 != 0 ? 255 : soft(u + 2 * v, 61);
  return ((alpha << 24 | red << 16 | green << 8 | blue) & 0xFFF0F0F0U) | (grain & 0x000F0F0FU);
}

class Renders : public InFolder {
protected:
  template <class Point> void picture(const std::string &file, int frames, Point point) {
    std::string raw;
    for (int t = 0; t < frames; ++t)
      for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
          const uint32_t word = point(x, y, t);
          raw.append(reinterpret_cast<const char *>(&word), sizeof word);
        }
    save("raw", raw);
    make(file, "-f rawvideo -pix_fmt bgra -s 96x54 -r 25 -i raw" +
                   std::string(file.ends_with("mkv") ? " -c:v ffv1" : ""));
  }

  /// A third of a second of saw teeth and hiss; the third voice is shorter.
  void sound(const std::string &file, int voice, unsigned channels) {
    std::string raw;
    for (unsigned i = 0; i < (voice == 3 ? 9000U : 16000U); ++i)
      for (unsigned c = 0; c < channels; ++c) {
        const unsigned tooth = i * unsigned(300 * voice + 40 * int(c)) % 48000;
        const float sample =
            float(tooth) / 48000 - 0.5F + float(scrambled(i * 31 + c + unsigned(voice)) % 4096) / 16384;
        raw.append(reinterpret_cast<const char *>(&sample), sizeof sample);
      }
    save("raw", raw);
    make(file, "-f f32le -ar 48000 -ac " + std::to_string(channels) + " -i raw -c:a pcm_f32le");
  }

  /// Runs every line of the table.
  void comeOutAsEver(const std::string &name) {
    const std::string file = ZOL_SOURCE_DIR "/tests/apps/" + name;
    std::istringstream table(contents(file));
    std::string line, written;
    while (std::getline(table, line)) {
      if (const size_t blank = line.find(' '); !line.empty() && line[0] != '#') {
        const std::string words = line.substr(blank + 1), threads = std::to_string(1 + written.size() % 4);
        const std::string result = rendered(words + " --threads " + threads), hash = hashOf(result);
        EXPECT_FALSE(result.empty()) << words;
        EXPECT_TRUE(writesGolden() || hash == line.substr(0, blank)) << words;
        line = hash + ' ' + words;
      }
      written += line + '\n';
    }
    ASSERT_FALSE(written.empty());
    if (writesGolden())
      std::ofstream(file) << written;
  }

private:
  void save(const std::string &file, const std::string &bytes) {
    std::ofstream(path(file), std::ios::binary) << bytes;
  }
};

TEST_F(Renders, PicturesComeOutAsEver) {
  picture("a.mkv", 12, [](int x, int y, int t) { return scene(x, y, t, 1); });
  picture("b.mkv", 12, [](int x, int y, int t) { return scene(x, y, t, 8); });
  picture("tape.mkv", 6, [](int x, int y, int t) { return scene(x, y, 2 * t + y % 2, 3); });
  picture("back.png", 1, [](int x, int y, int) { return scene(x, y, 0, 4); });
  for (const bool green : {false, true})
    picture(green ? "green.png" : "actor.png", 1, [=](int x, int y, int) {
      const bool inside = (x - 48) * (x - 48) + (y - 27) * (y - 27) < 400;
      return inside ? scene(x, y, 0, 5) : green ? 0xFF00FF00U : 0xFF0000FFU;
    });
  comeOutAsEver("pictures.txt");
}

TEST_F(Renders, SoundsComeOutAsEver) {
  sound("x.wav", 1, 1);
  sound("y.wav", 2, 2);
  sound("z.wav", 3, 2);
  comeOutAsEver("sounds.txt");
}

} // namespace
} // namespace zol::test
