#include "host/script/value.h"

#include <climits>

namespace zol::host {

int Value::getInt(const std::string &what) const {
  const auto &integer = get<Integer>(what);
  const int64_t max = integer.hexadecimal ? UINT_MAX : INT_MAX;
  if (integer.value < INT_MIN || integer.value > max)
    throw ScriptError(what + " out of range", offset);
  return static_cast<int>(static_cast<unsigned>(integer.value));
}

double Value::getNumber(const std::string &what) const {
  const auto *integer = as<Integer>();
  return integer != nullptr ? static_cast<double>(integer->value) : get<double>(what);
}

const Value &Arguments::next(const std::string &what) {
  if (next_ == values_.size())
    throw ScriptError("too few arguments: " + what + " expected", offset_);
  return values_[next_++];
}

const Integer *Arguments::nextIfDecimal() {
  const auto *integer = next_ < values_.size() ? values_[next_].as<Integer>() : nullptr;
  if (integer == nullptr || integer->hexadecimal)
    return nullptr;
  ++next_;
  return integer;
}

int Arguments::fieldByName(const Effect &effect) {
  const std::string name = text("the name of a field");
  const int id = effect.fieldId(name);
  if (id < 0)
    throw ScriptError("no field \"" + name + "\"", lastOffset());
  return id;
}

int Arguments::fieldById(const Effect &effect) {
  const int id = next("the id of a field").getInt("the id of a field");
  if (id < 0 || static_cast<size_t>(id) >= effect.fields.size())
    throw ScriptError("no field with the id " + std::to_string(id), lastOffset());
  return id;
}

void Arguments::end() const {
  if (next_ != values_.size())
    throw ScriptError("unexpected argument", values_[next_].offset);
}

} // namespace zol::host
