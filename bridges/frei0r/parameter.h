// The fields of an effect as parameters of a plug-in.
#pragma once

#include "host/model/shape.h"
#include "host/render/instance.h"

#include <frei0r.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace zol::bridge {

/// What a host sets: the one of these that the parameter's type names.
struct Value {
  double number = 0; ///< 0 to 1
  f0r_param_color_t color{};
  std::string text;
};

/// One parameter: a field, or a part of one. The parts of a field follow one another.
struct Parameter {
  enum class Part {
    number,  ///< linear from `least` to `most`
    turn,    ///< an angle, one turn from 0
    integer, ///< linear, rounded
    item,    ///< of a selector: equal bands in the order of its items
    toggle,
    color,
    alpha, ///< of the colour before it
    left,  ///< the place of an outline, in shares of the frame
    top,
    right,
    bottom,
    outline, ///< none, rectangle, ellipse, or path data in shares of that place
  };

  int field;
  Part part;
  std::string name, explanation;
  double least = 0, most = 1; ///< what 0 and 1 stand for
  Value standard{};
  double declared = 0; ///< what `standard.number` stands for, exactly

  [[nodiscard]] int type() const;
  /// What a number that a host set stands for. Beyond 0 to 1 is the nearer end; no number is the default.
  [[nodiscard]] double meaning(double number) const;
};

/// The parameters of an effect in the order of its fields. Defaults are those of a fresh instance.
std::vector<Parameter> parametersOf(host::Instance &fresh);

/// Where the parts of a field begin among all parameters, and how many they are.
struct Parts {
  size_t first, count;
};
Parts partsWith(std::span<const Parameter> parameters, size_t index);

/// Sets a field from its parts' values. An outline, which the caller keeps for as long as the instance
/// renders, is of a frame of width x height; one that cannot be read is none.
std::unique_ptr<host::Shape> put(host::Instance &instance, std::span<const Parameter> parts,
                                 std::span<const Value> values, int width, int height);

} // namespace zol::bridge
