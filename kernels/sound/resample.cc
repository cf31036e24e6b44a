#include "kernels/sound/resample.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace zol {
namespace {

constexpr double kBeta = 9;
constexpr size_t kEnd = size_t{SoundReader::kCrossings} * SoundReader::kPhases; // behind it all is 0

constexpr int kTerms = 28; // as many as double tells apart up to kBeta

/// The series of the modified Bessel function of order 0.
constexpr auto kBessel = [] {
  std::array<double, kTerms> terms{1};
  for (int k = 1; k < kTerms; ++k)
    terms[k] = terms[k - 1] / (double(k) * k);
  return terms;
}();

/// Of the square of half its argument.
double bessel(double square) {
  double sum = 0;
  for (int k = kTerms; k-- > 0;)
    sum = sum * square + kBessel[k];
  return sum;
}

double onGrid(double value) { return std::round(value * 0x1p32) / 0x1p32; }

/// The window times the sinc, at the places of all phases and crossings.
void fillTable(double *table) {
  constexpr double kFull = kBeta * kBeta / 4;
  const double whole = bessel(kFull);
  double sines[SoundReader::kPhases];
  for (int phase = 0; phase < SoundReader::kPhases; ++phase)
    sines[phase] = std::sin(std::numbers::pi * phase / SoundReader::kPhases);
  table[0] = 1;
  for (size_t i = 1; i < kEnd; ++i) {
    const double x = static_cast<double>(i) / SoundReader::kPhases, share = x / SoundReader::kCrossings;
    const double sine = sines[i % SoundReader::kPhases];
    const double sinc = (i / SoundReader::kPhases % 2 == 0 ? sine : -sine) / (std::numbers::pi * x);
    table[i] = onGrid(sinc * bessel(kFull * (1 - share * share)) / whole);
  }
  table[kEnd] = table[kEnd + 1] = 0;
}

double cutOff(double step) { return 1 / std::max(1.0, std::abs(step)); }

} // namespace

SoundReader::SoundReader(unsigned sourceChannels) : table_(kEnd + 2), sums_(sourceChannels) {}

double SoundReader::reach(double step) { return kCrossings / cutOff(step); }

void SoundReader::read(const AudioSource &source, double first, double step, size_t frames, unsigned channels,
                       float *out) const {
  fillTable(table_.data());
  const unsigned own = source.channels;
  const double cut = cutOff(step);
  const double reached = reach(step), length = static_cast<double>(source.frames);
  for (size_t i = 0; i < frames; ++i, out += channels) {
    const double place = first + static_cast<double>(i) * step;
    const auto begin = static_cast<size_t>(std::clamp(std::ceil(place - reached), 0.0, length));
    const auto end = static_cast<size_t>(std::clamp(std::floor(place + reached) + 1, 0.0, length));
    std::fill_n(sums_.data(), own, 0.0);
    for (size_t frame = begin; frame < end; ++frame) {
      const double phase =
          std::min(std::abs(static_cast<double>(frame) - place) * cut * kPhases, double{kEnd});
      const auto index = static_cast<size_t>(phase);
      const double weight =
          table_[index] + (table_[index + 1] - table_[index]) * (phase - static_cast<double>(index));
      const float *samples = source.samples + frame * own;
      for (unsigned c = 0; c < own; ++c)
        sums_[c] += weight * static_cast<double>(samples[c]);
    }
    for (unsigned c = 0; c < channels; ++c) {
      const unsigned from = own == 1 ? 0 : c;
      out[c] = from < own ? static_cast<float>(sums_[from] * cut) : 0.0F;
    }
  }
}

void copyFrames(const AudioSource &source, ptrdiff_t first, size_t frames, unsigned channels, float *out) {
  for (size_t i = 0; i < frames; ++i)
    for (unsigned c = 0; c < channels; ++c) {
      const ptrdiff_t frame = first + static_cast<ptrdiff_t>(i);
      const unsigned from = source.channels == 1 ? 0 : c;
      const bool there = frame >= 0 && source.holds(static_cast<size_t>(frame), from);
      *out++ = there ? source.at(static_cast<size_t>(frame), from) : 0.0F;
    }
}

void scaleFrames(float *samples, size_t frames, unsigned channels, double from, double to) {
  if (from == 1 && to == 1)
    return;
  const double step = (to - from) / static_cast<double>(frames);
  for (size_t i = 0; i < frames; ++i)
    for (unsigned c = 0; c < channels; ++c, ++samples)
      *samples = static_cast<float>(static_cast<double>(*samples) * (from + static_cast<double>(i) * step));
}

} // namespace zol
