// Moving pictures for tests and benchmarks of motion: frames of 32-bit words, the same for the same seed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace zol::test {

using Frame = std::vector<uint32_t>;

struct FramePair {
  Frame a, b;
};

class Scenes {
public:
  Scenes(unsigned words, unsigned rows, unsigned seed) : words_(words), rows_(rows), random_(seed) {}

  /// Each byte alone between two values.
  FramePair noise(int from, int to) {
    FramePair pair{blank(), blank()};
    for (Frame *frame : {&pair.a, &pair.b})
      for (uint32_t &word : *frame)
        for (int byte = 0; byte < 4; ++byte)
          word |= uint32_t(between(from, to)) << 8 * byte;
    return pair;
  }

  /// Opaque soft and fine detail, moved by (dx, dy), each colour off by at most `grain` in either frame.
  FramePair texture(int dx, int dy, int grain) {
    const unsigned side = 256;
    std::vector<int> coarse(side * side), fine(side * side * 3);
    for (int &v : coarse)
      v = between(40, 200);
    for (int &v : fine)
      v = between(-20, 20);
    const auto colour = [&](int x, int y, int c) {
      const unsigned u = unsigned(x + 4096), v = unsigned(y + 4096), cell = 12;
      const int fx = int(u % cell), fy = int(v % cell), n = int(cell);
      const auto corner = [&](unsigned i, unsigned j) {
        return coarse[((v / cell + j + unsigned(c) * 7) % side) * side + (u / cell + i) % side];
      };
      const int top = corner(0, 0) * (n - fx) + corner(1, 0) * fx,
                low = corner(0, 1) * (n - fx) + corner(1, 1) * fx;
      return (top * (n - fy) + low * fy) / (n * n) + fine[(v % side * side + u % side) * 3 + unsigned(c)];
    };
    FramePair pair{blank(), blank()};
    for (int k = 0; k < 2; ++k)
      for (unsigned y = 0; y < rows_; ++y)
        for (unsigned x = 0; x < words_; ++x) {
          uint32_t word = 0xFF000000;
          for (int c = 0; c < 3; ++c) {
            const int value =
                colour(int(x) - k * dx, int(y) - k * dy, c) + (grain ? between(-grain, grain) : 0);
            word |= uint32_t(std::clamp(value, 0, 255)) << 8 * c;
          }
          (k ? pair.b : pair.a)[y * words_ + x] = word;
        }
    return pair;
  }

  /// Flat discs, each moving its own way over a flat ground; `palette` of them, repeated.
  FramePair discs(int count, const std::vector<uint32_t> &palette) {
    FramePair pair{blank(), blank()};
    std::fill(pair.a.begin(), pair.a.end(), palette[0]);
    pair.b = pair.a;
    const int size = int(std::min(words_, rows_));
    for (int i = 1; i <= count; ++i) {
      const int r = between(1, std::max(2, size / 6)), x = between(0, int(words_)),
                y = between(0, int(rows_));
      disc(pair.a, x, y, r, palette[unsigned(i) % palette.size()]);
      disc(pair.b, x + between(-size / 8, size / 8), y + between(-size / 8, size / 8), r,
           palette[unsigned(i) % palette.size()]);
    }
    return pair;
  }

  int between(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }

private:
  Frame blank() const { return Frame(size_t{words_} * rows_, 0); }

  void disc(Frame &frame, int cx, int cy, int r, uint32_t word) {
    for (int y = std::max(cy - r, 0); y <= std::min(cy + r, int(rows_) - 1); ++y)
      for (int x = std::max(cx - r, 0); x <= std::min(cx + r, int(words_) - 1); ++x)
        if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= r * r)
          frame[size_t(y) * words_ + unsigned(x)] = word;
  }

  unsigned words_, rows_;
  std::mt19937 random_;
};

} // namespace zol::test
