// Exact fractions: rates such as 30000/1001 frames a second, and the times that follow from them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zol::host {

/// Above over below zero or more; in lowest terms when made by the functions here.
struct Rational {
  int64_t num = 0, den = 1;

  constexpr Rational() = default;
  constexpr Rational(int whole) : num(whole) {} // NOLINT(google-explicit-constructor): a number is a fraction
  /// `den` must not be 0.
  constexpr Rational(int64_t numerator, int64_t denominator) : num(numerator), den(denominator) {}

  [[nodiscard]] double value() const { return static_cast<double>(num) / static_cast<double>(den); }
  /// "25", "30000/1001".
  [[nodiscard]] std::string text() const;
  bool operator==(const Rational &) const = default;
};

/// The fraction of fewest terms that has this value, or comes nearest to it with a denominator of at most
/// 1001000. Of positive numbers up to 1e9.
Rational nearestRational(double value);

/// The positive fraction that a text is: "30000/1001", "16:15", "29.97". Nothing for others, and for terms
/// beyond 31 bits.
std::optional<Rational> rationalIn(std::string_view text);

/// When frame `index` begins, in seconds: rounded once, whatever the index.
double timeOf(uint64_t index, Rational rate);

/// The number of the frame that is shown at a time, 0 before the beginning. A time that misses a frame's
/// beginning by a millionth of its length is meant to be in that frame.
size_t indexAt(double time, Rational rate);

/// The number of sample frames that begin before frame `index` does, to the nearest.
uint64_t samplesBefore(uint64_t index, Rational rate, unsigned sampleRate);

} // namespace zol::host
