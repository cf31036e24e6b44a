// The audio effects' sample arithmetic, literally: every rounding where it is defined to be.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zol::plain {

inline void sineTone(float *samples, uint32_t firstFrame, size_t frames, unsigned channels, double start,
                     uint32_t rate, float frequency, float volume) {
  for (size_t f = 0; f < frames; ++f) {
    const auto fi = static_cast<float>(firstFrame + static_cast<uint32_t>(f));
    const float s = fi / static_cast<float>(rate);
    const auto u = static_cast<float>(start + static_cast<double>(s));
    const float v = frequency * u;
    const double x = std::sin(6.283185307179586 * static_cast<double>(v));
    const auto y = static_cast<float>((x + 1.0) * 0.5);
    const float sample = volume * y;
    for (unsigned c = 0; c < channels; ++c)
      *samples++ = sample;
  }
}

/// All blocks of one layout; a null input is not assigned.
inline void crossfade(float *out, size_t frames, unsigned channels, const float *in1, bool fin,
                      const float *in2, bool fout, float r0, float dr) {
  for (size_t i = 0; i < frames; ++i) {
    const long double r =
        static_cast<long double>(r0) + static_cast<long double>(i) * static_cast<long double>(dr);
    for (unsigned c = 0; c < channels; ++c, ++out) {
      if (in1 != nullptr && in2 != nullptr) {
        const long double s1 = static_cast<long double>(*in1++), s2 = static_cast<long double>(*in2++);
        *out = static_cast<float>((fin ? s1 * (1.0L - r) : s1) + (fout ? s2 * r : s2));
      } else if (in1 != nullptr) {
        const long double gain = (1.0L - static_cast<long double>(r0)) +
                                 static_cast<long double>(i) * -static_cast<long double>(dr);
        const float s1 = *in1++;
        *out = fin ? static_cast<float>(static_cast<long double>(s1) * gain) : s1;
      } else {
        const float s2 = *in2++;
        *out = fout ? static_cast<float>(static_cast<long double>(s2) * r) : s2;
      }
    }
  }
}

/// One output channel: 1 and 2 take an input channel, 3 the mean of both, anything else writes nothing.
inline void routeChannel(float *out, unsigned channel, unsigned outChannels, const float *in,
                         unsigned inChannels, size_t frames, int selector) {
  for (size_t i = 0; i < frames; ++i) {
    const float *frame = in + i * inChannels;
    float &sample = out[i * outChannels + channel];
    if (selector == 1 && inChannels >= 1)
      sample = frame[0];
    else if (selector == 2 && inChannels >= 2)
      sample = frame[1];
    else if (selector == 3 && inChannels >= 2)
      sample = static_cast<float>((static_cast<double>(frame[0]) + static_cast<double>(frame[1])) * 0.5);
  }
}

} // namespace zol::plain
