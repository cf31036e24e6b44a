#include "host/geometry/scanner.h"

#include <charconv>
#include <cmath>

namespace zol::host {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

} // namespace

void Scanner::failAt(const std::string &why, size_t place) const {
  throw GeometryError(what_ + std::string(", character ") + std::to_string(place + 1) + ": " + why, place);
}

bool Scanner::skip(char c) {
  if (atEnd() || text_[place_] != c)
    return false;
  ++place_;
  return true;
}

void Scanner::skipSpace() { place_ = std::min(text_.find_first_not_of(" \t\r\n\f", place_), text_.size()); }

void Scanner::skipComma() {
  skipSpace();
  if (skip(','))
    skipSpace();
}

void Scanner::skipDigits() {
  while (isDigit(peek()))
    ++place_;
}

bool Scanner::numberFollows() const {
  const size_t sign = peek() == '+' || peek() == '-' ? 1 : 0;
  return isDigit(peek(sign)) || (peek(sign) == '.' && isDigit(peek(sign + 1)));
}

double Scanner::number() {
  skipComma();
  if (!numberFollows())
    fail("a number expected");
  skip('+');
  const size_t begin = place_;
  skip('-');
  skipDigits();
  if (skip('.'))
    skipDigits();
  bool tiny = false;
  if (peek() == 'e' || peek() == 'E') {
    const size_t sign = peek(1) == '+' || peek(1) == '-' ? 1 : 0;
    if (isDigit(peek(1 + sign))) {
      tiny = peek(1) == '-';
      place_ += 1 + sign;
      skipDigits();
    }
  }
  double value = 0;
  const auto result = std::from_chars(text_.data() + begin, text_.data() + place_, value);
  if (result.ec == std::errc::result_out_of_range && tiny)
    return 0;
  if (result.ec != std::errc() || !(std::abs(value) <= kLargest))
    failAt("the number is too large", begin);
  return value;
}

std::string_view Scanner::word() {
  const size_t begin = place_;
  while (isLetter(peek()) || peek() == '%')
    ++place_;
  return text_.substr(begin, place_ - begin);
}

} // namespace zol::host
