#include "host/model/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zol::host {
namespace {

template <class Number> std::optional<Number> whole(std::string_view text) {
  if (text.starts_with('+'))
    text.remove_prefix(1);
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return value;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

} // namespace

std::optional<double> numberIn(std::string_view text) {
  const auto value = whole<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> integerIn(std::string_view text) { return whole<int>(text); }

std::string numberText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed).ptr;
  return {text, end};
}

std::string paddedText(uint64_t number, size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

std::string folded(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool sameWithoutCase(std::string_view a, std::string_view b) { return folded(a) == folded(b); }

std::string printable(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const bool second =
        i > 0 && text[i - 1] == '\xC2' && c >= 0x80 && c < 0xA0; // those beyond ASCII, in UTF-8
    if (second)
      result.pop_back();
    if (c < ' ' || c == 0x7F || second)
      result.append("\\x").append({kDigits[c / 16], kDigits[c % 16]});
    else
      result += text[i];
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\n");
  return first == text.npos ? std::string_view()
                            : text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (size_t at; (at = text.find(separator)) != text.npos; text.remove_prefix(at + 1))
    parts.push_back(text.substr(0, at));
  parts.push_back(text);
  return parts;
}

std::string withoutMnemonic(std::string_view label) {
  std::string shown;
  for (size_t i = 0; i < label.size(); ++i) {
    if (label[i] == '&' && i + 1 < label.size())
      ++i;
    shown += label[i];
  }
  return shown;
}

} // namespace zol::host
