// Splits a declaration script into tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

struct Token {
  enum class Kind {
    name,
    integer,
    real,
    text,
    symbol,
    error, ///< no token; `text` says why
    end,   ///< the last one, once
  };
  Kind kind = Kind::end;
  size_t begin = 0, end = 0; ///< offsets in the script
  std::string text;          ///< a name, or what a quoted text says
  int64_t integer = 0;
  bool hexadecimal = false;
  double real = 0;
  char symbol = 0;

  [[nodiscard]] bool is(char wanted) const { return kind == Kind::symbol && symbol == wanted; }
};

/// All tokens of a script, those of kind `error` among them, and one of kind `end` behind them.
std::vector<Token> tokenize(std::string_view script);

} // namespace zol::host
