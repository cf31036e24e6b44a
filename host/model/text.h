// Small readings of text, the same in every locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// The whole text as a finite number; nothing where it is not one.
std::optional<double> numberIn(std::string_view text);
/// The whole text as a decimal int.
std::optional<int> integerIn(std::string_view text);

/// The shortest text that reads back as the same number, with a point in every locale.
std::string numberText(double value);
/// A whole number with zeros before it, of that many digits at least.
std::string paddedText(uint64_t number, size_t digits);

/// In lower case, as far as ASCII goes.
std::string folded(std::string_view text);
bool sameWithoutCase(std::string_view a, std::string_view b);
/// Without anything that a terminal would obey: control characters as "\x1b".
std::string printable(std::string_view text);
std::string_view trimmed(std::string_view text);
std::vector<std::string_view> split(std::string_view text, char separator);

/// A label as it is shown: the '&' before the letter that chooses a field is left out, of two one stays.
std::string withoutMnemonic(std::string_view label);

} // namespace zol::host
