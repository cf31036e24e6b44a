// The slow-motion engine in its plain form: every walk made in full, one byte at a time.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace zol::plain {

inline constexpr uint32_t kChanged = 0x01000000, kKeyBits = 0xE0E0E0E0, kTaken = 0x1F1F1F1F;
inline constexpr int kNeighbours[8][2] = {{1, 0},  {1, 1},   {0, 1},  {-1, 1},
                                          {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};

inline uint32_t blend(uint32_t a, uint32_t b, uint32_t w) {
  uint32_t out = 0;
  for (int shift = 0; shift < 32; shift += 8)
    out |= ((((a >> shift & 255) * (32768 - w) + (b >> shift & 255) * w) >> 15) & 255) << shift;
  return out;
}

class SlowMotion {
public:
  struct ObjectData {
    uint32_t minX, maxX, minY, maxY, topX, count;
  };

  virtual ~SlowMotion() = default;
  virtual void *FrameProvider(void *sequence, uint32_t frame) = 0;

  int SetSequence(void *sequence, uint32_t width_, uint32_t height_, double fps_, uint32_t,
                  uint32_t interlaced_, uint32_t fieldOrder, uint32_t format) {
    id = sequence, newFps = fps = fps_, width = width_, height = height_;
    interlaced = interlaced_ != 0, order = fieldOrder != 0, bytes = format == 1 ? 2 : 4;
    const size_t area = size_t{(width + 15) & ~15u} * ((height + 15) & ~15u) * bytes;
    out.assign(area, 0), mask.assign(area, 0), list.assign(area / 2, 0), stack.assign(area, 0);
    return 0;
  }

  void *GetFrameToTime(double time, uint32_t mode) {
    const double position = time * fps;
    const uint32_t n = position >= -0x1p63 && position < 0x1p63 ? uint32_t(int64_t(position)) : 0;
    uint32_t nA = n, nB = n + 1;
    auto *a = static_cast<uint8_t *>(FrameProvider(id, nA));
    for (int i = 1; i < 8 && !a; ++i)
      a = static_cast<uint8_t *>(FrameProvider(id, nA = nA ? nA - 1 : 0));
    auto *b = static_cast<uint8_t *>(FrameProvider(id, nB));
    for (int i = 1; i < 8 && !b; ++i)
      b = static_cast<uint8_t *>(FrameProvider(id, ++nB));
    const uint32_t words = (width * bytes + 3) / 4, stride = words * 4;
    if (!a || !b) {
      if (!a && !b)
        return nullptr;
      CopyFrame(a ? a : b, out.data(), words, height, stride);
      return out.data();
    }
    const double exact = (position - nA) * 32768.0 / (nB - nA);
    const int w = exact >= INT_MAX ? INT_MAX : exact > INT_MIN ? int(exact) : INT_MIN;
    if (w <= 0)
      return a;
    if (w > 32767)
      return b;
    const auto run = [&](uint32_t weight, uint32_t field) {
      mode == 1   ? Vector(out.data(), a, b, weight, field)
      : mode == 2 ? Object(out.data(), a, b, weight, field)
                  : Interpol(out.data(), a, b, weight, field);
    };
    if (!interlaced) {
      run(w, 0);
      return out.data();
    }
    const bool half = w >= 16384;
    const uint32_t f = half ^ order, w2 = 2 * (half ? w - 16384 : w);
    const auto copyField = [&](const uint8_t *from, bool odd) {
      CopyFrame(from + odd * stride, out.data() + odd * stride, words, height / 2, stride * 2);
    };
    copyField(half ? b : a, f == 0);
    if (w2)
      run(w2, f);
    else
      copyField(a, f != 0);
    return out.data();
  }

  void Interpol(void *dst, const void *a, const void *b, uint32_t w, uint32_t field) {
    const Field f = fieldOf(field);
    for (uint32_t y = 0; y < f.rows && !(flags & 1); ++y)
      for (uint32_t x = 0; x < f.words; ++x)
        put(f.of(dst), f.stride, x, y, blend(at(f.of(a), f.stride, x, y), at(f.of(b), f.stride, x, y), w));
  }

  void StaticSel(void *dst, const void *a, const void *b, uint32_t w, uint32_t field) {
    const Field f = fieldOf(field);
    for (uint32_t y = 0; y < f.rows; ++y)
      for (uint32_t x = 0; x < f.words; ++x) {
        const uint32_t p = at(f.of(a), f.stride, x, y), q = at(f.of(b), f.stride, x, y);
        put(f.of(dst), f.stride, x, y, (p & kKeyBits) == (q & kKeyBits) ? blend(p, q, w) : kChanged);
      }
  }

  void Vector(void *dst_, const void *a_, const void *b_, uint32_t w, uint32_t field) {
    Interpol(dst_, a_, b_, w, field);
    const Field f = fieldOf(field);
    uint8_t *dst = f.of(dst_);
    const uint8_t *a = f.of(a_), *b = f.of(b_);
    const uint32_t bw = 4 * bytes, bh = interlaced ? 8 : 16;
    if (f.words <= bw || f.rows <= bh)
      return;
    for (uint32_t y = 0; y < f.rows; y += bh)
      for (uint32_t x = 0; x < f.words; x += bw) {
        const uint32_t bx = x + bw > f.words ? f.words - bw : x, by = y + bh > f.rows ? f.rows - bh : y;
        int vec[2] = {0, 0};
        const uint32_t error = GetVector(a, b, f.words, f.rows, f.stride, bx, by, bw, bh, vec);
        const int sx = int(int64_t{vec[0]} * w / 32768), sy = int(int64_t{vec[1]} * w / 32768);
        if (error > bh * bw * 8 || (sx == 0 && sy == 0))
          continue;
        const auto at4 = [&](auto *p, uint32_t px, uint32_t py) {
          return p + size_t{py} * f.stride + px * 4;
        };
        CopyFrame2(at4(b, bx, by), at4(dst, bx, by), bw, bh, f.stride);
        CopyFrame2(at4(b, bx + vec[0], by + vec[1]), at4(dst, bx + sx, by + sy), bw, bh, f.stride);
      }
  }

  uint32_t ComputeMSE(const void *a, const void *b, uint32_t stride, uint32_t words, uint32_t rows,
                      uint32_t limit) {
    uint32_t sum = 0;
    for (uint32_t y = 0; y < rows; ++y) {
      const auto *p = static_cast<const uint8_t *>(a) + size_t{y} * stride;
      const auto *q = static_cast<const uint8_t *>(b) + size_t{y} * stride;
      for (uint32_t i = 0; i < words * 4; ++i)
        sum += squares.zero()[p[i] - q[i]];
      if (sum > limit)
        return sum * rows / (y + 1);
    }
    return sum;
  }

  uint32_t GetVector(const void *a, const void *b, uint32_t words, uint32_t rows, uint32_t stride,
                     uint32_t bx, uint32_t by, uint32_t bw, uint32_t bh, int *vec) {
    const int cx = int(bx) + vec[0], cy = int(by) + vec[1];
    int bestX = cx, bestY = cy;
    uint32_t best = 0xFFFFFFFF;
    walkRings(cx, cy, 64, [&](int x, int y) {
      if (x < 0 || y < 0 || x > int(words) - int(bw) || y > int(rows) - int(bh) || flags & 1)
        return false;
      const uint32_t e =
          ComputeMSE(static_cast<const uint8_t *>(a) + size_t{by} * stride + bx * 4,
                     static_cast<const uint8_t *>(b) + size_t(y) * stride + x * 4, stride, bw, bh, best);
      if (e < best)
        best = e, bestX = x, bestY = y;
      return best < 64;
    });
    vec[0] = bestX - int(bx), vec[1] = bestY - int(by);
    return best;
  }

  void Object(void *dst_, const void *a_, const void *b_, uint32_t w, uint32_t field) {
    StaticSel(dst_, a_, b_, w, field);
    const Field f = fieldOf(field);
    uint8_t *dst = f.of(dst_), *m = f.of(static_cast<void *>(mask.data()));
    const uint8_t *a = f.of(a_), *b = f.of(b_);
    const auto placed = [&](int v) { return int((int64_t{32768} - w) * v / 32768); };
    size_t listed = 0;
    for (uint32_t y = 0; y < f.rows; ++y)
      for (uint32_t x = 0; x < f.words; ++x) {
        if (at(dst, f.stride, x, y) != kChanged)
          continue;
        ObjectData data;
        int vec[2] = {0, 0};
        if (GetObjectData(b, dst, f.words, f.rows, f.stride, x, y, &data) > 31 &&
            FindObject(a, f.words, f.rows, f.stride, at(b, f.stride, x, y) & kKeyBits, &data, x, y, vec, m) &&
            (placed(vec[0]) || placed(vec[1])) && listed + 4 <= list.size()) {
          list[listed++] = int16_t(x), list[listed++] = int16_t(y);
          list[listed++] = int16_t(vec[0]), list[listed++] = int16_t(vec[1]);
          continue;
        }
        GetObject(m, b, f.words, f.rows, f.stride, x, y);
        InterpolateObject(dst, a, b, m, f.words, f.rows, f.stride, w, x, y);
      }
    while (listed) {
      listed -= 4;
      const uint32_t x = list[listed], y = list[listed + 1];
      int zero[2] = {0, 0}, v[2] = {list[listed + 2], list[listed + 3]}, p[2] = {placed(v[0]), placed(v[1])};
      GetObject(m, b, f.words, f.rows, f.stride, x, y);
      MoveObject(dst, a, m, f.words, f.rows, f.stride, zero, zero, y);
      MoveObject(dst, b, m, f.words, f.rows, f.stride, v, v, y);
      MoveObject(dst, b, m, f.words, f.rows, f.stride, zero, p, y);
    }
  }

  uint32_t GetObjectData(const void *pic, void *marks, uint32_t words, uint32_t rows, uint32_t stride,
                         uint32_t x, uint32_t y, ObjectData *data) {
    const uint32_t key = at(pic, stride, x, y) & kKeyBits;
    *data = {x, x, y, y, x, 1};
    put(marks, stride, x, y, key | kTaken);
    fill(words, rows, x, y, [&](uint32_t nx, uint32_t ny) {
      if (at(marks, stride, nx, ny) != kChanged || (at(pic, stride, nx, ny) & kKeyBits) != key)
        return false;
      put(marks, stride, nx, ny, key | kTaken);
      ++data->count;
      data->minX = nx < data->minX ? nx : data->minX;
      data->maxX = nx > data->maxX ? nx : data->maxX;
      data->maxY = ny > data->maxY ? ny : data->maxY;
      if (ny <= data->minY) {
        data->minY = ny;
        data->topX = nx < data->topX ? nx : data->topX;
      }
      return true;
    });
    return data->count;
  }

  uint32_t FindObject(const void *pic, uint32_t words, uint32_t rows, uint32_t stride, uint32_t key,
                      const ObjectData *ref, uint32_t x, uint32_t y, int *vec, void *marks) {
    for (uint32_t v = 0; v < rows; ++v)
      for (uint32_t u = 0; u < words; ++u)
        put(marks, stride, u, v, kChanged);
    const uint32_t lo = ref->count - ref->count / 16, hi = ref->count + ref->count / 16;
    return walkRings(int(x), int(y), int(words < rows ? words : rows), [&](int px, int py) {
      if (uint32_t(px) >= words || uint32_t(py) >= rows || (at(pic, stride, px, py) & kKeyBits) != key ||
          at(marks, stride, px, py) != kChanged)
        return false;
      ObjectData cand;
      const uint32_t c = GetObjectData(pic, marks, words, rows, stride, px, py, &cand);
      const int width_ = int(cand.maxX - cand.minX + 1), height_ = int(cand.maxY - cand.minY);
      const int dW = width_ - int(ref->maxX - ref->minX + 1), dH = height_ - int(ref->maxY - ref->minY);
      if (c < lo || c > hi || dW < -(width_ >> 3) || dW > width_ >> 3 || dH < -(height_ >> 3) ||
          dH > height_ >> 3)
        return false;
      vec[0] = int(cand.topX - x), vec[1] = int(cand.minY - y);
      return true;
    });
  }

  uint32_t GetObject(void *m, const void *pic, uint32_t words, uint32_t rows, uint32_t stride, uint32_t x,
                     uint32_t y) {
    for (uint32_t v = 0; v < rows; ++v)
      for (uint32_t u = 0; u < words; ++u)
        put(m, stride, u, v, 0);
    const uint32_t key = at(pic, stride, x, y) & kKeyBits;
    put(m, stride, x, y, key | kTaken);
    fill(words, rows, x, y, [&](uint32_t nx, uint32_t ny) {
      if (at(m, stride, nx, ny) != 0 || (at(pic, stride, nx, ny) & kKeyBits) != key)
        return false;
      put(m, stride, nx, ny, key | kTaken);
      return true;
    });
    return 0;
  }

  void InterpolateObject(void *dst, const void *a, const void *b, void *m, uint32_t words, uint32_t rows,
                         uint32_t stride, uint32_t w, uint32_t x, uint32_t y) {
    const auto mix = [&](uint32_t u, uint32_t v) {
      put(dst, stride, u, v, blend(at(a, stride, u, v), at(b, stride, u, v), w));
    };
    mix(x, y);
    fill(words, rows, x, y, [&](uint32_t nx, uint32_t ny) {
      if ((at(m, stride, nx, ny) & kKeyBits) == 0)
        return false;
      put(m, stride, nx, ny, 0);
      mix(nx, ny);
      return true;
    });
  }

  uint32_t MoveObject(void *dst, const void *src, const void *m, uint32_t words, uint32_t rows,
                      uint32_t stride, int *from, int *to, uint32_t startRow) {
    for (uint32_t y = startRow; y < rows; ++y)
      for (uint32_t x = 0; x < words; ++x) {
        const uint32_t sx = x + from[0], sy = y + from[1], tx = x + to[0], ty = y + to[1];
        if (at(m, stride, x, y) && sx < words && sy < rows && tx < words && ty < rows)
          put(dst, stride, tx, ty, at(src, stride, sx, sy));
      }
    return 0;
  }

  void CopyFrame(const void *src, void *dst, uint32_t words, uint32_t rows, uint32_t stride) {
    CopyFrame2(static_cast<const uint8_t *>(src), static_cast<uint8_t *>(dst), words, rows, stride);
  }

  uint32_t flags = 0;

private:
  struct Squares {
    uint32_t table[512];
    Squares() {
      for (int d = -256; d < 256; ++d)
        table[d + 256] = uint32_t(d * d);
    }
    const uint32_t *zero() const { return table + 256; }
  };

  struct Field {
    uint32_t words, rows, stride;
    size_t offset;
    const uint8_t *of(const void *p) const { return static_cast<const uint8_t *>(p) + offset; }
    uint8_t *of(void *p) const { return static_cast<uint8_t *>(p) + offset; }
  };

  Field fieldOf(uint32_t field) const {
    const uint32_t words = (width * bytes + 3) / 4;
    return interlaced ? Field{words, height / 2, words * 8, field ? words * 4 : 0}
                      : Field{words, height, words * 4, 0};
  }

  static uint32_t at(const void *p, uint32_t stride, uint32_t x, uint32_t y) {
    uint32_t word;
    std::memcpy(&word, static_cast<const uint8_t *>(p) + size_t{y} * stride + size_t{x} * 4, 4);
    return word;
  }
  static void put(void *p, uint32_t stride, uint32_t x, uint32_t y, uint32_t word) {
    std::memcpy(static_cast<uint8_t *>(p) + size_t{y} * stride + size_t{x} * 4, &word, 4);
  }
  static void CopyFrame2(const uint8_t *src, uint8_t *dst, uint32_t words, uint32_t rows, uint32_t stride) {
    for (uint32_t y = 0; y < rows; ++y)
      std::memcpy(dst + size_t{y} * stride, src + size_t{y} * stride, size_t{words} * 4);
  }

  template <class Visit> static bool walkRings(int cx, int cy, int last, Visit visit) {
    for (int r = 0; r <= last; ++r) {
      for (int x = cx - r; x <= cx + r; ++x)
        if (visit(x, cy - r))
          return true;
      for (int y = cy - r + 1; y <= cy + r; ++y)
        if (visit(cx + r, y))
          return true;
      for (int x = cx + r - 1; x >= cx - r; --x)
        if (visit(x, cy + r))
          return true;
      for (int y = cy + r - 1; y >= cy - r; --y)
        if (visit(cx - r, y))
          return true;
    }
    return false;
  }

  template <class Take> void fill(uint32_t words, uint32_t rows, uint32_t x, uint32_t y, Take take) {
    size_t top = 0;
    stack[top++] = int16_t(x), stack[top++] = int16_t(y);
    while (top) {
      const int cy = stack[--top], cx = stack[--top];
      for (const auto &step : kNeighbours) {
        const uint32_t nx = uint32_t(cx + step[0]), ny = uint32_t(cy + step[1]);
        if (nx < words && ny < rows && take(nx, ny))
          stack[top++] = int16_t(nx), stack[top++] = int16_t(ny);
      }
    }
  }

  void *id = nullptr;
  double newFps = 25, fps = 25;
  bool interlaced = false, order = false;
  uint32_t width = 0, height = 0, bytes = 4;
  std::vector<uint8_t> out, mask;
  std::vector<int16_t> list, stack;
  Squares squares;
};

} // namespace zol::plain
