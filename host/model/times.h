// Times and rates as users write them.
//   seconds  2, 2s, 500ms, 1/25s, 00:00:02.5
//   frames   50f
//   rates    25, 30000/1001, 29.97, ntsc
#pragma once

#include "host/model/rational.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace zol::host {

enum class TimeUnit {
  seconds,
  frames,
  shares, ///< of an effect's span, from 0 to 1
};

/// A time whose unit was said; in seconds unless said otherwise.
struct Time {
  double amount = 0;
  TimeUnit unit = TimeUnit::seconds;

  constexpr Time() = default;
  /// No whole number is meant as seconds by mistake.
  constexpr Time(std::same_as<double> auto seconds)
      : amount(seconds) {} // NOLINT(google-explicit-constructor)
  constexpr Time(double count, TimeUnit of) : amount(count), unit(of) {}
  static constexpr Time frame(double index) { return {index, TimeUnit::frames}; }

  /// Of seconds, or of frames at this rate.
  [[nodiscard]] double seconds(Rational rate) const {
    return unit == TimeUnit::frames ? amount * static_cast<double>(rate.den) / static_cast<double>(rate.num)
                                    : amount;
  }
  /// "2.5s", "50f", "0.5".
  [[nodiscard]] std::string text() const;
  bool operator==(const Time &) const = default;
};

/// The whole text as a time; a bare number is in the given unit. Nothing where it is none.
std::optional<Time> timeIn(std::string_view text, TimeUnit bare = TimeUnit::seconds);

/// The whole text as frames a second, from 0.001 to 100000. A decimal number that is 24, 30, 60 ... times
/// 1000/1001, rounded, is exactly that.
std::optional<Rational> rateIn(std::string_view text);

/// Where an effect's keys lie: in shares of its span, which is so many seconds long.
struct KeySpan {
  double duration = 1;
  Rational rate = 25;

  [[nodiscard]] double share(Time time) const {
    return time.unit == TimeUnit::shares ? time.amount : time.seconds(rate) / duration;
  }
};

} // namespace zol::host
