// Runs what instances of effects say in statements: geometries that they draw for their fields.
#pragma once

#include "host/geometry/geometry.h"
#include "host/model/effect.h"
#include "host/model/parameters.h"
#include "host/script/parser.h"
#include "host/script/value.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// One contour around a place of the frame.
struct DrawnGeometry {
  struct Vertex {
    double at[2], before[2], after[2]; ///< the handles as vectors from the vertex
  };
  double origin[2] = {0, 0};
  std::vector<Vertex> vertices;
  bool closed = false;

  [[nodiscard]] Geometry geometry() const;
};

/// Keeps the variables of one instance from text to text.
class InstanceScript {
public:
  /// Both outlive the script.
  InstanceScript(const Effect &effect, Parameters &parameters) : effect_(effect), parameters_(parameters) {}

  /// Runs the statements of a text: 1, or 0 from the first one on that is not understood.
  long long execute(std::string_view text);

private:
  struct Function {
    std::string_view name;
    Value (*call)(InstanceScript &, Arguments &);
  };
  static const Function kFunctions[];

  void run(const Statement &statement);
  Value evaluate(const Expression &expression);
  void setParameter(Arguments &arguments);

  const Effect &effect_;
  Parameters &parameters_;
  std::map<std::string, Value, std::less<>> variables_;
  std::deque<DrawnGeometry> drawn_;
  std::vector<std::unique_ptr<Shape>> shapes_; ///< as fields have them
};

} // namespace zol::host
