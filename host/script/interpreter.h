// Runs declaration scripts: statements in, registered effects out.
#pragma once

#include "host/model/registry.h"
#include "host/script/memory.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// Keeps the script's variables from text to text. What it does not understand is an error of that one
/// statement, which then has no effect (a field whose id could not be stored is added all the same, so that
/// the ids of those after it hold), and declaring goes on with the next statement.
class Interpreter {
public:
  struct Error {
    std::string statement; ///< the one in error, without the others of its text
    std::string reason;
    size_t column; ///< 1-based, in bytes of `statement`
  };

  /// Both outlive the interpreter.
  Interpreter(Registry &registry, Memory &memory);

  /// Runs every statement of a text. Answers the last one's value (a field's id where one was added,
  /// otherwise 1), or 0 when any of them was in error.
  long long execute(std::string_view text);

  /// Every error since the beginning, in order.
  [[nodiscard]] const std::vector<Error> &errors() const { return errors_; }

private:
  Registry &registry_;
  Memory &memory_;
  std::map<std::string, Effect, std::less<>> variables_;
  std::vector<Error> errors_;
};

} // namespace zol::host
