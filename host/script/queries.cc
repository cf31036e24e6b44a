#include "host/script/queries.h"

#include "host/model/clip.h"
#include "host/script/parser.h"

#include <algorithm>

namespace zol::host {
namespace {

/// An effect's own handle or place, which it is trusted with as in every service; null for other operands.
template <class T> T *pointerIn(const Expression &operand) {
  return operand.kind == Expression::Kind::integer
             ? reinterpret_cast<T *>(static_cast<uintptr_t>(operand.integer))
             : nullptr;
}

} // namespace

long long answerQuery(std::string_view statement) {
  try {
    const Expression call = Parser(statement).next().value;
    if (call.kind != Expression::Kind::call || call.text != "ZoMediaInfo" || call.operands.size() != 2)
      return 0;
    const auto *clip = pointerIn<const Clip>(call.operands[0]);
    auto *info = pointerIn<t_ZoMediaInfo>(call.operands[1]);
    return clip != nullptr && info != nullptr && clip->describe(*info) ? 1 : 0;
  } catch (const ScriptError &) {
    return 0;
  }
}

} // namespace zol::host
