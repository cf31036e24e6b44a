#pragma once

#include "host/geometry/geometry.h"

#include <string_view>

namespace zol::host {

/// Reads the numbers and words of an SVG attribute.
class Scanner {
public:
  /// `what` the text is, for errors: they read "<what>, character 5: ...".
  Scanner(std::string_view text, const char *what) : text_(text), what_(what) {}

  [[nodiscard]] bool atEnd() const { return place_ == text_.size(); }
  /// The next character; 0 at the end.
  [[nodiscard]] char peek(size_t ahead = 0) const {
    return place_ + ahead < text_.size() ? text_[place_ + ahead] : '\0';
  }
  void advance() { ++place_; }
  bool skip(char c);
  void skipSpace();
  /// White space with at most one comma in it.
  void skipComma();

  [[nodiscard]] bool numberFollows() const;
  /// A number, after white space and a comma. At most 1e9: beyond it the arithmetic of shapes loses its
  /// meaning.
  double number();
  /// Letters or %, as many as there are.
  std::string_view word();

  [[noreturn]] void fail(const std::string &why) const { failAt(why, place_); }

private:
  [[noreturn]] void failAt(const std::string &why, size_t place) const;
  void skipDigits();

  std::string_view text_;
  const char *what_;
  size_t place_ = 0;
};

/// The largest coordinate in pixels.
inline constexpr double kLargest = 1e9;

} // namespace zol::host
