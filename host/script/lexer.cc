#include "host/script/lexer.h"

#include <charconv>
#include <utility>

namespace zol::host {

namespace {

// The script's alphabet is ASCII whatever the locale.
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isNamePart(char c) { return isNameStart(c) || isDigit(c); }
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

int hexDigit(char c) {
  if (isDigit(c))
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  return -1;
}

constexpr std::string_view kSymbols = "(){}[]*&|=;,.-+";

class Lexer {
public:
  explicit Lexer(std::string_view script) : script_(script) {}

  Token next() {
    while (isSpace(peek()))
      ++position_;
    Token token;
    token.begin = position_;
    if (position_ < script_.size())
      scan(token);
    token.end = position_;
    return token;
  }

private:
  void scan(Token &token) {
    const char c = peek();
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
      number(token);
    } else if (c == '"') {
      quoted(token);
    } else if (isNameStart(c)) {
      while (isNamePart(peek()))
        ++position_;
      token.kind = Token::Kind::name;
      token.text = script_.substr(token.begin, position_ - token.begin);
    } else {
      ++position_;
      if (kSymbols.find(c) == std::string_view::npos)
        return fail(token, "unexpected character");
      token.kind = Token::Kind::symbol;
      token.symbol = c;
    }
  }

  void number(Token &token) {
    const char *const begin = script_.data() + position_;
    const char *const end = script_.data() + script_.size();
    std::from_chars_result result{};
    if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X')) {
      token.kind = Token::Kind::integer;
      token.hexadecimal = true;
      if (hexDigit(peek(2)) >= 0) // from_chars would take a sign, too
        result = std::from_chars(begin + 2, end, token.integer, 16);
      else
        result = {begin + 2, std::errc::invalid_argument};
    } else {
      const char *last = begin;
      while (last != end && isDigit(*last))
        ++last;
      const bool real = last != end && (*last == '.' || *last == 'e' || *last == 'E');
      token.kind = real ? Token::Kind::real : Token::Kind::integer;
      result = real ? std::from_chars(begin, end, token.real) : std::from_chars(begin, end, token.integer);
    }
    position_ = static_cast<size_t>(result.ptr - script_.data());
    bool runsOn = false;
    for (; isNamePart(peek()) || peek() == '.'; ++position_)
      runsOn = true;
    if (runsOn || result.ec == std::errc::invalid_argument)
      fail(token, "malformed number");
    else if (result.ec != std::errc{})
      fail(token, "number out of range");
  }

  void quoted(Token &token) {
    token.kind = Token::Kind::text;
    ++position_;
    while (position_ < script_.size()) {
      const char c = script_[position_++];
      if (c == '"')
        return;
      token.text += c == '\\' ? escape() : c;
    }
    fail(token, "text without a closing quote");
  }

  /// The character that a backslash introduces. Unknown ones stand for themselves, as '"' and '\\' do.
  char escape() {
    const char c = peek();
    position_ += position_ < script_.size();
    switch (c) {
    case 'n': return '\n';
    case 't': return '\t';
    case 'r': return '\r';
    case 'a': return '\a';
    case 'b': return '\b';
    case 'f': return '\f';
    case 'v': return '\v';
    case 'x': {
      if (hexDigit(peek()) < 0)
        return c;
      int value = 0;
      for (int digits = 0; digits < 2 && hexDigit(peek()) >= 0; ++digits)
        value = value * 16 + hexDigit(script_[position_++]);
      return static_cast<char>(value);
    }
    default: return c;
    }
  }

  static void fail(Token &token, const char *reason) {
    token.kind = Token::Kind::error;
    token.text = reason;
  }

  /// '\0' behind the end.
  [[nodiscard]] char peek(size_t ahead = 0) const {
    return ahead < script_.size() - position_ ? script_[position_ + ahead] : '\0';
  }

  std::string_view script_;
  size_t position_ = 0;
};

} // namespace

std::vector<Token> tokenize(std::string_view script) {
  std::vector<Token> tokens;
  Lexer lexer(script);
  do
    tokens.push_back(lexer.next());
  while (tokens.back().kind != Token::Kind::end);
  return tokens;
}

} // namespace zol::host
