#include "host/model/times.h"

#include "host/model/text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

constexpr double kSlowest = 0.001, kFastest = 100000;

/// A decimal number or a fraction.
std::optional<double> amountIn(std::string_view text) {
  if (text.find('/') == text.npos)
    return numberIn(text);
  const auto fraction = rationalIn(text);
  return fraction ? std::optional(fraction->value()) : std::nullopt;
}

/// Hours, minutes and seconds, or minutes and seconds, as seconds.
std::optional<double> clockIn(std::string_view text) {
  const auto parts = split(text, ':');
  if (parts.size() < 2 || parts.size() > 3)
    return std::nullopt;
  double seconds = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    const std::string_view allowed = i + 1 == parts.size() ? "0123456789." : "0123456789";
    const auto number = numberIn(parts[i]);
    if (!number || parts[i].find_first_not_of(allowed) != parts[i].npos || (i > 0 && *number >= 60))
      return std::nullopt;
    seconds = 60 * seconds + *number;
  }
  return seconds;
}

/// The nearest 1000/1001 of a usual rate, where that, rounded to as many digits, is the text.
std::optional<Rational> ntscRate(std::string_view text, double value) {
  const size_t point = text.find('.');
  const size_t digits = point == text.npos ? 0 : text.size() - point - 1;
  if (digits < 2)
    return std::nullopt;
  const double rounding = 0.5 * std::pow(10, -static_cast<double>(digits));
  for (const int whole : {12, 15, 24, 30, 48, 60, 120, 240})
    if (const Rational rate(whole * 1000, 1001); std::abs(rate.value() - value) <= rounding * 1.000001)
      return rationalIn(rate.text());
  return std::nullopt;
}

} // namespace

std::string Time::text() const {
  return numberText(amount) + (unit == TimeUnit::seconds ? "s" : unit == TimeUnit::frames ? "f" : "");
}

std::optional<Time> timeIn(std::string_view text, TimeUnit bare) {
  struct Suffix {
    std::string_view word;
    TimeUnit unit;
    double scale;
  };
  static constexpr Suffix kSuffixes[] = {{"us", TimeUnit::seconds, 1e6},
                                         {"ms", TimeUnit::seconds, 1e3},
                                         {"s", TimeUnit::seconds, 1},
                                         {"f", TimeUnit::frames, 1}};
  if (text.find(':') != text.npos) {
    const auto seconds = clockIn(text);
    return seconds ? std::optional<Time>(*seconds) : std::nullopt;
  }
  const auto suffix = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                   [&](const Suffix &known) { return text.ends_with(known.word); });
  if (suffix == std::end(kSuffixes)) {
    const auto amount = amountIn(text);
    return amount ? std::optional(Time(*amount, bare)) : std::nullopt;
  }
  text.remove_suffix(suffix->word.size());
  const auto amount = amountIn(text);
  return amount ? std::optional(Time(*amount / suffix->scale, suffix->unit)) : std::nullopt;
}

std::optional<Rational> rateIn(std::string_view text) {
  static constexpr std::pair<std::string_view, Rational> kNames[] = {
      {"ntsc", {30000, 1001}}, {"pal", 25}, {"film", 24}, {"ntsc-film", {24000, 1001}}};
  for (const auto &[name, rate] : kNames)
    if (sameWithoutCase(text, name))
      return rate;
  const auto rate = rationalIn(text);
  if (!rate || rate->value() < kSlowest || rate->value() > kFastest)
    return std::nullopt;
  const auto ntsc = ntscRate(text, rate->value());
  return ntsc ? ntsc : rate;
}

} // namespace zol::host
