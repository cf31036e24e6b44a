#include "host/model/rational.h"

#include "host/model/text.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zol::host {

std::string Rational::text() const {
  return std::to_string(num) + (den == 1 ? "" : '/' + std::to_string(den));
}

Rational nearestRational(double value) {
  constexpr int64_t kLargest = 1001000;
  Rational before(0, 1), best(1, 0); // the last two convergents of the continued fraction
  for (double rest = value;; rest = 1 / (rest - std::floor(rest))) {
    const double whole = std::floor(rest);
    if (whole * static_cast<double>(best.den) + static_cast<double>(before.den) > kLargest)
      return best;
    const auto term = static_cast<int64_t>(whole);
    const Rational next(term * best.num + before.num, term * best.den + before.den);
    before = best;
    best = next;
    if (best.value() == value || rest == whole)
      return best;
  }
}

std::optional<Rational> rationalIn(std::string_view text) {
  const size_t bar = text.find_first_of("/:");
  if (bar == text.npos) {
    const auto value = numberIn(text);
    const Rational nearest = value && *value > 0 && *value <= 1e9 ? nearestRational(*value) : Rational();
    return nearest.num > 0 ? std::optional(nearest) : std::nullopt;
  }
  const auto num = integerIn(text.substr(0, bar)), den = integerIn(text.substr(bar + 1));
  if (!num || !den || *num <= 0 || *den <= 0)
    return std::nullopt;
  const int common = std::gcd(*num, *den);
  return Rational(*num / common, *den / common);
}

double timeOf(uint64_t index, Rational rate) {
  return static_cast<double>(index * static_cast<uint64_t>(rate.den)) / static_cast<double>(rate.num);
}

size_t indexAt(double time, Rational rate) {
  constexpr double kTolerance = 1e-6, kMost = 4e9;
  const double index = std::floor(time * rate.value() + kTolerance);
  return index > 0 ? static_cast<size_t>(std::min(index, kMost)) : 0;
}

uint64_t samplesBefore(uint64_t index, Rational rate, unsigned sampleRate) {
  const auto num = static_cast<uint64_t>(rate.num);
  const uint64_t position = index * static_cast<uint64_t>(rate.den); // seconds by num
  const uint64_t rest = position % num;
  return position / num * sampleRate + (2 * rest * sampleRate + num) / (2 * num);
}

} // namespace zol::host
