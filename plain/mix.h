// Mix in its plain form: pixel by pixel, channel by channel, every sum written out.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace zol::plain {

inline int mixWeight(float ratio) {
  const float scaled = ratio * 4096;
  return scaled >= -2147483648.0F && scaled < 2147483648.0F ? static_cast<int>(scaled) : INT_MIN;
}

/// a * weightA + b * weightB + e, wrapping at 32 bits as the processor's additions do.
inline int mixSum(int a, int weightA, int b, int weightB, int e) {
  return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(weightA) +
                          static_cast<unsigned>(b) * static_cast<unsigned>(weightB) +
                          static_cast<unsigned>(e));
}

/// `result` is what PicCreate gave, of the union's size; its position is set.
inline void mixUnion(const pic *a, const pic *b, float ratio, pic *result) {
  const int x0 = std::min(a->X, b->X);
  const int y0 = std::min(a->Y, b->Y);
  const int x1 = std::max(a->X + a->Width, b->X + b->Width);
  const int y1 = std::max(a->Y + a->Height, b->Y + b->Height);
  const int width = x1 - x0;
  result->X = static_cast<int16_t>(x0);
  result->Y = static_cast<int16_t>(y0);
  for (int y = 0; y < a->Height; ++y)
    std::memcpy(result->Pixels + (a->Y - y0 + y) * width + (a->X - x0), a->Pixels + y * a->Width,
                static_cast<size_t>(a->Width) * sizeof(_color_t));
  const int weightB = mixWeight(ratio);
  const int weightA = static_cast<int>(4096U - static_cast<unsigned>(weightB));
  for (int y = y0; y < y1; ++y) {
    int e[4] = {};
    for (int x = x0; x < x1; ++x) {
      const bool inB = y >= b->Y && y < b->Y + b->Height && x >= b->X && x < b->X + b->Width;
      auto *p = reinterpret_cast<uint8_t *>(result->Pixels + (y - y0) * width + (x - x0));
      const auto *q =
          reinterpret_cast<const uint8_t *>(inB ? b->Pixels + (y - b->Y) * b->Width + (x - b->X) : nullptr);
      for (int c = 0; c < 4; ++c) {
        const int s = mixSum(p[c], weightA, inB ? q[c] : 0, weightB, e[c]);
        const int value = s >= 0xFF001 ? 255 : s < 0 ? 0 : s >> 12;
        e[c] = static_cast<int>(static_cast<unsigned>(s) - static_cast<unsigned>(value * 4096));
        p[c] = static_cast<uint8_t>(value);
      }
    }
  }
}

/// `result` is what PicCreate gave, of the intersection's size; its position is set.
inline void mixIntersect(const pic *a, const pic *b, float ratio, pic *result) {
  const int x0 = std::max(a->X, b->X);
  const int y0 = std::max(a->Y, b->Y);
  const int x1 = std::min(a->X + a->Width, b->X + b->Width);
  const int y1 = std::min(a->Y + a->Height, b->Y + b->Height);
  result->X = static_cast<int16_t>(x0);
  result->Y = static_cast<int16_t>(y0);
  const int weightB = mixWeight(ratio);
  const int weightA = static_cast<int>(4096U - static_cast<unsigned>(weightB));
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) {
      const auto *p = reinterpret_cast<const uint8_t *>(a->Pixels + (y - a->Y) * a->Width + (x - a->X));
      const auto *q = reinterpret_cast<const uint8_t *>(b->Pixels + (y - b->Y) * b->Width + (x - b->X));
      auto *out = reinterpret_cast<uint8_t *>(result->Pixels + (y - y0) * (x1 - x0) + (x - x0));
      for (int c = 0; c < 4; ++c)
        out[c] = static_cast<uint8_t>(mixSum(p[c], weightA, q[c], weightB, 0) >> 12);
    }
}

} // namespace zol::plain
