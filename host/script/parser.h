// Turns a declaration script into statements, one after the other.
//
//   statement  = [ record | assignment | store | expression ] ';'
//   record     = NAME [ '*' ] NAME [ '=' expression ] ZoEffect eff; ZoGeo *gg = ZoGeoContourCreate( ... );
//   assignment = NAME '.' NAME '=' expression       eff.Version = 10;
//   store      = '*' cast '=' expression            *(int *)0x8049A10 = DataFieldAdd( ... );
//              | '*' '(' cast ')' '=' expression    *((int *)0x8049A10) = DataFieldAdd( ... );
//   expression = operand { '|' operand }
//   operand    = [ '-' ] NUMBER | TEXT | NAME | call | cast | '&' NAME '.' NAME | '(' expression ')'
//   call       = NAME '(' [ expression { ',' expression } ] ')'
//   cast       = '(' NAME '*' ')' operand
#pragma once

#include "host/script/lexer.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// What is wrong with a statement, and where: a 0-based offset in the script.
class ScriptError : public std::runtime_error {
public:
  ScriptError(const std::string &reason, size_t offset) : std::runtime_error(reason), offset_(offset) {}
  [[nodiscard]] size_t offset() const { return offset_; }

private:
  size_t offset_;
};

struct Expression {
  enum class Kind {
    integer,
    real,
    text,    ///< quoted
    name,    ///< a variable or a flag
    address, ///< &text.member
    cast,    ///< (text *)operands[0]
    call,    ///< text( operands... )
    either,  ///< operands[0] | operands[1] | ...
  };
  Kind kind = Kind::integer;
  size_t offset = 0; ///< in the script
  std::string text;
  std::string member;
  int64_t integer = 0;
  bool hexadecimal = false;
  double real = 0;
  std::vector<Expression> operands;
};

struct Statement {
  enum class Kind {
    empty,
    record,     ///< type variable, or type *variable = value
    assignment, ///< variable.member = value
    store,      ///< *target = value; the target is a cast
    expression, ///< value
  };
  /// A name and its place in the script.
  struct Name {
    std::string text;
    size_t offset = 0;
  };
  Kind kind = Kind::empty;
  Name type, variable, member;
  bool isPointer = false, hasValue = false; ///< of a record
  Expression target, value;
};

class Parser {
public:
  explicit Parser(std::string_view script) : tokens_(tokenize(script)) {}

  [[nodiscard]] bool atEnd() const { return peek().kind == Token::Kind::end; }

  /// The next statement. Throws ScriptError when it cannot be understood. Either way the one behind its ';'
  /// comes next.
  Statement next();

  /// Where in the script the statement stands that next() returned or failed in.
  [[nodiscard]] size_t begin() const { return begin_; }
  [[nodiscard]] size_t end() const { return end_; }

private:
  Statement statement();
  Expression expression();
  Expression operand();
  Expression call();
  Expression cast();

  [[nodiscard]] const Token &peek(size_t ahead = 0) const;
  [[nodiscard]] bool castIsNext() const;
  const Token &take();
  void expect(char symbol);
  Statement::Name expectName();

  std::vector<Token> tokens_;
  size_t next_ = 0;
  size_t begin_ = 0;
  size_t end_ = 0;
  int depth_ = 0; ///< of operands within operands
};

} // namespace zol::host
