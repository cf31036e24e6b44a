// What expressions of a script evaluate to, and the arguments of a call.
#pragma once

#include "host/model/effect.h"
#include "host/script/parser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zol::host {

/// What a statement answers that has nothing to say.
struct Done {};

struct Integer {
  int64_t value = 0;
  bool hexadecimal = false;
};

struct Text {
  std::string text;  ///< UTF-8
  bool wide = false; ///< whether the library gave it in 16-bit units
};

struct Flags {
  unsigned bits = 0;
};

/// A variable of the script.
struct Record {
  Effect *effect = nullptr;
};

/// The data-field list of a variable.
struct FieldList {
  Effect *effect = nullptr;
};

struct FieldId {
  int id = 0;
};

/// The clip that an effect is applied to.
struct CurrentClip {};

struct DrawnGeometry;

/// A geometry that a script draws.
struct GeometryPointer {
  DrawnGeometry *geometry = nullptr;
};

struct Value {
  std::variant<Done, Integer, double, Text, Flags, Record, FieldList, FieldId, Icon, CurrentClip,
               GeometryPointer>
      data;
  size_t offset = 0; ///< of the expression, in the script

  /// The value if it is of this type, else null.
  template <class T> [[nodiscard]] const T *as() const { return std::get_if<T>(&data); }
  /// The same; throws ScriptError "`what` expected" when it is of another type.
  template <class T> [[nodiscard]] const T &get(const std::string &what) const {
    if (const T *value = as<T>())
      return *value;
    throw ScriptError(what + " expected", offset);
  }
  /// An integer within the range of int; hexadecimal ones may use all 32 bits.
  [[nodiscard]] int getInt(const std::string &what) const;
  /// An integer or a real number.
  [[nodiscard]] double getNumber(const std::string &what) const;
};

/// The arguments of one call, taken one by one from the first. What is missing or of another type throws
/// ScriptError.
class Arguments {
public:
  Arguments(std::vector<Value> values, size_t offset) : values_(std::move(values)), offset_(offset) {}

  /// The next argument; it may be taken.
  const Value &next(const std::string &what);
  /// The next argument if it is of this type, which is then taken, else null.
  template <class T> const T *nextIf() {
    const T *value = next_ < values_.size() ? values_[next_].as<T>() : nullptr;
    next_ += value != nullptr;
    return value;
  }
  /// The next argument if it is an integer in decimal digits, which is then taken, else null.
  const Integer *nextIfDecimal();
  /// Where the argument stands that was taken last.
  [[nodiscard]] size_t lastOffset() const { return values_[next_ - 1].offset; }
  [[nodiscard]] size_t callOffset() const { return offset_; }

  Effect &fieldList() { return *next("a field list").get<FieldList>("a field list").effect; }
  std::string text(const std::string &what) { return next(what).get<Text>(what).text; }
  /// The id of a field of this effect that the next argument gives by its name, or by its id.
  int fieldByName(const Effect &effect);
  int fieldById(const Effect &effect);

  /// Throws ScriptError when any is left.
  void end() const;

private:
  std::vector<Value> values_;
  size_t next_ = 0;
  size_t offset_; ///< of the call
};

} // namespace zol::host
