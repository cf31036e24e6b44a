#include "host/script/parser.h"

#include <algorithm>
#include <utility>

namespace zol::host {

namespace {

constexpr int kMaxDepth = 32;

[[noreturn]] void failAt(const Token &token, const std::string &expected) {
  std::string found;
  switch (token.kind) {
  case Token::Kind::error: throw ScriptError(token.text, token.begin);
  case Token::Kind::end: found = "the end"; break;
  case Token::Kind::name: found = token.text; break;
  case Token::Kind::symbol: found = std::string("'") + token.symbol + "'"; break;
  case Token::Kind::text: found = "a text"; break;
  case Token::Kind::integer:
  case Token::Kind::real: found = "a number"; break;
  }
  throw ScriptError(expected + " expected instead of " + found, token.begin);
}

} // namespace

Statement Parser::next() {
  begin_ = peek().begin;
  depth_ = 0;
  try {
    Statement result = statement();
    expect(';');
    end_ = tokens_[next_ - 1].end;
    return result;
  } catch (const ScriptError &) {
    while (!atEnd() && !peek().is(';'))
      ++next_;
    end_ = peek().end;
    if (!atEnd())
      ++next_;
    throw;
  }
}

Statement Parser::statement() {
  Statement result;
  const bool nameFirst = peek().kind == Token::Kind::name;
  if (peek().is(';'))
    return result;
  if (peek().is('*')) {
    result.kind = Statement::Kind::store;
    take();
    const bool wrapped = !castIsNext();
    if (wrapped)
      expect('(');
    result.target = cast();
    if (wrapped)
      expect(')');
    expect('=');
    result.value = expression();
  } else if (nameFirst && (peek(1).kind == Token::Kind::name || peek(1).is('*'))) {
    result.kind = Statement::Kind::record;
    result.type = expectName();
    result.isPointer = peek().is('*');
    if (result.isPointer)
      take();
    result.variable = expectName();
    result.hasValue = peek().is('=');
    if (result.hasValue) {
      take();
      result.value = expression();
    }
  } else if (nameFirst && peek(1).is('.')) {
    result.kind = Statement::Kind::assignment;
    result.variable = expectName();
    take();
    result.member = expectName();
    expect('=');
    result.value = expression();
  } else {
    result.kind = Statement::Kind::expression;
    result.value = expression();
  }
  return result;
}

Expression Parser::expression() {
  Expression first = operand();
  if (!peek().is('|'))
    return first;
  Expression result;
  result.kind = Expression::Kind::either;
  result.offset = first.offset;
  result.operands.push_back(std::move(first));
  while (peek().is('|')) {
    take();
    result.operands.push_back(operand());
  }
  return result;
}

Expression Parser::operand() {
  Expression result;
  result.offset = peek().begin;
  if (++depth_ > kMaxDepth)
    throw ScriptError("nested too deeply", result.offset);

  bool negative = false;
  if (peek().is('-')) {
    negative = true;
    take();
    if (peek().kind != Token::Kind::integer && peek().kind != Token::Kind::real)
      failAt(peek(), "a number");
  }
  switch (peek().kind) {
  case Token::Kind::integer: {
    const Token &token = take();
    result.kind = Expression::Kind::integer;
    result.integer = negative ? -token.integer : token.integer;
    result.hexadecimal = token.hexadecimal;
    break;
  }
  case Token::Kind::real: {
    const double value = take().real;
    result.kind = Expression::Kind::real;
    result.real = negative ? -value : value;
    break;
  }
  case Token::Kind::text:
    result.kind = Expression::Kind::text;
    result.text = take().text;
    break;
  case Token::Kind::name:
    if (peek(1).is('(')) {
      result = call();
    } else {
      result.kind = Expression::Kind::name;
      result.text = take().text;
    }
    break;
  default:
    if (castIsNext()) {
      result = cast();
    } else if (peek().is('(')) {
      take();
      result = expression();
      expect(')');
    } else if (peek().is('&')) {
      take();
      result.kind = Expression::Kind::address;
      result.text = expectName().text;
      expect('.');
      result.member = expectName().text;
    } else {
      failAt(peek(), "a value");
    }
  }
  --depth_;
  return result;
}

Expression Parser::call() {
  Expression result;
  result.kind = Expression::Kind::call;
  result.offset = peek().begin;
  result.text = expectName().text;
  expect('(');
  if (!peek().is(')')) {
    result.operands.push_back(expression());
    while (peek().is(',')) {
      take();
      result.operands.push_back(expression());
    }
  }
  expect(')');
  return result;
}

Expression Parser::cast() {
  Expression result;
  result.kind = Expression::Kind::cast;
  result.offset = peek().begin;
  expect('(');
  result.text = expectName().text;
  expect('*');
  expect(')');
  result.operands.push_back(operand());
  return result;
}

bool Parser::castIsNext() const {
  return peek().is('(') && peek(1).kind == Token::Kind::name && peek(2).is('*');
}

const Token &Parser::peek(size_t ahead) const { return tokens_[std::min(next_ + ahead, tokens_.size() - 1)]; }

/// The end is never taken.
const Token &Parser::take() { return tokens_[next_++]; }

void Parser::expect(char symbol) {
  if (!peek().is(symbol))
    failAt(peek(), std::string("'") + symbol + "'");
  take();
}

Statement::Name Parser::expectName() {
  if (peek().kind != Token::Kind::name)
    failAt(peek(), "a name");
  const Token &token = take();
  return {token.text, token.begin};
}

} // namespace zol::host
